#include "platform/server/running_numbers.h"

#include "platform/access/sort_order.h"
#include "platform/server/rental_schema.h"

namespace tenora::server {
namespace {

constexpr std::string_view kNoPermission = "42501";

// One order for all branches, whatever that of their files is: a file that is made anew in another
// one must not begin its series again.
std::string KeyOf(std::string_view name) {
  constexpr std::uint32_t kGeneralOrder = 1033;
  std::string key;
  access::SortOrder::Closest(kGeneralOrder).AppendComparable(name, key);
  return HexBytes(key);
}

}  // namespace

RunningNumbers RunningNumbers::Of(Connection& connection, const std::string& service,
                                  const std::string& branch) {
  const Query find{.sql = "select id from rental.branch where name = $1", .parameters = {branch}};
  const ResultPtr found = std::move(RunInSchema(connection, service, {&find, 1}).front());
  if (found->rows() == 0) {
    throw ServerError(
        server_error::kConnectionFailed,
        "The service '" + service + "' has no branch '" + branch + "' that this login may see");
  }
  return {connection, found->Integer(0, 0)};
}

ResultPtr RunningNumbers::Ask(const std::string& sql, std::vector<Parameter> more) {
  more.insert(more.begin(), std::to_string(branch_));
  return connection_.Run(Query{.sql = sql, .parameters = std::move(more)});
}

bool RunningNumbers::IssuedHere() {
  const ResultPtr found = Ask("select counters_here from rental.branch where id = $1");
  return found->rows() == 1 && found->Boolean(0, 0);
}

bool RunningNumbers::MayTake() {
  return Ask("select has_function_privilege('rental.next_number(int,text,bytea)', 'execute') and "
             "(rental.administers(session_user) or exists (select from rental.may_see where "
             "login = session_user and branch = $1))")
      ->Boolean(0, 0);
}

std::optional<std::int64_t> RunningNumbers::Last(std::string_view name) {
  const ResultPtr found =
      Ask("select last from rental.counter where branch = $1 and building_k = $2", {KeyOf(name)});
  if (found->rows() == 0) return std::nullopt;
  return found->Integer(0, 0);
}

std::int64_t RunningNumbers::Issue(std::string_view name) {
  ResultPtr issued;
  try {
    issued = Ask("select rental.next_number($1, $2, $3)", {std::string(name), KeyOf(name)});
  } catch (const ServerError& error) {
    if (error.state() != kNoPermission) throw;
    throw StandardError(error_number::kPermissionDenied,
                        "this login takes no receipt numbers on the server; one with the role "
                        "worker does");
  }
  if (issued->IsNull(0, 0)) {
    throw StandardError(error_number::kPermissionDenied,
                        "the receipt numbers of this branch are issued by its file, not by the "
                        "server");
  }
  return issued->Integer(0, 0);
}

std::string RunningNumbers::Mark() {
  const ResultPtr found = Ask("select counters_mark from rental.branch where id = $1");
  return found->rows() == 0 ? "" : std::string(found->Text(0, 0));
}

std::optional<bool> RunningNumbers::HandedBack(const std::string& mark) {
  const ResultPtr found =
      Ask("select handed_back from rental.hand_over where branch = $1 and mark = $2", {mark});
  if (found->rows() == 0) return std::nullopt;
  return found->Boolean(0, 0);
}

void RunningNumbers::Keep(const std::string& mark, const std::vector<NumberSeries>& series) {
  const std::string branch = std::to_string(branch_);
  std::vector<Query> queries = {
      {.sql = "begin", .parameters = {}},
      {.sql = "update rental.branch set counters_mark = $2 where id = $1",
       .parameters = {branch, mark}},
      {.sql = "insert into rental.hand_over values ($1, $2)", .parameters = {branch, mark}}};
  for (const NumberSeries& one : series) {
    queries.push_back(
        {.sql = "insert into rental.counter as c values ($1, $2, $3, $4) on conflict (branch, "
                "building_k) do update set last = greatest(c.last, excluded.last)",
         .parameters = {branch, KeyOf(one.name), one.name, std::to_string(one.last)}});
  }
  queries.push_back({.sql = "commit", .parameters = {}});
  connection_.RunTogether(queries);
}

void RunningNumbers::BeginIssuing() {
  Ask("update rental.branch set counters_here = true where id = $1");
}

void RunningNumbers::EndIssuing() {
  Ask("update rental.branch set counters_here = false where id = $1");
}

void RunningNumbers::CloseHandOver() {
  Ask("update rental.hand_over set handed_back = true where branch = $1 and mark = (select "
      "counters_mark from rental.branch where id = $1)");
}

std::vector<NumberSeries> RunningNumbers::All() {
  const ResultPtr found =
      Ask("select building, last from rental.counter where branch = $1 order by building");
  std::vector<NumberSeries> series;
  for (int row = 0; row < found->rows(); ++row) {
    series.push_back({std::string(found->Text(row, 0)), found->Integer(row, 1)});
  }
  return series;
}

}  // namespace tenora::server
