#include "platform/server/branch_list.h"

#include <chrono>

#include "platform/server/rental_schema.h"

namespace tenora::server {

std::vector<BranchSummary> ListBranches(Connection& connection, const std::string& service) {
  const Query query{
      .sql =
          "select b.name, b.counters_here, s.generation, extract(epoch from s.taken)::bigint, "
          "s.file_name, s.rows, s.findings from rental.branch b left join rental.sync s on "
          "s.branch = b.id order by b.name",
      .parameters = {}};
  const ResultPtr found = std::move(RunInSchema(connection, service, {&query, 1}).front());
  std::vector<BranchSummary> branches;
  for (int row = 0; row < found->rows(); ++row) {
    BranchSummary branch{.name = std::string(found->Text(row, 0)),
                         .state = std::nullopt,
                         .counters_here = found->Boolean(row, 1)};
    if (!found->IsNull(row, 2)) {
      branch.state = {
          .generation = found->Integer(row, 2),
          .taken = std::chrono::sys_seconds(std::chrono::seconds(found->Integer(row, 3))),
          .file_name = std::string(found->Text(row, 4)),
          .rows = found->Integer(row, 5),
          .findings = found->Integer(row, 6)};
    }
    branches.push_back(std::move(branch));
  }
  return branches;
}

std::optional<NamedFile> NamedFileOf(Connection& connection, const std::string& branch) {
  const ResultPtr found = connection.Run(
      {.sql = "select s.file_name, s.file_login, s.file_login = session_user or "
              "rental.administers(s.file_login) from rental.sync s join rental.branch b on b.id = "
              "s.branch where b.name = $1",
       .parameters = {branch}});
  if (found->rows() == 0) return std::nullopt;
  return NamedFile{.path = std::string(found->Text(0, 0)),
                   .login = std::string(found->Text(0, 1)),
                   .trusted = found->Boolean(0, 2)};
}

std::vector<ImportFinding> ReadFindings(Connection& connection, const std::string& branch) {
  const ResultPtr found = connection.Run(
      {.sql = "select coalesce(t.name, f.stored_table), f._row, f.what from rental.finding f join "
              "rental.branch b on b.id = f.branch left join rental.kept_table t on t.branch = "
              "f.branch and t.stored = f.stored_table where b.name = $1 "
              "order by f.stored_table, f._row, f.what",
       .parameters = {branch}});
  std::vector<ImportFinding> findings;
  for (int row = 0; row < found->rows(); ++row) {
    findings.push_back({std::string(found->Text(row, 0)), found->Integer(row, 1),
                        std::string(found->Text(row, 2))});
  }
  return findings;
}

}  // namespace tenora::server
