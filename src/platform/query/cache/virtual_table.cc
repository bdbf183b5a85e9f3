#include "platform/query/cache/virtual_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/query/cache/cell.h"
#include "platform/query/cache/look_up_plan.h"
#include "platform/query/sql/statement_error.h"
#include "platform/query/values/collation.h"

namespace tenora::query {
namespace {

struct VirtualTable : sqlite3_vtab {
  TableSource* source = nullptr;
  VirtualTables* tables = nullptr;
  std::size_t number = 0;
};

// A value that a column must have.
struct Wanted {
  std::size_t column = 0;
  std::int64_t number = 0;
  std::string_view text;  // of a text column
};

// Scans all rows, or those where some columns have given values.
struct Cursor : sqlite3_vtab_cursor {
  TableSource* source = nullptr;
  VirtualTables* tables = nullptr;

  const CachedTable* table = nullptr;  // with the current row; null in a stream
  RowNumber row = 0;
  bool lookup = false;
  std::span<const RowNumber> matches;  // of a look-up, from the current row on

  std::shared_ptr<CachedTable> found;  // the rows that an index led to
  std::vector<RowNumber> selected;     // of them, those that are wanted

  std::unique_ptr<TableStream> stream;
  bool stream_ended = false;
  std::vector<Wanted> wanted;
  std::vector<std::string> texts;  // of `wanted`
};

// No exception may pass through SQLite's code.
template <typename Work>
int Guarded(VirtualTables& tables, const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  } catch (const RuntimeError& error) {
    tables.error = error;
    return SQLITE_ERROR;
  } catch (...) {
    return SQLITE_ERROR;
  }
}

int Connect(sqlite3* connection, VirtualTables& tables, int count, const char* const* arguments,
            sqlite3_vtab** result, char** error) {
  // Module, database and table name come before the module's own argument.
  constexpr int kNumberArgument = 3;
  std::size_t number = 0;
  const std::string_view digits = count > kNumberArgument ? arguments[kNumberArgument] : "";
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (number >= tables.sources.size()) {
    *error = sqlite3_mprintf("no table %d", static_cast<int>(number));
    return SQLITE_ERROR;
  }
  TableSource* const source = tables.sources[number].get();
  std::string declaration = "create table t(";
  for (std::size_t i = 0; i < source->columns().size(); ++i) {
    if (i > 0) declaration += ", ";
    // Without a declared type SQLite converts nothing when it compares.
    declaration += "c" + std::to_string(i);
    if (source->columns()[i].type == Type::kText)
      declaration += std::string(" collate ") + kCollationName;
  }
  if (source->columns().empty()) declaration += "none";
  const int status = sqlite3_declare_vtab(connection, (declaration + ")").c_str());
  if (status != SQLITE_OK) return status;
  auto created = std::make_unique<VirtualTable>();
  created->source = source;
  created->tables = &tables;
  created->number = number;
  *result = created.release();
  return SQLITE_OK;
}

int Disconnect(sqlite3_vtab* table) {
  delete static_cast<VirtualTable*>(table);
  return SQLITE_OK;
}

// Tells Filter the columns that the statement reads and those of the look-up's values, and
// ReadTablePlan the table: "1f:2,0 t3", the first number in hexadecimal.
int BestIndex(sqlite3_vtab* base, sqlite3_index_info* info) {
  const VirtualTable& table = *static_cast<VirtualTable*>(base);
  TableSource& source = *table.source;
  const LookUpPlan plan = PlanLookUp(source, *info);
  const double rows =
      source.rows() != nullptr ? source.rows()->rows() : static_cast<double>(source.row_count());
  info->idxNum = plan.number;
  info->estimatedRows = static_cast<sqlite3_int64>(rows);
  info->estimatedCost = rows + 1;
  std::string columns;
  for (std::size_t i = 0; i < plan.constraints.size(); ++i) {
    const int constraint = plan.constraints[i];
    const bool same = plan.number < 0 && i > 0;  // both bounds are those of one column
    if (!same)
      columns += (i == 0 ? ":" : ",") + std::to_string(info->aConstraint[constraint].iColumn);
    info->aConstraintUsage[constraint].argvIndex = static_cast<int>(i) + 1;
    // Of several values, a look-up in memory observes only one; a range finds a few rows more.
    info->aConstraintUsage[constraint].omit = plan.number == 1 ? 1 : 0;
  }
  info->idxStr =
      sqlite3_mprintf("%llx%s t%d", info->colUsed, columns.c_str(), static_cast<int>(table.number));
  if (info->idxStr == nullptr) return SQLITE_NOMEM;
  info->needToFreeIdxStr = 1;
  if (plan.constraints.empty()) return SQLITE_OK;
  info->estimatedRows = static_cast<sqlite3_int64>(plan.rows);
  info->estimatedCost = plan.cost;
  return SQLITE_OK;
}

int OpenCursor(sqlite3_vtab* base, sqlite3_vtab_cursor** result) {
  const VirtualTable& table = *static_cast<VirtualTable*>(base);
  auto cursor = std::make_unique<Cursor>();
  cursor->source = table.source;
  cursor->tables = table.tables;
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

// None if nothing in the column equals the value. The text is valid as long as the value.
std::optional<Wanted> WantedOf(const SourceColumn& column, std::size_t position,
                               sqlite3_value* value) {
  if (column.type != Type::kText) {
    const std::optional<std::int64_t> number = IntegerOf(value);
    if (!number) return std::nullopt;
    return Wanted{.column = position, .number = *number, .text = {}};
  }
  if (sqlite3_value_type(value) != SQLITE_TEXT) return std::nullopt;
  const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return Wanted{.column = position,
                .number = 0,
                .text = {text, static_cast<std::size_t>(sqlite3_value_bytes(value))}};
}

std::span<const RowNumber> Matches(CachedTable& table, const Wanted& wanted) {
  return table.columns()[wanted.column].type() == Type::kText
             ? table.Matches(wanted.column, wanted.text)
             : table.Matches(wanted.column, wanted.number);
}

bool Equals(const CachedTable& table, RowNumber row, const Wanted& wanted) {
  const CachedColumn& column = table.columns()[wanted.column];
  if (column.IsNull(row)) return false;
  return column.type() == Type::kText
             ? column.collation().Compare(column.Bytes(row), wanted.text) == 0
             : column.Integer(row) == wanted.number;
}

bool Equals(const TableSource& source, access::RowCursor& row, const Wanted& wanted) {
  if (row.IsNull(wanted.column)) return false;
  const SourceColumn& column = source.columns()[wanted.column];
  return column.type == Type::kText
             ? column.collation->Compare(row.Text(wanted.column), wanted.text) == 0
             : IntegerCell(row, wanted.column, column.stored) == wanted.number;
}

// Prefetches the cells that a statement will read from the rows found.
void Prefetch(const CachedTable& table, std::span<const RowNumber> rows, ColumnMask used) {
  constexpr std::size_t kMostRows = 512;  // no more than the processor's caches hold
  rows = rows.first(std::min(rows.size(), kMostRows));
  const auto each_used = [&](auto&& fetch) {
    for (std::size_t i = 0; i < table.columns().size(); ++i) {
      if (!IsUsed(used, i)) continue;
      for (const RowNumber row : rows) fetch(table.columns()[i], row);
    }
  };
  each_used([](const CachedColumn& column, RowNumber row) { column.PrefetchPlace(row); });
  each_used([](const CachedColumn& column, RowNumber row) { column.PrefetchBytes(row); });
}

void TakeMatch(Cursor& cursor) {
  cursor.row = cursor.matches.empty() ? kNoRow : cursor.matches.front();
}

void AdvanceStream(Cursor& cursor) {
  do {
    cursor.stream_ended = !cursor.stream->Next();
  } while (!cursor.stream_ended && !std::ranges::all_of(cursor.wanted, [&](const Wanted& wanted) {
    return Equals(*cursor.source, cursor.stream->row(), wanted);
  }));
}

// Starts a pass over a table that is not kept in memory; false for all others.
bool StartStream(Cursor& cursor) {
  cursor.stream = cursor.source->Stream();
  if (cursor.stream == nullptr) return false;
  // The values are SQLite's only until Filter returns.
  for (const Wanted& wanted : cursor.wanted) cursor.texts.emplace_back(wanted.text);
  for (std::size_t i = 0; i < cursor.wanted.size(); ++i) cursor.wanted[i].text = cursor.texts[i];
  AdvanceStream(cursor);
  return true;
}

Value ValueOf(const SourceColumn& column, const Wanted& wanted) {
  if (column.type == Type::kCurrency) return Currency::FromTenThousandths(wanted.number);
  if (column.type != Type::kText) return wanted.number;
  // Equal texts may differ in trailing blanks.
  return std::string(wanted.text.substr(0, wanted.text.find_last_not_of(' ') + 1));
}

// Looks the wanted rows up in a table in memory.
void FindIn(Cursor& cursor, CachedTable& table, ColumnMask used) {
  const auto rows_per_value = [&](const Wanted& wanted) {
    return table.RowsPerValue(wanted.column);
  };
  const auto best = cursor.wanted.size() == 1
                        ? cursor.wanted.begin()
                        : std::ranges::min_element(cursor.wanted, {}, rows_per_value);
  cursor.table = &table;
  cursor.matches = Matches(table, *best);
  Prefetch(table, cursor.matches, used);
}

// Reads the wanted rows where they are kept; false if the table is better read whole.
bool FindStored(Cursor& cursor, ColumnMask used) {
  TableSource& source = *cursor.source;
  std::vector<std::size_t> columns;
  std::vector<Value> values;
  for (const Wanted& wanted : cursor.wanted) {
    columns.push_back(wanted.column);
    values.push_back(ValueOf(source.columns()[wanted.column], wanted));
  }
  if (source.FindIndex(columns) == nullptr) return false;
  FoundRows found = source.FindRows(columns, values, used);
  if (found.table == nullptr) return false;
  cursor.found = std::move(found.table);
  if (found.shared) {
    FindIn(cursor, *cursor.found, used);
    return true;
  }
  cursor.table = cursor.found.get();
  for (RowNumber row = 0; row < cursor.found->rows(); ++row) {
    if (std::ranges::all_of(cursor.wanted, [&](const Wanted& wanted) {
          return Equals(*cursor.found, row, wanted);
        })) {
      cursor.selected.push_back(row);
    }
  }
  cursor.matches = cursor.selected;
  return true;
}

// Sets the values that the cursor's rows must have; false if no row can.
bool ReadWanted(Cursor& cursor, const char* columns, int count, sqlite3_value** values) {
  for (int i = 0; i < count; ++i) {
    char* end = nullptr;
    const std::size_t column = std::strtoull(columns + 1, &end, 10);
    columns = end;
    const std::optional<Wanted> wanted =
        WantedOf(cursor.source->columns().at(column), column, values[i]);
    if (!wanted) return false;
    cursor.wanted.push_back(*wanted);
  }
  return true;
}

// A whole number that is not above (`low`) or not below the value, and that the column can store.
std::int64_t WholeBound(access::ColumnType stored, sqlite3_value* value, bool low) {
  const auto clamp = [](std::int64_t number, auto limits) {
    return std::clamp<std::int64_t>(number, limits.min(), limits.max());
  };
  constexpr double kMost = 9.2e18;
  const double fraction = sqlite3_value_double(value);
  const std::int64_t number =
      sqlite3_value_type(value) == SQLITE_INTEGER
          ? sqlite3_value_int64(value)
          : static_cast<std::int64_t>(
                std::clamp(low ? std::floor(fraction) : std::ceil(fraction), -kMost, kMost));
  switch (stored) {
    case access::ColumnType::kByte:
      return clamp(number, std::numeric_limits<std::uint8_t>());
    case access::ColumnType::kInteger:
      return clamp(number, std::numeric_limits<std::int16_t>());
    case access::ColumnType::kLong:
      return clamp(number, std::numeric_limits<std::int32_t>());
    default:
      return number;
  }
}

// A day count that is before (`low`) or after all that are this date to a second. Before day 0 the
// times of a day run backwards, so it is a day there.
double DateBound(double seconds, bool low) {
  constexpr double kSecondsPerDay = 86400;
  const double days = seconds / kSecondsPerDay;
  const double margin = days < 1 ? 1 : 1.5 / kSecondsPerDay;
  const double bound = days < 1 ? std::floor(days) : days;
  return low ? bound - margin : bound + margin;
}

// A single is compared by its digits, which are not quite those that are stored.
double FloatingBound(access::ColumnType stored, double number, bool low) {
  // The key of -0 comes before that of 0.
  if (stored != access::ColumnType::kSingle) return number == 0 && low ? -0.0 : number;
  constexpr double kMost = std::numeric_limits<float>::max();
  const double margin = std::abs(number) * 1e-6 + std::numeric_limits<float>::min();
  return std::clamp(low ? number - margin : number + margin, -kMost, kMost);
}

// A bound as a value of the column; null, which is none, for a value of another type.
Value BoundOf(const SourceColumn& column, sqlite3_value* value, bool low) {
  const int type = sqlite3_value_type(value);
  if (column.type == Type::kText) {
    if (type != SQLITE_TEXT) return Null{};
    const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    const std::string_view all(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
    return std::string(all.substr(0, all.find_last_not_of(' ') + 1));
  }
  if (type != SQLITE_INTEGER && type != SQLITE_FLOAT) return Null{};
  switch (column.type) {
    case Type::kDate:
      return DateBound(sqlite3_value_double(value), low);
    case Type::kDouble:
      return FloatingBound(column.stored, sqlite3_value_double(value), low);
    case Type::kCurrency:
      return Currency::FromTenThousandths(WholeBound(column.stored, value, low));
    default:
      return WholeBound(column.stored, value, low);
  }
}

// The rows of a range of a column's values, or all rows: SQLite compares them.
void FilterRange(Cursor& cursor, int kind, const char* plan, int count, sqlite3_value** values) {
  char* end = nullptr;
  const ColumnMask used = std::strtoull(plan, &end, 16);
  const std::size_t position = std::strtoull(end + 1, nullptr, 10);
  for (int i = 0; i < count; ++i) {
    if (sqlite3_value_type(values[i]) != SQLITE_NULL) continue;
    cursor.stream_ended = true;
    return;
  }
  TableSource& source = *cursor.source;
  const SourceColumn& column = source.columns().at(position);
  access::KeyRange range;
  if (kind != kTo) range.from = BoundOf(column, values[0], true);
  if (kind != kFrom) range.to = BoundOf(column, values[kind == kFromTo ? 1 : 0], false);
  cursor.found = source.rows() == nullptr ? source.FindRange(position, range, used) : nullptr;
  cursor.table = cursor.found.get();
  if (cursor.table == nullptr && !StartStream(cursor)) cursor.table = &source.Load();
}

int Filter(sqlite3_vtab_cursor* base, int number, const char* plan, int count,
           sqlite3_value** values) {
  Cursor& cursor = *static_cast<Cursor*>(base);
  cursor.lookup = count > 0 && number > 0;
  cursor.row = 0;
  cursor.table = nullptr;
  cursor.stream.reset();
  cursor.stream_ended = false;
  cursor.wanted.clear();
  cursor.texts.clear();
  cursor.selected.clear();
  cursor.matches = {};
  if (number < 0) {
    FilterRange(cursor, number, plan, count, values);
    return SQLITE_OK;
  }
  if (!cursor.lookup) {
    if (!StartStream(cursor)) cursor.table = &cursor.source->Load();
    return SQLITE_OK;
  }
  char* columns = nullptr;
  const ColumnMask used = std::strtoull(plan, &columns, 16);
  if (!ReadWanted(cursor, columns, count, values)) {
    cursor.row = kNoRow;
    cursor.stream_ended = true;
    return SQLITE_OK;
  }
  const bool in_memory = cursor.source->rows() != nullptr;
  if (in_memory || (!FindStored(cursor, used) && !StartStream(cursor)))
    FindIn(cursor, cursor.source->Load(), used);
  if (cursor.stream == nullptr) TakeMatch(cursor);
  return SQLITE_OK;
}

int Next(sqlite3_vtab_cursor* base) {
  Cursor& cursor = *static_cast<Cursor*>(base);
  if (cursor.stream != nullptr) {
    return Guarded(*cursor.tables, [&] {
      AdvanceStream(cursor);
      return SQLITE_OK;
    });
  }
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
  if (cursor.table == nullptr) return cursor.stream_ended ? 1 : 0;
  return cursor.row >= cursor.table->rows() ? 1 : 0;  // kNoRow is beyond every row
}

void SetText(sqlite3_context* context, std::string_view text, sqlite3_destructor_type lifetime) {
  sqlite3_result_text64(context, text.data(), text.size(), lifetime, SQLITE_UTF8);
}

void SetBytes(sqlite3_context* context, std::string_view bytes, sqlite3_destructor_type lifetime) {
  sqlite3_result_blob64(context, bytes.data(), bytes.size(), lifetime);
}

void ReadCell(const TableSource& source, access::RowCursor& row, std::size_t index,
              sqlite3_context* context) {
  const SourceColumn& column = source.columns()[index];
  if (row.IsNull(index)) {
    sqlite3_result_null(context);
  } else if (column.type == Type::kText) {
    SetText(context, row.Text(index), SQLITE_TRANSIENT);
  } else if (IsStoredAsBytes(column.type)) {
    std::string buffer;
    SetBytes(context, BytesCell(row, index, column.stored, buffer), SQLITE_TRANSIENT);
  } else if (column.type == Type::kDouble) {
    sqlite3_result_double(context, DoubleCell(row, index, column.stored));
  } else {
    sqlite3_result_int64(context, IntegerCell(row, index, column.stored));
  }
}

int ReadColumn(sqlite3_vtab_cursor* base, sqlite3_context* context, int number) {
  const Cursor& cursor = *static_cast<Cursor*>(base);
  const auto index = static_cast<std::size_t>(number);
  if (cursor.table == nullptr) {
    return Guarded(*cursor.tables, [&] {
      ReadCell(*cursor.source, cursor.stream->row(), index, context);
      return SQLITE_OK;
    });
  }
  const CachedColumn& column = cursor.table->columns()[index];
  // A table in memory never changes and outlives every statement, so nothing is copied.
  const sqlite3_destructor_type lifetime =
      cursor.table == cursor.found.get() ? SQLITE_TRANSIENT : SQLITE_STATIC;
  if (column.IsNull(cursor.row)) {
    sqlite3_result_null(context);
  } else if (column.type() == Type::kText) {
    SetText(context, column.Bytes(cursor.row), lifetime);
  } else if (IsStoredAsBytes(column.type())) {
    SetBytes(context, column.Bytes(cursor.row), lifetime);
  } else if (column.type() == Type::kDouble) {
    sqlite3_result_double(context, column.Double(cursor.row));
  } else {
    sqlite3_result_int64(context, column.Integer(cursor.row));
  }
  return SQLITE_OK;
}

int ReadRowId(sqlite3_vtab_cursor* base, sqlite3_int64* row) {
  const Cursor& cursor = *static_cast<Cursor*>(base);
  *row =
      cursor.table != nullptr ? cursor.table->Key(cursor.row) : RowKey(cursor.stream->row().Id());
  return SQLITE_OK;
}

sqlite3_module MakeModule() {
  sqlite3_module module{};
  module.iVersion = 1;
  const auto connect = [](sqlite3* connection, void* data, int count, const char* const* arguments,
                          sqlite3_vtab** result, char** error) {
    auto& tables = *static_cast<VirtualTables*>(data);
    return Guarded(tables,
                   [&] { return Connect(connection, tables, count, arguments, result, error); });
  };
  module.xCreate = connect;
  module.xConnect = connect;
  module.xBestIndex = [](sqlite3_vtab* table, sqlite3_index_info* info) {
    return Guarded(*static_cast<VirtualTable*>(table)->tables,
                   [&] { return BestIndex(table, info); });
  };
  module.xDisconnect = Disconnect;
  module.xDestroy = Disconnect;
  module.xOpen = [](sqlite3_vtab* table, sqlite3_vtab_cursor** result) {
    return Guarded(*static_cast<VirtualTable*>(table)->tables,
                   [&] { return OpenCursor(table, result); });
  };
  module.xClose = CloseCursor;
  module.xFilter = [](sqlite3_vtab_cursor* cursor, int number, const char* plan, int count,
                      sqlite3_value** values) {
    return Guarded(*static_cast<Cursor*>(cursor)->tables,
                   [&] { return Filter(cursor, number, plan, count, values); });
  };
  module.xNext = Next;
  module.xEof = AtEnd;
  module.xColumn = ReadColumn;
  module.xRowid = ReadRowId;
  return module;
}

const sqlite3_module kModule = MakeModule();

}  // namespace

std::optional<TablePlan> ReadTablePlan(std::string_view line) {
  constexpr std::string_view kBefore = " VIRTUAL TABLE INDEX ";
  const std::size_t start = line.find(kBefore);
  const std::size_t end = line.rfind(" t");
  if (start == std::string_view::npos || end == std::string_view::npos) return std::nullopt;
  TablePlan plan;
  const auto read = [](std::string_view digits, std::size_t& number) {
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
  };
  read(line.substr(end + 2), plan.number);
  // The number of values, the columns that are read, then those of the values.
  std::string_view columns = line.substr(0, end).substr(start + kBefore.size());
  plan.range = columns.starts_with('-');
  for (int colons = 0; colons < 2; ++colons) {
    const std::size_t colon = columns.find(':');
    if (colon == std::string_view::npos) return plan;
    columns.remove_prefix(colon + 1);
  }
  while (!columns.empty()) {
    read(columns, plan.columns.emplace_back());
    columns.remove_prefix(std::min(columns.find(','), columns.size() - 1) + 1);
  }
  return plan;
}

void RegisterVirtualTables(sqlite3* connection, VirtualTables& tables) {
  RequireDone(sqlite3_create_module_v2(connection, "source", &kModule, &tables, nullptr));
}

}  // namespace tenora::query
