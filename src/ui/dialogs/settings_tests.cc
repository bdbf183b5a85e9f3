#include "ui/dialogs/settings_tests.h"

#include <chrono>
#include <system_error>

#include "platform/access/engine_error.h"
#include "platform/query/engine.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/file_lookup.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kLongestWait{15};  // the user is waiting

std::int32_t Count(query::EngineDatabase& database, const std::string& clause) {
  const auto rows = database.OpenRecordset("select count(*) as result from tenancy" + clause,
                                           query::kForwardOnly, query::kReadOnly);
  return rows->EndOfFile() ? 0 : ToInt32(rows->Field("result"));
}

}  // namespace

TestResult TestDatabase(const fs::path& entered) {
  const fs::path path = FindIgnoringCase(entered);
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
    const std::int32_t all = Count(*database, ""),
                       closed = Count(*database, " where closed_yn <> 0");
    return {true, "The database opens. It holds " + std::to_string(all) +
                      (all == 1 ? " tenancy, " : " tenancies, ") + std::to_string(closed) +
                      " of them closed."};
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
