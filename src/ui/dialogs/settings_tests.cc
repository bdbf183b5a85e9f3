#include "ui/dialogs/settings_tests.h"

#include <chrono>
#include <system_error>

#include "platform/access/engine_error.h"
#include "platform/query/engine.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/file_lookup.h"
#include "platform/runtime/files.h"
#include "platform/runtime/format.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kLongestWait{15};  // the user is waiting

std::int32_t Count(query::EngineDatabase& database, const std::string& clause) {
  const auto rows = database.OpenRecordset("select count(*) as result from tenancy" + clause,
                                           query::kForwardOnly, query::kReadOnly);
  return rows->EndOfFile() ? 0 : ToInt32(rows->Field("result"));
}

// "120 tenancies, 4 of them closed"
std::string TenanciesOf(query::EngineDatabase& database) {
  const std::int32_t all = Count(database, ""), closed = Count(database, " where closed_yn <> 0");
  return std::to_string(all) + (all == 1 ? " tenancy, " : " tenancies, ") + std::to_string(closed) +
         " of them closed";
}

TestResult TestBranch(const std::string& location) {
  try {
    const auto workspace = query::Workspace::Create();
    const auto database = workspace->OpenDatabase(location);
    const query::BranchOrigin origin = database->Origin().value();
    return {true, "The server " + origin.server + " answers. The branch \"" + origin.branch +
                      "\" is as its file was on " +
                      FormatDate(LocalTime(origin.taken), "d mmmm yyyy at hh:nn") + ": " +
                      TenanciesOf(*database) + "."};
  } catch (...) {
    return {false, "The database cannot be used: " + ErrorText(CurrentError())};
  }
}

}  // namespace

TestResult TestDatabase(const std::string& location) {
  if (server::IsBranchLocation(location)) return TestBranch(location);
  const fs::path path = FindIgnoringCase(NativePath(location));
  std::error_code error;
  if (path.empty()) return {false, "Enter the full path of the database."};
  if (fs::is_directory(path, error)) {
    return {false, path.string() + " is a folder. Enter the path of the database file in it."};
  }
  if (!fs::exists(path, error)) {
    return {false, "There is no file " + path.string() +
                       ". Check the path, and that the server's folder is connected."};
  }
  try {
    const auto workspace = query::Workspace::Create();
    const auto database = workspace->OpenDatabase(path);
    return {true, "The database opens. It holds " + TenanciesOf(*database) + "."};
  } catch (...) {
    const RuntimeError problem = CurrentError();
    if (problem.number() == access::engine_error::kNoSuchTable) {
      return {false,
              "The file is a database, but not one of the rental package: it has no table "
              "of tenancies."};
    }
    return {false, "The database cannot be used: " + ErrorText(problem)};
  }
}

TestResult TestMailServer(mail::Server server) {
  if (server.host.empty()) return {false, "The package's options name no mail server."};
  server.waits = mail::Waits::AllOf(kLongestWait);
  try {
    mail::SmtpClient().Check(server);
    const bool logged_in = !server.user.empty() || !server.password.empty();
    return {true, logged_in ? "The server answers and takes the login."
                            : "The server answers. It is used without a login."};
  } catch (...) {
    return {false, ErrorText(CurrentError())};
  }
}

}  // namespace tenora
