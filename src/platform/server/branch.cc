#include "platform/server/branch.h"

#include <algorithm>

#include "platform/access/engine_error.h"
#include "platform/access/sort_order.h"
#include "platform/runtime/text.h"
#include "platform/server/rental_schema.h"
#include "platform/server/result_rows.h"

namespace tenora::server {
namespace {

// Less than a silent server is waited for: one that is only slow says so itself.
constexpr std::chrono::seconds kTimeLimit{50};
constexpr int kRowsAtOnce = 5000;

// Result columns of StateQuery.
constexpr int kGeneration = 0, kTaken = 1, kFileName = 2, kRows = 3, kFindings = 4, kSortOrder = 5;

Query StateQuery(std::int64_t branch) {
  return {.sql =
              "select generation, extract(epoch from taken)::bigint, file_name, rows, findings, "
              "sort_order from rental.sync where branch = $1",
          .parameters = {std::to_string(branch)}};
}

bool IsText(access::ColumnType type) {
  return type == access::ColumnType::kText || type == access::ColumnType::kMemo;
}

}  // namespace

Branch::Branch(BranchLocation location, std::unique_ptr<Connection> connection)
    : location_(std::move(location)), connection_(std::move(connection)) {}

std::shared_ptr<Branch> Branch::Open(const BranchLocation& location, const Waiting& waiting) {
  std::shared_ptr<Branch> branch(
      new Branch(location, Connection::Open(location.service, kTimeLimit, waiting)));
  const Query find{.sql = "select id from rental.branch where name = $1",
                   .parameters = {location.branch}};
  const ResultPtr found =
      std::move(RunInSchema(*branch->connection_, location.service, {&find, 1}).front());
  if (found->rows() == 0) {
    throw ServerError(server_error::kConnectionFailed, "The service '" + location.service +
                                                           "' has no branch '" + location.branch +
                                                           "' that this login may see");
  }
  branch->id_ = found->Integer(0, 0);
  branch->Refresh();
  return branch;
}

const BranchTable* Branch::FindTable(std::string_view name) const {
  const auto found = std::ranges::find_if(
      tables_, [&](const BranchTable& table) { return EqualsNoCase(table.name, name); });
  return found == tables_.end() ? nullptr : &*found;
}

bool Branch::Refresh() {
  const ResultPtr state = connection_->Run(StateQuery(id_));
  if (state->rows() == 0) {
    throw ServerError(server_error::kConnectionFailed,
                      "The branch '" + location_.branch +
                          "' has no data on the server yet: 'tenora server import' brings it");
  }
  if (state->Integer(0, kGeneration) == state_.generation) {
    outdated_ = false;
    return false;
  }
  LoadTables();
  return true;
}

void Branch::ThrowChanged() const {
  throw RuntimeError(access::engine_error::kChangedByAnother,
                     "The database engine stopped the process because newer data of branch '" +
                         location_.branch +
                         "' came to the server while it was read. Run the statement again.",
                     "DAO.Recordset");
}

std::vector<ResultPtr> Branch::RunInState(std::vector<Query> queries) {
  queries.insert(queries.begin(),
                 {{.sql = "begin isolation level repeatable read read only", .parameters = {}},
                  StateQuery(id_)});
  queries.push_back({.sql = "commit", .parameters = {}});
  std::vector<ResultPtr> results = connection_->RunTogether(queries);
  if (results[1]->rows() != 1 || results[1]->Integer(0, kGeneration) != state_.generation) {
    outdated_ = true;
    ThrowChanged();
  }
  results.erase(results.begin(), results.begin() + 2);
  results.pop_back();
  return results;
}

void Branch::LoadTables() {
  const std::string branch = std::to_string(id_);
  const Query queries[] = {
      {.sql = "begin isolation level repeatable read read only", .parameters = {}},
      StateQuery(id_),
      {.sql = "select t.stored, t.name, t.rows, k.key, k.also from rental.kept_table t join "
              "rental.table_kind k on k.stored = t.stored where t.branch = $1 order by t.name",
       .parameters = {branch}},
      {.sql = "select stored_table, name, type, length, precision, scale, sort_order, stored, "
              "has_column_privilege('rental.' || quote_ident(stored_table), "
              "coalesce(stored, 'extra'), 'select') from rental.kept_column where branch = $1 "
              "order by stored_table, position",
       .parameters = {branch}},
      {.sql = "commit", .parameters = {}}};
  const std::vector<ResultPtr> results = connection_->RunTogether(queries);
  const Result& state = *results[1];
  const Result& tables = *results[2];
  const Result& columns = *results[3];
  if (state.rows() != 1) return;

  std::vector<BranchTable> loaded;
  for (int row = 0; row < tables.rows(); ++row) {
    BranchTable table;
    table.stored = tables.Text(row, 0);
    table.name = tables.Text(row, 1);
    table.rows = tables.Integer(row, 2);
    const std::string_view found_by[] = {tables.Text(row, 3), tables.Text(row, 4)};
    for (int i = 0; i < columns.rows(); ++i) {
      if (columns.Text(i, 0) != table.stored) continue;
      access::Column column;
      column.name = columns.Text(i, 1);
      column.type = static_cast<access::ColumnType>(columns.Integer(i, 2));
      column.length = static_cast<std::uint16_t>(columns.Integer(i, 3));
      column.precision = static_cast<std::uint8_t>(columns.Integer(i, 4));
      column.scale = static_cast<std::uint8_t>(columns.Integer(i, 5));
      column.sort_order = static_cast<std::uint32_t>(columns.Integer(i, 6));
      const std::string stored(columns.Text(i, 7));
      const bool readable = columns.Boolean(i, 8);
      if (!readable) {
        table.withheld.push_back(std::move(column.name));
        continue;
      }
      if (!stored.empty() && std::ranges::count(found_by, stored) > 0) {
        table.found_by.push_back(table.columns.size());
      }
      table.expressions.push_back(SelectedExpression(stored, column));
      table.columns.push_back(std::move(column));
    }
    loaded.push_back(std::move(table));
  }
  tables_ = std::move(loaded);
  outdated_ = false;
  state_ = {.generation = state.Integer(0, kGeneration),
            .taken = std::chrono::sys_seconds(std::chrono::seconds(state.Integer(0, kTaken))),
            .file_name = std::string(state.Text(0, kFileName)),
            .rows = state.Integer(0, kRows),
            .findings = state.Integer(0, kFindings)};
  sort_order_ = static_cast<std::uint32_t>(state.Integer(0, kSortOrder));
}

namespace {

std::string SelectRows(const BranchTable& table) {
  std::string sql = "select _row";
  for (const std::string& expression : table.expressions) sql += ", " + expression;
  return sql + " from rental." + Name(table.stored) + " where branch = $1";
}

}  // namespace

Query Branch::RowQuery(const RowRequest& request) const {
  const BranchTable& table = *request.table;
  const access::Column& column = table.columns.at(request.column);
  std::string stored = table.expressions.at(request.column);
  std::vector<std::string> values = request.values;
  std::string type = "bigint";
  if (IsText(column.type)) {
    stored.insert(stored.size() - 1, "_k");  // within its quotation marks
    type = "bytea";
    const access::SortOrder& order = access::SortOrder::Closest(column.sort_order);
    for (std::string& value : values) {
      std::string key;
      order.AppendComparable(value, key);
      value = HexBytes(key);
    }
  }
  return {.sql = SelectRows(table) + " and " + stored + " = any($2::" + type + "[]) order by _row",
          .parameters = {std::to_string(id_), ArrayOf(values)}};
}

std::unique_ptr<access::RowCursor> Branch::Rows(const BranchTable& table) {
  const std::string sql =
      SelectRows(table) + " and _row > $2 order by _row limit " + std::to_string(kRowsAtOnce);
  return std::make_unique<ResultRows>(table.columns, [branch = shared_from_this(),
                                                      sql](std::int64_t last_row) {
    return std::move(
        branch
            ->RunInState({{.sql = sql,
                           .parameters = {std::to_string(branch->id_), std::to_string(last_row)}}})
            .front());
  });
}

std::vector<std::unique_ptr<access::RowCursor>> Branch::Find(std::span<const RowRequest> requests) {
  std::vector<Query> queries;
  for (const RowRequest& request : requests) queries.push_back(RowQuery(request));
  std::vector<ResultPtr> results = RunInState(std::move(queries));
  std::vector<std::unique_ptr<access::RowCursor>> found;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    found.push_back(std::make_unique<ResultRows>(
        requests[i].table->columns,
        // NOLINTNEXTLINE(performance-move-const-arg): a function must be copied
        [result = std::make_shared<ResultPtr>(std::move(results[i]))](std::int64_t) {
          return std::move(*result);
        }));
  }
  return found;
}

}  // namespace tenora::server
