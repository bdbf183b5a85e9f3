#include "platform/server/branch_import.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <unordered_map>

#include "platform/access/database_file.h"
#include "platform/access/database_writer.h"
#include "platform/access/sort_order.h"
#include "platform/runtime/text.h"
#include "platform/runtime/version.h"
#include "platform/server/branch_list.h"
#include "platform/server/branch_register.h"
#include "platform/server/digest.h"
#include "platform/server/result_rows.h"

namespace tenora::server {
namespace {

namespace fs = std::filesystem;

constexpr int kLayoutChanged = 3190;
constexpr std::chrono::milliseconds kWaitForWriters{10000};
constexpr std::size_t kCopyBlock = 1 << 16;

// A column of the file's table and where its values are kept.
struct ImportedColumn {
  access::Column column;
  std::string stored;  // the server's column; empty: among the extra ones
  std::string type;    // of the server's column
  std::string keyed;   // the server's column for its sort key; empty: none
};

struct ImportedTable {
  const access::Table* table = nullptr;
  std::string stored;
  std::vector<ImportedColumn> columns;
};

struct PageRows {
  std::int64_t rows = 0;
  std::string digest;  // in the server's hexadecimal form
  bool operator==(const PageRows&) const = default;
};
using Pages = std::map<std::uint32_t, PageRows>;

// Whether the server's column of this type takes every value of the file's.
bool Takes(std::string_view type, access::ColumnType column) {
  using access::ColumnType;
  switch (column) {
    case ColumnType::kBoolean:
      return type == "boolean";
    case ColumnType::kByte:
    case ColumnType::kInteger:
      return type == "smallint" || type == "integer" || type == "bigint";
    case ColumnType::kLong:
      return type == "integer" || type == "bigint";
    case ColumnType::kCurrency:
      return type == "numeric(19,4)";
    case ColumnType::kSingle:
      return type == "real";
    case ColumnType::kDouble:
      return type == "double precision";
    case ColumnType::kDateTime:
      return type == "timestamp(0) without time zone";
    case ColumnType::kText:
    case ColumnType::kMemo:
      return type == "text";
    default:
      return false;
  }
}

// A text within a JSON text, which takes no control characters as they are.
void AppendJsonText(std::string_view text, std::string& json) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  json += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') json += '\\';
    if (byte < 0x20) {
      json += "\\u00";
      json += kDigits[byte >> 4U];
      json += kDigits[byte & 15U];
    } else {
      json += c;
    }
  }
  json += '"';
}

// Columns of the server's and their types.
using ColumnList = std::vector<std::pair<std::string, std::string>>;

// The lines of "copy" for the rows of a table.
class RowLines {
 public:
  explicit RowLines(const ImportedTable& table) : table_(table) {}

  ColumnList Columns() const {
    ColumnList columns = {{"_row", "bigint"}};
    for (const ImportedColumn& column : table_.columns) {
      if (!column.stored.empty()) columns.emplace_back(column.stored, column.type);
      if (!column.keyed.empty()) columns.emplace_back(column.keyed, "bytea");
    }
    columns.emplace_back("extra", "jsonb");
    return columns;
  }

  void Append(access::RowCursor& row, std::string& lines) const {
    lines += std::to_string(RowNumber(row.Id()));
    std::string extra;
    for (std::size_t i = 0; i < table_.columns.size(); ++i) {
      const ImportedColumn& column = table_.columns[i];
      const std::optional<std::string> field = SentField(row, i, column.column.type);
      if (column.stored.empty()) {
        AppendExtra(column.column.name, field, extra);
        continue;
      }
      lines += '\t';
      AppendCopyField(field, lines);
      if (!column.keyed.empty()) AppendKey(column.column, field, lines);
    }
    lines += '\t';
    if (extra.empty()) {
      AppendCopyField(std::nullopt, lines);
    } else {
      AppendCopyField(extra + "}", lines);
    }
    lines += '\n';
  }

  static std::int64_t RowNumber(access::RowId row) {
    constexpr std::int64_t kPlaces = 256;
    return row.page * kPlaces + row.slot;
  }

 private:
  static void AppendExtra(const std::string& name, const std::optional<std::string>& field,
                          std::string& extra) {
    if (!field) return;
    extra += extra.empty() ? '{' : ',';
    AppendJsonText(name, extra);
    extra += ':';
    AppendJsonText(*field, extra);
  }

  static void AppendKey(const access::Column& column, const std::optional<std::string>& field,
                        std::string& lines) {
    lines += '\t';
    if (!field) return AppendCopyField(std::nullopt, lines);
    std::string key;
    access::SortOrder::Closest(column.sort_order).AppendComparable(*field, key);
    AppendCopyField(HexBytes(key), lines);
  }

  const ImportedTable& table_;
};

// Calls `use` with the page, the number of its rows and their lines, in the order of the pages.
void EachPage(const ImportedTable& table,
              const std::function<void(std::uint32_t page, std::int64_t rows,
                                       const std::string& lines)>& use) {
  const RowLines writer(table);
  std::string lines;
  std::uint32_t page = 0;
  std::int64_t rows = 0;
  const auto end_page = [&] {
    if (rows > 0) use(page, rows, lines);
    lines.clear();
    rows = 0;
  };
  for (const auto row = table.table->Rows(); row->Next();) {
    if (row->Id().page != page) end_page();
    page = row->Id().page;
    ++rows;
    writer.Append(*row, lines);
  }
  end_page();
}

Pages ReadPages(const ImportedTable& table) {
  Pages pages;
  EachPage(table, [&](std::uint32_t page, std::int64_t rows, const std::string& lines) {
    pages[page] = {rows, HexBytes(Sha256(lines))};
  });
  return pages;
}

class Import {
 public:
  Import(Connection& connection, std::string branch, const fs::path& path, LayoutChange layout)
      : connection_(connection),
        name_(std::move(branch)),
        path_(fs::absolute(path).lexically_normal()),
        layout_(layout) {}

  ImportReport Run(std::chrono::milliseconds wait) {
    RequireSyncRole();
    EndWithThisProcess();
    ImportTransaction transaction(connection_);
    AddWhereNew();
    id_ = transaction.Lock(name_, wait);
    FindState();
    // Until the commit: what is brought is one state of the file.
    const auto lock = access::ReadLock::TakeWherePossible(path_, kWaitForWriters);
    file_ = access::DatabaseFile::Open(path_);
    const auto taken = std::chrono::system_clock::now();
    for (const ImportedTable& table : FindTables()) BringTable(table);
    // What the server counts by itself it counts later, and only in a transaction's outcome.
    if (report_.rows_sent * 2 > report_.rows) connection_.Run("select rental.take_statistics()");
    if (report_.Changed() || first_time_) {
      connection_.Run({.sql = "select rental.find_breaks($1)", .parameters = {Id()}});
    }
    report_.findings = ReadFindings(connection_, name_);
    Close(taken);
    transaction.Commit();
    return report_;
  }

 private:
  // A statement of an import that was killed ends, with its lock, rather than going on for nobody.
  // Some systems of servers cannot look for that.
  void EndWithThisProcess() {
    connection_.Run(
        "do $$ begin perform set_config('client_connection_check_interval', '2s', false); "
        "exception when others then null; end $$");
  }

  std::string Id() const { return std::to_string(id_); }

  void RequireSyncRole() {
    const ResultPtr may = connection_.Run(
        "select has_function_privilege('rental.lock_import(int)', 'execute'), session_user");
    if (may->Boolean(0, 0)) return;
    const std::string login(may->Text(0, 1));
    throw ServerError(server_error::kCallFailed,
                      "The login '" + login +
                          "' may not bring branches to the server: it needs the role sync, which "
                          "the owner of the database gives it with 'tenora server grant " +
                          login + " --branch \"" + name_ + "\" --role sync'");
  }

  void AddWhereNew() {
    if (layout_ == LayoutChange::kRefuse) return;
    const ResultPtr found = connection_.Run(
        {.sql = "select id from rental.branch where name = $1", .parameters = {name_}});
    if (found->rows() == 0) AddBranch(connection_, name_);
  }

  void FindState() {
    const ResultPtr state =
        connection_.Run({.sql = "select generation, file_name from rental.sync where branch = $1",
                         .parameters = {Id()}});
    first_time_ = state->rows() == 0;
    if (first_time_) return;
    report_.generation = state->Integer(0, 0);
    if (state->Text(0, 1) != path_.string()) report_.file_before = state->Text(0, 1);
  }

  std::vector<ImportedTable> FindTables() {
    const ResultPtr kinds = connection_.Run("select stored from rental.table_kind order by stored");
    std::vector<ImportedTable> tables;
    std::vector<std::string> names = file_->TableNames();
    for (int row = 0; row < kinds->rows(); ++row) {
      const std::string stored(kinds->Text(row, 0));
      const access::Table* const table = file_->FindTable(stored);
      std::erase_if(names, [&](const std::string& name) { return EqualsNoCase(name, stored); });
      const std::string change = LayoutDifference(stored, table);
      if (!change.empty()) TakeLayout(stored, table, change);
      if (table != nullptr) tables.push_back(Map(stored, *table));
    }
    if (tables.empty()) {
      throw ServerError(kLayoutChanged, "Branch '" + name_ + "' is left as it was: '" +
                                            path_.string() +
                                            "' has none of the tables that letters are made from");
    }
    report_.tables_left_out = std::move(names);
    return tables;
  }

  // What of the table is not as the last time, in words; empty for nothing.
  std::string LayoutDifference(const std::string& stored, const access::Table* table) {
    const ResultPtr known = connection_.Run(
        {.sql = "select name, type, length, precision, scale, sort_order from rental.kept_column "
                "where branch = $1 and stored_table = $2 order by position",
         .parameters = {Id(), stored}});
    if (table == nullptr) return known->rows() == 0 ? "" : "is gone";
    if (known->rows() == 0) return "is new";
    const std::vector<access::Column>& columns = table->columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const int row = static_cast<int>(i);
      if (row >= known->rows() || known->Text(row, 0) != columns[i].name) {
        return "has a column '" + columns[i].name + "' that was not there";
      }
      const std::int64_t now[] = {static_cast<std::int64_t>(columns[i].type), columns[i].length,
                                  columns[i].precision, columns[i].scale, columns[i].sort_order};
      for (int part = 0; part < 5; ++part) {
        if (known->Integer(row, part + 1) != now[part]) {
          return "has a column '" + columns[i].name + "' of another type";
        }
      }
    }
    if (known->rows() == static_cast<int>(columns.size())) return "";
    return "has no column '" + std::string(known->Text(static_cast<int>(columns.size()), 0)) +
           "' any more";
  }

  void TakeLayout(const std::string& stored, const access::Table* table,
                  const std::string& change) {
    if (layout_ == LayoutChange::kRefuse) {
      throw ServerError(kLayoutChanged,
                        "Branch '" + name_ + "' is left as it was: the table '" + stored +
                            "' of '" + path_.string() + "' " + change +
                            ". 'tenora server import' brings it with its new layout");
    }
    report_.rows_removed +=
        connection_
            .Run({.sql = "select rental.take_out($1, $2, null)", .parameters = {Id(), stored}})
            ->Integer(0, 0);
    report_.layout_changed = true;
    if (table != nullptr) KeepLayout(Map(stored, *table));
  }

  // Which of the server's columns have the values of which of the file's.
  ImportedTable Map(const std::string& stored, const access::Table& table) {
    const ResultPtr there = connection_.Run(
        {.sql = "select attname, format_type(atttypid, atttypmod) from pg_attribute where attrelid "
                "= ('rental.' || quote_ident($1))::regclass and attnum > 0 and not attisdropped",
         .parameters = {stored}});
    std::map<std::string, std::string, std::less<>> types;
    for (int row = 0; row < there->rows(); ++row) {
      types.emplace(there->Text(row, 0), there->Text(row, 1));
    }
    ImportedTable mapped{.table = &table, .stored = stored, .columns = {}};
    for (const access::Column& column : table.columns()) {
      const std::string name = ToLower(column.name);
      const auto type = types.find(name);
      const bool kept = type != types.end() && Takes(type->second, column.type);
      const bool keyed = kept && types.contains(name + "_k");
      mapped.columns.push_back(
          {column, kept ? name : "", kept ? type->second : "", keyed ? name + "_k" : ""});
    }
    return mapped;
  }

  void KeepLayout(const ImportedTable& table) {
    connection_.Run(
        {.sql = "insert into rental.kept_table(branch, stored, name, rows) values ($1, $2, $3, 0)",
         .parameters = {Id(), table.stored, table.table->name()}});
    std::vector<Query> queries;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      const access::Column& column = table.columns[i].column;
      const std::string& stored = table.columns[i].stored;
      queries.push_back(
          {.sql = "insert into rental.kept_column values ($1,$2,$3,$4,$5,$6,$7,$8,$9,$10)",
           .parameters = {Id(), table.stored, std::to_string(i), column.name,
                          std::to_string(static_cast<int>(column.type)),
                          std::to_string(column.length), std::to_string(column.precision),
                          std::to_string(column.scale), std::to_string(column.sort_order),
                          stored.empty() ? Parameter(std::nullopt) : Parameter(stored)}});
    }
    connection_.RunTogether(queries);
  }

  Pages StoredPages(const std::string& stored) {
    const ResultPtr found = connection_.Run(
        {.sql =
             "select page, rows, digest from rental.page where branch = $1 and stored_table = $2",
         .parameters = {Id(), stored}});
    Pages pages;
    for (int row = 0; row < found->rows(); ++row) {
      pages[static_cast<std::uint32_t>(found->Integer(row, 0))] = {
          found->Integer(row, 1), std::string(found->Text(row, 2))};
    }
    return pages;
  }

  void BringTable(const ImportedTable& table) {
    const Pages before = StoredPages(table.stored);
    const Pages now = ReadPages(table);
    std::vector<std::string> outdated;  // to be taken out
    for (const auto& [page, rows] : before) {
      const auto found = now.find(page);
      if (found == now.end() || found->second != rows) outdated.push_back(std::to_string(page));
    }
    const auto is_new = [&](std::uint32_t page) {
      const auto found = before.find(page);
      return found == before.end() || found->second != now.at(page);
    };
    std::int64_t rows = 0, sent_pages = 0;
    for (const auto& [page, held] : now) {
      rows += held.rows;
      if (is_new(page)) ++sent_pages;
    }
    for (const auto& [page, held] : before) report_.pages_gone += now.contains(page) ? 0 : 1;
    report_.rows += rows;
    report_.pages += static_cast<std::int64_t>(now.size());
    report_.pages_changed += sent_pages;
    if (!outdated.empty()) {
      report_.rows_removed += connection_
                                  .Run({.sql = "select rental.take_out($1, $2, $3)",
                                        .parameters = {Id(), table.stored, ArrayOf(outdated)}})
                                  ->Integer(0, 0);
    }
    if (sent_pages > 0) {
      SendRows(table, is_new);
      SendPages(table.stored, now, is_new);
    }
    connection_.Run(
        {.sql = "update rental.kept_table set rows = $3 where branch = $1 and stored = $2",
         .parameters = {Id(), table.stored, std::to_string(rows)}});
  }

  // "copy" does not go into tables with row security, so rows arrive in a table of this session.
  template <typename Send>
  std::int64_t CopyInto(const std::string& table, const ColumnList& columns, const Send& send) {
    std::string names, declarations;
    for (const auto& [name, type] : columns) {
      names += (names.empty() ? "" : ", ") + Name(name);
      declarations += (declarations.empty() ? "" : ", ") + Name(name) + " " + type;
    }
    connection_.Run("create temporary table arriving (" + declarations + ") on commit drop");
    connection_.BeginCopy("copy pg_temp.arriving(" + names + ") from stdin");
    std::string block;
    send([&](const std::string& lines) {
      block += lines;
      if (block.size() < kCopyBlock) return;
      connection_.CopyText(block);
      block.clear();
    });
    connection_.CopyText(block);
    const std::int64_t rows = connection_.EndCopy();
    connection_.Run("insert into " + table + "(branch, " + names + ") select " + Id() + ", " +
                    names + " from pg_temp.arriving");
    connection_.Run("drop table pg_temp.arriving");
    return rows;
  }

  template <typename IsNew>
  void SendRows(const ImportedTable& table, const IsNew& is_new) {
    report_.rows_sent +=
        CopyInto("rental." + Name(table.stored), RowLines(table).Columns(), [&](const auto& take) {
          EachPage(table, [&](std::uint32_t page, std::int64_t, const std::string& lines) {
            if (is_new(page)) take(lines);
          });
        });
  }

  template <typename IsNew>
  void SendPages(const std::string& stored, const Pages& pages, const IsNew& is_new) {
    const ColumnList columns = {
        {"page", "bigint"}, {"stored_table", "text"}, {"rows", "int"}, {"digest", "bytea"}};
    CopyInto("rental.page", columns, [&](const auto& take) {
      for (const auto& [page, held] : pages) {
        if (!is_new(page)) continue;
        std::string line = std::to_string(page) + "\t" + stored + "\t" + std::to_string(held.rows);
        line += '\t';
        AppendCopyField(held.digest, line);
        take(line + "\n");
      }
    });
  }

  static std::string Seconds(std::chrono::system_clock::time_point time) {
    using std::chrono::duration_cast;
    return std::to_string(duration_cast<std::chrono::seconds>(time.time_since_epoch()).count());
  }

  void Close(std::chrono::system_clock::time_point taken) {
    if (report_.Changed() || first_time_) ++report_.generation;
    const auto changed = std::chrono::file_clock::to_sys(fs::last_write_time(path_));
    connection_.Run(
        {.sql =
             "insert into rental.sync(branch, generation, taken, file_name, file_size, file_time, "
             "sort_order, rows, findings, tenora_version) values ($1, $2, to_timestamp($3), $4, "
             "$5, to_timestamp($6), $7, $8, $9, $10) on conflict (branch) do update set "
             "generation = excluded.generation, taken = excluded.taken, finished = now(), "
             "file_name = excluded.file_name, file_size = excluded.file_size, file_time = "
             "excluded.file_time, sort_order = excluded.sort_order, rows = excluded.rows, "
             "findings = excluded.findings, tenora_version = excluded.tenora_version",
         .parameters = {
             Id(), std::to_string(report_.generation), Seconds(taken), path_.string(),
             std::to_string(fs::file_size(path_)),
             Seconds(std::chrono::time_point_cast<std::chrono::system_clock::duration>(changed)),
             std::to_string(file_->sort_order()), std::to_string(report_.rows),
             std::to_string(report_.findings.size()), kVersion}});
  }

  Connection& connection_;
  const std::string name_;
  const fs::path path_;
  const LayoutChange layout_;
  std::shared_ptr<access::DatabaseFile> file_;
  std::int64_t id_ = 0;
  bool first_time_ = false;
  ImportReport report_;
};

}  // namespace

ImportReport ImportBranch(Connection& connection, const std::string& branch,
                          const std::filesystem::path& file, LayoutChange layout,
                          std::chrono::milliseconds wait) {
  return Import(connection, branch, file, layout).Run(wait);
}

}  // namespace tenora::server
