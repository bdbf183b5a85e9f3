#include "platform/query/cache/server_tables.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <unordered_set>
#include <utility>

#include "platform/access/engine_error.h"
#include "platform/access/sort_order.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

// A pass over so many rows is made without keeping them, the first time.
constexpr std::int64_t kLargeRows = 50000;
// The groups of rows found together that are kept, beside those of the expected codes.
constexpr std::ptrdiff_t kMostGroups = 4;

std::string ValueText(const Value& value) {
  const auto* const text = std::get_if<std::string>(&value);
  return text != nullptr ? *text : std::to_string(std::get<std::int64_t>(value));
}

class ServerStream : public TableStream {
 public:
  explicit ServerStream(std::unique_ptr<access::RowCursor> rows) : rows_(std::move(rows)) {}
  bool Next() override { return rows_->Next(); }
  access::RowCursor& row() override { return *rows_; }

 private:
  std::unique_ptr<access::RowCursor> rows_;
};

}  // namespace

class ServerTable : public TableSource {
 public:
  ServerTable(ServerTables& tables, const server::BranchTable& table)
      : TableSource(table.name, SourceColumns(table.columns), table.rows),
        tables_(tables),
        table_(table) {
    if (table_.found_by.empty()) Load();
  }

  std::span<const std::string> withheld() const override { return table_.withheld; }

  CachedTable& Load() override {
    if (rows_ == nullptr) {
      rows_ = std::make_shared<CachedTable>(name(), table_.columns, row_count(),
                                            *tables_.branch().Rows(table_));
    }
    return *rows_;
  }

  const access::IndexPath* FindIndex(const std::vector<std::size_t>& columns) override {
    for (std::size_t i = 0; i < table_.found_by.size(); ++i) {
      if (std::ranges::find(columns, table_.found_by[i]) == columns.end()) continue;
      // Among the rows of a branch a code has some dozen, a number one.
      constexpr double kRowsOfCode = 50;
      const SourceColumn& column = this->columns()[table_.found_by[i]];
      path_ = {.number = i,
               .name = "on the server",
               .columns = {table_.found_by[i]},
               .rows_per_key = column.type == Type::kText ? kRowsOfCode : 1};
      return &path_;
    }
    return nullptr;
  }

  FoundRows FindRows(const std::vector<std::size_t>& columns, std::span<const Value> values,
                     ColumnMask) override {
    const std::size_t column = columns.front();
    const std::string value = ValueText(values.front());
    asked_ = wanted_ = true;
    if (!Holds(column, value)) tables_.Fetch(this, column, {value});
    for (const Group& group : groups_) {
      if (group.column == column && group.keys.contains(Key(column, value))) {
        return {.table = group.rows, .shared = true};
      }
    }
    return {};
  }

  std::unique_ptr<TableStream> Stream() override {
    if (!Streams()) return nullptr;
    streamed_ = true;
    return std::make_unique<ServerStream>(tables_.branch().Rows(table_));
  }

  bool Streams() const override {
    return rows_ == nullptr && row_count() > kLargeRows && !streamed_;
  }

  const server::BranchTable& table() const { return table_; }

  // The column whose values are codes; none for a table that is in memory.
  std::optional<std::size_t> CodeColumn() const {
    if (rows_ != nullptr) return std::nullopt;
    const auto code = std::ranges::find(table_.found_by, Type::kText,
                                        [&](std::size_t column) { return columns()[column].type; });
    return code == table_.found_by.end() ? std::nullopt : std::optional(*code);
  }

  // Whether rows of the expected codes are likely to be asked for.
  bool wanted() const { return wanted_; }

  bool Holds(std::size_t column, const std::string& value) const {
    const std::string key = Key(column, value);
    return std::ranges::any_of(groups_, [&](const Group& group) {
      return group.column == column && group.keys.contains(key);
    });
  }

  void Keep(std::size_t column, const std::vector<std::string>& values, bool expected,
            access::RowCursor& rows) {
    Group group{.expected = expected,
                .column = column,
                .keys = {},
                .rows = std::make_shared<CachedTable>(name(), table_.columns, 0, rows)};
    for (const std::string& value : values) group.keys.insert(Key(column, value));
    groups_.push_back(std::move(group));
    const auto is_other = [](const Group& one) { return !one.expected; };
    if (std::ranges::count_if(groups_, is_other) > kMostGroups) {
      groups_.erase(std::ranges::find_if(groups_, is_other));
    }
  }

  // Others are expected from now on: those that nobody asked this table for are not fetched again.
  void ForgetExpected() {
    wanted_ = std::exchange(asked_, false);
    for (Group& group : groups_) group.expected = false;
    while (groups_.size() > 1) groups_.pop_front();
  }

 private:
  struct Group {
    bool expected = false;  // kept until others are
    std::size_t column = 0;
    std::unordered_set<std::string> keys;
    std::shared_ptr<CachedTable> rows;
  };

  // Texts that the engine takes for equal have equal keys.
  std::string Key(std::size_t column, const std::string& value) const {
    if (columns()[column].type != Type::kText) return value;
    std::string key;
    access::SortOrder::Closest(table_.columns[column].sort_order).AppendComparable(value, key);
    return key;
  }

  ServerTables& tables_;
  const server::BranchTable table_;
  access::IndexPath path_;
  std::deque<Group> groups_;
  bool asked_ = false;  // since the codes are expected
  bool wanted_ = true;
  bool streamed_ = false;
};

ServerTables::ServerTables(std::shared_ptr<server::Branch> branch,
                           std::vector<std::string> expected)
    : branch_(std::move(branch)),
      generation_(branch_->state().generation),
      expected_(std::move(expected)) {}

server::Branch& ServerTables::branch() const {
  if (branch_->state().generation != generation_) branch_->ThrowChanged();
  return *branch_;
}

std::shared_ptr<TableSource> ServerTables::Find(std::string_view name) {
  const std::string key = ToLower(name);
  if (const auto known = tables_.find(key); known != tables_.end()) return known->second;
  const server::BranchTable* const table = branch().FindTable(name);
  if (table == nullptr) return nullptr;
  return tables_.emplace(key, std::make_shared<ServerTable>(*this, *table)).first->second;
}

void ServerTables::Expect(std::vector<std::string> codes) {
  expected_ = std::move(codes);
  for (const auto& [name, table] : tables_) table->ForgetExpected();
  Fetch(nullptr, 0, {});
}

void ServerTables::Fetch(const ServerTable* asking, std::size_t column,
                         const std::vector<std::string>& values) {
  for (const server::BranchTable& table : branch().tables()) {
    if (!table.found_by.empty()) Find(table.name);
  }
  std::vector<server::RowRequest> requests;
  struct Asked {
    ServerTable* table;
    bool expected;
  };
  std::vector<Asked> tables;
  for (const auto& entry : tables_) {
    ServerTable* const table = entry.second.get();
    const std::optional<std::size_t> code = table->CodeColumn();
    server::RowRequest request{.table = &table->table(), .column = code.value_or(0), .values = {}};
    if (code && table->wanted()) {
      std::ranges::copy_if(expected_, std::back_inserter(request.values),
                           [&](const std::string& value) { return !table->Holds(*code, value); });
    }
    const bool expected = !request.values.empty();
    if (table == asking && code == column) {
      request.values.insert(request.values.end(), values.begin(), values.end());
    } else if (table == asking) {
      requests.push_back({.table = &table->table(), .column = column, .values = values});
      tables.push_back({table, false});
    }
    if (request.values.empty()) continue;
    requests.push_back(std::move(request));
    tables.push_back({table, expected});
  }
  if (requests.empty()) return;
  const auto found = branch().Find(requests);
  for (std::size_t i = 0; i < found.size(); ++i) {
    tables[i].table->Keep(requests[i].column, requests[i].values, tables[i].expected, *found[i]);
  }
}

}  // namespace tenora::query
