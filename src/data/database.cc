#include "data/database.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "data/error_log.h"
#include "data/sql_text.h"
#include "platform/access/engine_error.h"
#include "platform/dialogs/dialogs.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/file_lookup.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

constexpr std::string_view kExecuteLabel = "Execute SQL";

namespace fs = std::filesystem;

constexpr const char* kSection = "Settings";
constexpr const char* kDatabaseName = "property.mdb";
constexpr const char* kWhereToPutIt =
    "  Put the rental package's property.mdb there, or start Tenora with TENORA_HOME set to the "
    "folder that holds it.";
constexpr const char* kBrowse = "&Browse…";
constexpr const char* kLineBreak = "\r\n";
// Errors of this source are deliberately not described: the engine has shown them itself.
constexpr std::string_view kSilentSource = "Microsoft JET Database Engine";

bool IsFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

// Whether a location can be opened for all that is known without asking a database server.
bool IsThere(const fs::path& location) {
  return server::IsBranchLocation(location.string()) || IsFile(location);
}

// Tries it with a file of our own, "test.txt" unless that name is taken: a file of the user's is
// neither changed nor deleted.
bool CanWriteIn(const fs::path& folder) {
  std::string name = (folder / "test.txt").string();
  int fd = ::open(name.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0 && errno == EEXIST) {
    name = (folder / "test-XXXXXX").string();
    fd = ::mkostemp(name.data(), O_APPEND | O_CLOEXEC);
  }
  if (fd < 0) return false;
  ::close(fd);
  return ::unlink(name.c_str()) == 0;
}

// The data folder of a stored database path. Of "/property.mdb" every occurrence is deliberately
// taken out, so that letters stay where installations have them; what is then empty is the root. A
// file of another name has the folder it is in.
fs::path FolderOf(const fs::path& database) {
  if (!EqualsNoCase(database.filename().string(), kDatabaseName)) return database.parent_path();
  const std::string folder =
      ReplaceAllNoCase(database.string(), std::string("/").append(kDatabaseName), "");
  return folder.empty() ? fs::path("/") : fs::path(folder);
}

}  // namespace

void Database::OpenDatabase() {
  for (;;) {
    try {
      const fs::path file = LocateDatabase();
      open_ = platform_.workspace.OpenDatabase(file);
      last_opened_ = file;
      return;
    } catch (...) {
      const RuntimeError error = CurrentError();
      const bool missing = error.number() == access::engine_error::kFileNotFound;
      if (!missing) return DataErrorReport("Start ADO", error);
      const RuntimeError told(error.number(), std::string(error.description()) + kWhereToPutIt,
                              error.source());
      if (!Report(told, browse_ ? kBrowse : "") || !browse_()) return;
    }
  }
}

bool Database::CanBeRead() {
  const fs::path file = Location();
  try {
    return platform_.workspace.OpenDatabase(file) != nullptr;
  } catch (const RuntimeError&) {
    return false;
  }
}

void Database::CloseDatabase() { open_.reset(); }

fs::path Database::OwnDatabase() const {
  return FindIgnoringCase(platform_.program_folder / kDatabaseName);
}

fs::path Database::StoredLocation() {
  const std::string stored =
      settings_.GetSettingText(kSection, "DatabaseLocation", OwnDatabase().string());
  if (server::IsBranchLocation(stored)) return std::string(TrimBlanks(stored));
  return FindIgnoringCase(NativePath(stored));
}

bool Database::IsNetworked() {
  return settings_.GetSettingAs(ToInt32, kSection, "Networkable", "0") != 0;
}

fs::path Database::Location() {
  if (branch_) return *branch_;
  if (!IsNetworked()) return OwnDatabase();
  const fs::path stored = StoredLocation();
  return IsThere(stored) ? stored : OwnDatabase();
}

void Database::TakeBranch(const fs::path& location, const fs::path& folder) {
  template_folder_ = DataFolder();
  data_folder_ = folder;
  branch_ = location;
}

void Database::Expect(std::vector<std::string> codes) {
  try {
    platform_.workspace.Expect(last_opened_, std::move(codes));
  } catch (const RuntimeError&) {
    // Deliberate: the statement that needs the rows meets it again.
  }
}

std::optional<fs::path> Database::ServerAway() {
  if (branch_ || !IsNetworked()) return std::nullopt;
  fs::path stored = StoredLocation();
  if (IsThere(stored)) return std::nullopt;
  return stored;
}

fs::path Database::LocateDatabase() {
  if (only_file_) {
    if (IsThere(*only_file_)) return *only_file_;
    throw StandardError(error_number::kPathNotFound,
                        only_file_->string() +
                            " cannot be reached, and letters that were begun with this database "
                            "are not made from another");
  }
  if (branch_) return *branch_;
  if (!IsNetworked()) return OwnDatabase();
  fs::path stored = StoredLocation();
  if (IsThere(stored)) {
    unreachable_told_.reset();
    return stored;
  }
  unreachable_server_ = stored;
  // Once, until it is reached again: every letter reopens the database.
  if (std::exchange(unreachable_told_, stored) == stored) return OwnDatabase();
  platform_.dialogs.Say(std::string("Unable to access ")
                            .append(kLineBreak)
                            .append(stored.string())
                            .append(kLineBreak)
                            .append("Reverting back to ")
                            .append(kLineBreak)
                            .append(OwnDatabase().string()));
  return OwnDatabase();
}

fs::path Database::DataFolder() {
  if (data_folder_.empty()) data_folder_ = DecideDataFolder();
  return data_folder_;
}

fs::path Database::TemplateFolder() {
  return template_folder_.empty() ? DataFolder() : template_folder_;
}

// Any failure decides for the program folder, as a branch does, which has no folder.
fs::path Database::DecideDataFolder() {
  try {
    if (settings_.GetSettingAs(ToDouble, kSection, "Networkable", "0") == 0) {
      return platform_.program_folder;
    }
    const fs::path stored = StoredLocation();
    if (!IsFile(stored)) return platform_.program_folder;
    fs::path candidate = FolderOf(stored);
    if (CanWriteIn(candidate)) return candidate;
    if (!command_mode_) {
      platform_.dialogs.Say(
          "We are unable to save files onto the server computer.  Files will be saved locally.");
    }
  } catch (const RuntimeError&) {
    // A setting that cannot be read was shown when the database was opened; once is enough.
  }
  return platform_.program_folder;
}

query::EngineDatabase& Database::ToChange() {
  if (!open_) throw StandardError(error_number::kObjectNotSet);
  if (OnlyLooks()) {
    throw StandardError(error_number::kPermissionDenied, "the database is only looked at");
  }
  return *open_;
}

void Database::ExecuteSQL(std::string_view statement) {
  Reported(kExecuteLabel, [&] { ToChange().Execute(FixSQL(statement)); });
}

Database::Transaction::Transaction(Database& database)
    : database_(database), errors_before_(database.ErrorsReported()) {
  database_.Reported(kExecuteLabel, [&] {
    database_.ToChange().BeginTrans();
    open_ = true;
  });
}

Database::Transaction::~Transaction() {
  if (open_) database_.Reported(kExecuteLabel, [&] { database_.open_->Rollback(); });
}

bool Database::Transaction::Commit() {
  if (!open_ || database_.ErrorsReported() != errors_before_) return false;
  open_ = false;
  bool kept = false;
  database_.Reported(kExecuteLabel, [&] {
    database_.open_->CommitTrans();
    kept = true;
  });
  return kept;
}

void Database::CreateSet(RecordsetPtr& set, std::string_view sql, int type, int options) {
  Reported("Data Create Set", [&] {
    if (!open_) throw StandardError(error_number::kObjectNotSet);
    set = open_->OpenRecordset(FixSQL(sql), type, options);
    if (stuck_ == set.get()) stuck_ = nullptr;
  });
}

// A set that cannot tell counts as ended too.
bool Database::DataEOF(const RecordsetPtr& set) {
  bool ended = true;
  if (set && set.get() != stuck_) Reported("Data EOF", [&] { ended = set->EndOfFile(); });
  return ended;
}

bool Database::DataIsEmpty(const RecordsetPtr& set) {
  bool empty = true;
  if (set) Reported("Data Is Empty", [&] { empty = set->EndOfFile() && set->BeginningOfFile(); });
  return empty;
}

void Database::MoveNext(const RecordsetPtr& set) {
  if (!set) return;
  stuck_ = set.get();
  Reported("Move Next", [&] {
    set->MoveNext();
    stuck_ = nullptr;
  });
}

void Database::DataClose(RecordsetPtr& set) {
  if (set) Reported("Data Close", [&] { set->Close(); });
  set.reset();
}

Value Database::Lookup(std::string_view field, std::string_view table, std::string_view clause) {
  std::string sql("select ");
  sql.append(field).append(" as result from ").append(table).append(" ").append(clause);
  RecordsetPtr set;
  CreateSet(set, sql, query::kForwardOnly, query::kReadOnly);
  if (DataIsEmpty(set)) return Null{};
  return set->Field("result");
}

std::string Database::LookupText(std::string_view field, std::string_view table,
                                 std::string_view clause, std::string_view default_text) {
  return ToText(NullTo(Lookup(field, table, clause), std::string(default_text)));
}

Date Database::LookupDate(std::string_view field, std::string_view table, std::string_view clause,
                          Date default_date) {
  return ToDate(NullTo(Lookup(field, table, clause), default_date));
}

void Database::DataErrorReport(std::string_view /*label*/, const RuntimeError& error) {
  Report(error, {});
}

bool Database::Report(const RuntimeError& error, const std::string& other_button) {
  ++errors_reported_;
  std::string message;
  if (error.number() != 0 && error.source() != kSilentSource) {
    const std::string gap = std::string(kLineBreak).append(kLineBreak);
    message = open_ ? open_->Name() : std::string();
    message.append(gap).append("General Errors...").append(gap);
    message.append(ErrorText(error)).append(gap);
  }
  const Answer answer = platform_.dialogs.Show({.text = message, .other_button = other_button});
  if (!OnlyLooks()) AppendToErrorLog(platform_.program_folder, platform_.clock.Now(), message);
  return answer == Answer::kOther;
}

}  // namespace tenora
