#include "platform/query/execute/server_database.h"

#include "platform/access/engine_error.h"
#include "platform/query/execute/statement_recordset.h"
#include "platform/runtime/text.h"

namespace tenora::query {

std::unique_ptr<Recordset> ServerDatabase::OpenRecordset(std::string_view sql, int, int) {
  constexpr std::string_view kExplain = "explain ";
  if (StartsWithNoCase(sql, kExplain)) {
    return open_.connection->Explain(sql.substr(kExplain.size()));
  }
  return std::make_unique<StatementRecordset>(open_.connection, sql);
}

std::optional<BranchOrigin> ServerDatabase::Origin() const {
  return BranchOrigin{.server = open_.branch->connection().Address(),
                      .branch = location_.branch,
                      .taken = open_.branch->state().taken,
                      .round_trips = open_.branch->connection().round_trips()};
}

std::vector<TableSummary> ServerDatabase::Tables() const {
  std::vector<TableSummary> summaries;
  for (const server::BranchTable& table : open_.branch->tables()) {
    summaries.push_back({.name = table.name, .rows = table.rows});
  }
  return summaries;
}

void ServerDatabase::ThrowReadOnly() const {
  throw RuntimeError(access::engine_error::kReadOnly,
                     "Cannot update. Database or object is read-only: the branch '" +
                         location_.branch + "' is changed in its own file.",
                     "DAO.Database");
}

std::int64_t ServerDatabase::Execute(std::string_view) { ThrowReadOnly(); }
void ServerDatabase::BeginTrans() { ThrowReadOnly(); }
void ServerDatabase::CommitTrans() { ThrowReadOnly(); }
void ServerDatabase::Rollback() { ThrowReadOnly(); }

}  // namespace tenora::query
