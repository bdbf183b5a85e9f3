#include "platform/query/cache/virtual_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>

#include "platform/query/sql/statement_error.h"
#include "platform/query/values/collation.h"

namespace tenora::query {
namespace {

struct VirtualTable : sqlite3_vtab {
  CachedTable* table = nullptr;
};

// Scans all rows, or those where the lookup column has a given value.
struct Cursor : sqlite3_vtab_cursor {
  CachedTable* table = nullptr;
  RowNumber row = 0;
  bool lookup = false;
  std::span<const RowNumber> matches;  // of a lookup, from the current row on
};

// No exception may pass through SQLite's code. Reading a table in memory raises none; should one be
// raised all the same, the statement fails without a message.
template <typename Work>
int Guarded(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  } catch (...) {
    return SQLITE_ERROR;
  }
}

int Connect(sqlite3* connection, void* tables, int count, const char* const* arguments,
            sqlite3_vtab** result, char** error) {
  // Module, database and table name come before the module's own argument.
  constexpr int kNumberArgument = 3;
  std::size_t number = 0;
  const std::string_view digits = count > kNumberArgument ? arguments[kNumberArgument] : "";
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const auto& cached = *static_cast<const VirtualTables*>(tables);
  if (number >= cached.size()) {
    *error = sqlite3_mprintf("no cached table %d", static_cast<int>(number));
    return SQLITE_ERROR;
  }
  CachedTable* const table = cached[number].get();
  std::string declaration = "create table t(";
  for (std::size_t i = 0; i < table->columns().size(); ++i) {
    if (i > 0) declaration += ", ";
    // Without a declared type SQLite converts nothing when it compares.
    declaration += "c" + std::to_string(i);
    if (table->columns()[i].type() == Type::kText)
      declaration += std::string(" collate ") + kCollationName;
  }
  if (table->columns().empty()) declaration += "none";
  const int status = sqlite3_declare_vtab(connection, (declaration + ")").c_str());
  if (status != SQLITE_OK) return status;
  auto created = std::make_unique<VirtualTable>();
  created->table = table;
  *result = created.release();
  return SQLITE_OK;
}

int Disconnect(sqlite3_vtab* table) {
  delete static_cast<VirtualTable*>(table);
  return SQLITE_OK;
}

// Chooses the equality on the most selective column.
int BestIndex(sqlite3_vtab* base, sqlite3_index_info* info) {
  CachedTable& table = *static_cast<VirtualTable*>(base)->table;
  const double rows = table.rows();
  int best = -1;
  double best_rows = 0;
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.usable == 0 || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
    if (constraint.iColumn < 0) continue;
    const auto column = static_cast<std::size_t>(constraint.iColumn);
    if (!table.CanLookUp(column)) continue;
    if (table.columns()[column].type() == Type::kText &&
        std::string_view(sqlite3_vtab_collation(info, i)) != kCollationName)
      continue;
    const double found = table.RowsPerValue(column);
    if (best >= 0 && found >= best_rows) continue;
    best = i;
    best_rows = found;
  }
  info->idxNum = -1;
  info->estimatedRows = static_cast<sqlite3_int64>(rows);
  info->estimatedCost = rows + 1;
  if (best < 0) return SQLITE_OK;
  info->idxNum = info->aConstraint[best].iColumn;
  info->idxStr = sqlite3_mprintf("%llx", info->colUsed);
  if (info->idxStr == nullptr) return SQLITE_NOMEM;
  info->needToFreeIdxStr = 1;
  info->aConstraintUsage[best].argvIndex = 1;
  info->aConstraintUsage[best].omit = 1;
  info->estimatedRows = static_cast<sqlite3_int64>(best_rows);
  info->estimatedCost = best_rows + 1;
  return SQLITE_OK;
}

int OpenCursor(sqlite3_vtab* table, sqlite3_vtab_cursor** result) {
  auto cursor = std::make_unique<Cursor>();
  cursor->table = static_cast<VirtualTable*>(table)->table;
  *result = cursor.release();
  return SQLITE_OK;
}

int CloseCursor(sqlite3_vtab_cursor* cursor) {
  delete static_cast<Cursor*>(cursor);
  return SQLITE_OK;
}

// The integer to look for; none if no integer equals the value.
std::optional<std::int64_t> IntegerOf(sqlite3_value* value) {
  const int type = sqlite3_value_type(value);
  if (type == SQLITE_INTEGER) return sqlite3_value_int64(value);
  if (type != SQLITE_FLOAT) return std::nullopt;
  const double number = sqlite3_value_double(value);
  if (number != std::trunc(number) || !(std::abs(number) < 9e18)) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

std::span<const RowNumber> Matches(CachedTable& table, std::size_t column, sqlite3_value* value) {
  if (table.columns()[column].type() != Type::kText) {
    const std::optional<std::int64_t> number = IntegerOf(value);
    return number ? table.Matches(column, *number) : std::span<const RowNumber>();
  }
  if (sqlite3_value_type(value) != SQLITE_TEXT) return {};
  const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return table.Matches(
      column, std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value))));
}

// Prefetches the cells that a statement will read from the rows found. `used` has a bit for each
// column, the last bit standing for all further columns.
void Prefetch(const CachedTable& table, std::span<const RowNumber> rows, std::uint64_t used) {
  constexpr std::size_t kMostRows = 512;  // no more than the processor's caches hold
  constexpr std::size_t kLastBit = 63;
  rows = rows.first(std::min(rows.size(), kMostRows));
  const auto each_used = [&](auto&& fetch) {
    for (std::size_t i = 0; i < table.columns().size(); ++i) {
      if ((used >> std::min(i, kLastBit) & 1) == 0) continue;
      for (const RowNumber row : rows) fetch(table.columns()[i], row);
    }
  };
  each_used([](const CachedColumn& column, RowNumber row) { column.PrefetchPlace(row); });
  each_used([](const CachedColumn& column, RowNumber row) { column.PrefetchBytes(row); });
}

void TakeMatch(Cursor& cursor) {
  cursor.row = cursor.matches.empty() ? kNoRow : cursor.matches.front();
}

int Filter(sqlite3_vtab_cursor* base, int column, const char* used, int count,
           sqlite3_value** values) {
  Cursor& cursor = *static_cast<Cursor*>(base);
  cursor.lookup = count > 0;
  cursor.row = 0;
  if (!cursor.lookup) return SQLITE_OK;
  cursor.matches = Matches(*cursor.table, static_cast<std::size_t>(column), values[0]);
  Prefetch(*cursor.table, cursor.matches, std::strtoull(used, nullptr, 16));
  TakeMatch(cursor);
  return SQLITE_OK;
}

int Next(sqlite3_vtab_cursor* base) {
  Cursor& cursor = *static_cast<Cursor*>(base);
  if (cursor.lookup) {
    cursor.matches = cursor.matches.subspan(1);
    TakeMatch(cursor);
  } else {
    ++cursor.row;
  }
  return SQLITE_OK;
}

int AtEnd(sqlite3_vtab_cursor* base) {
  const Cursor& cursor = *static_cast<Cursor*>(base);
  return cursor.row >= cursor.table->rows() ? 1 : 0;  // kNoRow is beyond every row
}

int ReadColumn(sqlite3_vtab_cursor* base, sqlite3_context* context, int index) {
  const Cursor& cursor = *static_cast<Cursor*>(base);
  const CachedColumn& column = cursor.table->columns()[static_cast<std::size_t>(index)];
  if (column.IsNull(cursor.row)) {
    sqlite3_result_null(context);
  } else if (column.type() == Type::kText) {
    // The rows never change and outlive every statement, so nothing is copied.
    const std::string_view text = column.Bytes(cursor.row);
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  } else if (column.type() == Type::kBinary) {
    const std::string_view bytes = column.Bytes(cursor.row);
    sqlite3_result_blob64(context, bytes.data(), bytes.size(), SQLITE_STATIC);
  } else if (column.type() == Type::kDouble) {
    sqlite3_result_double(context, column.Double(cursor.row));
  } else {
    sqlite3_result_int64(context, column.Integer(cursor.row));
  }
  return SQLITE_OK;
}

int ReadRowId(sqlite3_vtab_cursor* base, sqlite3_int64* row) {
  *row = static_cast<Cursor*>(base)->row;
  return SQLITE_OK;
}

sqlite3_module MakeModule() {
  sqlite3_module module{};
  module.iVersion = 1;
  const auto connect = [](sqlite3* connection, void* tables, int count,
                          const char* const* arguments, sqlite3_vtab** result, char** error) {
    return Guarded([&] { return Connect(connection, tables, count, arguments, result, error); });
  };
  module.xCreate = connect;
  module.xConnect = connect;
  module.xBestIndex = [](sqlite3_vtab* table, sqlite3_index_info* info) {
    return Guarded([&] { return BestIndex(table, info); });
  };
  module.xDisconnect = Disconnect;
  module.xDestroy = Disconnect;
  module.xOpen = [](sqlite3_vtab* table, sqlite3_vtab_cursor** result) {
    return Guarded([&] { return OpenCursor(table, result); });
  };
  module.xClose = CloseCursor;
  module.xFilter = [](sqlite3_vtab_cursor* cursor, int column, const char* used, int count,
                      sqlite3_value** values) {
    return Guarded([&] { return Filter(cursor, column, used, count, values); });
  };
  module.xNext = Next;
  module.xEof = AtEnd;
  module.xColumn = ReadColumn;
  module.xRowid = ReadRowId;
  return module;
}

const sqlite3_module kModule = MakeModule();

}  // namespace

void RegisterVirtualTables(sqlite3* connection, const VirtualTables& tables) {
  // SQLite hands the pointer back to Connect, which only reads.
  RequireDone(sqlite3_create_module_v2(connection, "cached", &kModule,
                                       const_cast<VirtualTables*>(&tables), nullptr));
}

}  // namespace tenora::query
