#include "platform/query/mirror.h"

#include <algorithm>
#include <array>

#include "platform/access/database_writer.h"
#include "platform/query/errors.h"
#include "platform/query/lexer.h"
#include "platform/query/parser.h"
#include "platform/query/shape.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr int kOperationsBetweenChecks = 10000;
constexpr sqlite3_int64 kMostMemory = sqlite3_int64{1} << 30;  // bytes, all of SQLite's
constexpr int kLongestValue = 256 << 20;                       // bytes
constexpr std::size_t kMostPlans = 256;
constexpr std::size_t kMostIdle = 4;

// SQLite's own functions that translated statements call.
constexpr std::array<std::string_view, 8> kPlainFunctions = {
    "count", "sum", "avg", "min", "max", "coalesce", "rank", "row_number"};

int LimitParameter(const Plan& plan) { return static_cast<int>(plan.parameters.size()) + 1; }

}  // namespace

Mirror::Mirror(const std::filesystem::path& path, const access::FileState& state,
               const MirrorSettings& settings, LoadedTables loaded)
    : state_(state),
      take_read_lock_(settings.take_read_lock),
      path_(path),
      file_(access::DatabaseFile::Open(path)),
      functions_{.now = settings.now, .error = {}},
      time_limit_(settings.time_limit),
      loaded_(std::move(loaded)) {
  constexpr int kFlags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX;
  try {
    RequireDone(sqlite3_open_v2(":memory:", &connection_, kFlags, nullptr));
    Configure();
  } catch (...) {
    sqlite3_close(connection_);
    throw;
  }
}

Mirror::~Mirror() {
  plans_.clear();
  sqlite3_close(connection_);
}

void Mirror::Configure() {
  RequireDone(sqlite3_exec(connection_, "pragma temp_store=memory", nullptr, nullptr, nullptr));
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
  sqlite3_limit(connection_, SQLITE_LIMIT_LENGTH, kLongestValue);
  sqlite3_limit(connection_, SQLITE_LIMIT_ATTACHED, 0);
  RegisterMirrorModule(connection_, *this);
  RegisterFunctions(connection_, functions_);
  sqlite3_set_authorizer(connection_, Authorize, this);
  sqlite3_progress_handler(connection_, kOperationsBetweenChecks, CheckProgress, this);
}

// Translated statements only ever read. This holds even where the translation should fail to.
int Mirror::Authorize(void* mirror, int action, const char*, const char* second, const char*,
                      const char*) {
  if (static_cast<Mirror*>(mirror)->creating_table_) return SQLITE_OK;
  if (action == SQLITE_SELECT || action == SQLITE_READ) return SQLITE_OK;
  if (action != SQLITE_FUNCTION || second == nullptr) return SQLITE_DENY;
  const std::string_view function = second;
  const bool known =
      function.starts_with("e_") ||
      std::find(kPlainFunctions.begin(), kPlainFunctions.end(), function) != kPlainFunctions.end();
  return known ? SQLITE_OK : SQLITE_DENY;
}

int Mirror::CheckProgress(void* mirror) {
  const bool late = std::chrono::steady_clock::now() > static_cast<Mirror*>(mirror)->deadline_;
  return late || sqlite3_memory_used() > kMostMemory ? 1 : 0;
}

MirrorTable* Mirror::TableAt(std::size_t number) {
  return number < tables_.size() ? tables_[number].get() : nullptr;
}

namespace {

// Another program's change of one receipt number takes milliseconds.
constexpr std::chrono::milliseconds kWaitForWriters{10000};

// Null where the file system has no locks: reading goes on without.
std::unique_ptr<access::ReadLock> LockForReading(const std::filesystem::path& path) {
  try {
    return access::ReadLock::Take(path, kWaitForWriters);
  } catch (const RuntimeError& error) {
    if (error.number() == engine_error::kCannotLock) return nullptr;
    throw;
  }
}

}  // namespace

LoadedTables Mirror::LoadedExcept(const std::set<std::string>& names) const {
  LoadedTables kept = loaded_;
  std::erase_if(kept, [&](const auto& entry) { return names.contains(entry.second->name()); });
  return kept;
}

std::shared_ptr<MirrorTable> Mirror::Load(std::string_view name) {
  const std::string key = ToLower(name);
  if (const auto known = loaded_.find(key); known != loaded_.end()) return known->second;
  const std::unique_ptr<access::ReadLock> lock = take_read_lock_ ? LockForReading(path_) : nullptr;
  // Another program may have written since the file was opened: then this table is read as it is
  // now, and not with a map of the file as it was.
  const std::shared_ptr<access::DatabaseFile> file =
      access::ReadFileState(path_) == state_ ? file_ : access::DatabaseFile::Open(path_);
  const access::Table* const table = file->FindTable(name);
  if (table == nullptr) return nullptr;
  return loaded_.emplace(key, std::make_shared<MirrorTable>(*table)).first->second;
}

Catalogue::Entry Mirror::FindTable(std::string_view name) {
  const std::string key = ToLower(name);
  if (const auto known = numbers_.find(key); known != numbers_.end())
    return {.number = known->second, .table = tables_[known->second].get()};
  std::shared_ptr<MirrorTable> table = Load(name);
  if (table == nullptr) return {};
  const std::size_t number = tables_.size();
  tables_.push_back(std::move(table));
  const std::string digits = std::to_string(number);
  const std::string create = "create virtual table t" + digits + " using mirror(" + digits + ")";
  creating_table_ = true;
  const int status = sqlite3_exec(connection_, create.c_str(), nullptr, nullptr, nullptr);
  creating_table_ = false;
  if (status != SQLITE_OK) {
    tables_.pop_back();
    throw RuntimeError(engine_error::kOutOfResources,
                       "Table '" + std::string(name) + "': " + sqlite3_errmsg(connection_),
                       "DAO.Database");
  }
  numbers_.emplace(key, number);
  return {.number = number, .table = tables_[number].get()};
}

std::shared_ptr<CachedPlan> Mirror::FindPlan(std::string_view statement,
                                             const std::vector<Token>& tokens) {
  std::string shape = ShapeOf(tokens);
  if (const auto known = plans_.find(shape); known != plans_.end()) return known->second;
  auto plan = std::make_shared<CachedPlan>();
  plan->plan = Translate(*ParseStatement(statement, tokens), statement, *this);
  if (plans_.size() >= kMostPlans) plans_.clear();
  plans_.emplace(std::move(shape), plan);
  return plan;
}

StatementPtr Mirror::Compile(const Plan& plan, std::string_view statement) {
  sqlite3_stmt* prepared = nullptr;
  const int status =
      sqlite3_prepare_v3(connection_, plan.sql.c_str(), static_cast<int>(plan.sql.size()) + 1,
                         SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
  if (status != SQLITE_OK)
    throw StatementError(engine_error::kTooComplex,
                         std::string("Query is too complex (") + sqlite3_errmsg(connection_) + ").",
                         statement);
  return StatementPtr(prepared);
}

void Mirror::Bind(sqlite3_stmt* prepared, const Plan& plan,
                  const std::vector<Token>& tokens) const {
  for (std::size_t i = 0; i < plan.parameters.size(); ++i) {
    const Parameter& parameter = plan.parameters[i];
    BindValue(prepared, static_cast<int>(i + 1),
              ConvertTo(tokens[parameter.token].value, parameter.type));
  }
  // One row more tells whether any ties with the last.
  if (plan.top) BindValue(prepared, LimitParameter(plan), plan.top->count + 1);
}

Mirror::Ready Mirror::Prepare(std::string_view statement) {
  const std::vector<Token> tokens = ReadTokens(statement);
  Ready ready{.plan = FindPlan(statement, tokens), .statement = nullptr};
  if (ready.plan->idle.empty()) {
    ready.statement = Compile(ready.plan->plan, statement);
  } else {
    ready.statement = std::move(ready.plan->idle.back());
    ready.plan->idle.pop_back();
  }
  try {
    Bind(ready.statement.get(), ready.plan->plan, tokens);
  } catch (const RuntimeError& error) {
    throw StatementError(error.number(), error.description(), statement);
  }
  return ready;
}

bool Mirror::Step(sqlite3_stmt* statement, std::string_view text) {
  deadline_ = std::chrono::steady_clock::now() + time_limit_;
  const int status = sqlite3_step(statement);
  if (status == SQLITE_ROW) return true;
  if (status == SQLITE_DONE) return false;
  ThrowStepError(status, text);
}

void Mirror::ThrowStepError(int status, std::string_view text) {
  if (functions_.error) {
    const RuntimeError error = *functions_.error;
    functions_.error.reset();
    throw StatementError(error.number(), error.description(), text);
  }
  const std::string message = sqlite3_errmsg(connection_);
  if (message == "integer overflow")
    throw StatementError(error_number::kOverflow, "Overflow.", text);
  if (status == SQLITE_INTERRUPT && sqlite3_memory_used() <= kMostMemory)
    throw StatementError(engine_error::kTimedOut, "Operation canceled: the query took too long.",
                         text);
  throw StatementError(engine_error::kOutOfResources, "System resource exceeded (" + message + ").",
                       text);
}

void Mirror::RestartUnlimited(const Ready& ready) {
  sqlite3_reset(ready.statement.get());  // gives the last step's result once more
  BindValue(ready.statement.get(), LimitParameter(ready.plan->plan), std::int64_t{-1});
}

void Mirror::GiveBack(Ready ready) {
  sqlite3_reset(ready.statement.get());
  sqlite3_clear_bindings(ready.statement.get());
  if (ready.plan->idle.size() < kMostIdle) ready.plan->idle.push_back(std::move(ready.statement));
}

}  // namespace tenora::query
