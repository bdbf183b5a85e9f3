// The in-memory mirror of one state of a database file: its tables, as far as statements have named
// them, and the SQLite connection that runs statements over them.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/access/file_state.h"
#include "platform/query/functions.h"
#include "platform/query/mirror_module.h"
#include "platform/query/translator.h"

namespace tenora::query {

struct StatementDeleter {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementPtr = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

// A translated statement and its prepared forms that nobody uses just now.
struct CachedPlan {
  Plan plan;
  std::vector<StatementPtr> idle;
};

struct MirrorSettings {
  std::function<Date()> now;
  std::chrono::milliseconds time_limit;  // for one step of a statement
  // Keep other programs' transactions out while a table is read.
  bool take_read_lock = true;
};

// Tables as read, by name in lower case.
using LoadedTables = std::unordered_map<std::string, std::shared_ptr<MirrorTable>>;

class Mirror : private MirrorTables, private Catalogue {
 public:
  // `loaded` are tables that are in this state of the file as they were read from an earlier one.
  // Raises the errors of access::DatabaseFile::Open.
  Mirror(const std::filesystem::path& path, const access::FileState& state,
         const MirrorSettings& settings, LoadedTables loaded = {});
  ~Mirror() override;
  Mirror(const Mirror&) = delete;
  Mirror& operator=(const Mirror&) = delete;

  const access::DatabaseFile& file() const { return *file_; }
  // The tables read so far, but for those named (as the file spells them).
  LoadedTables LoadedExcept(const std::set<std::string>& names) const;

  // A statement ready for its first step, and the plan it goes back to.
  struct Ready {
    std::shared_ptr<CachedPlan> plan;
    StatementPtr statement;
  };
  // Raises the errors of Database::OpenRecordset.
  Ready Prepare(std::string_view statement);
  // Moves to the next row, false behind the last. `text` is the statement, for errors.
  bool Step(sqlite3_stmt* statement, std::string_view text);
  // Begins a statement of a TopRows plan again, now without a limit to its rows.
  void RestartUnlimited(const Ready& ready);
  void GiveBack(Ready ready);

 private:
  MirrorTable* TableAt(std::size_t number) override;
  Entry FindTable(std::string_view name) override;
  std::shared_ptr<MirrorTable> Load(std::string_view name);

  std::shared_ptr<CachedPlan> FindPlan(std::string_view statement,
                                       const std::vector<Token>& tokens);
  StatementPtr Compile(const Plan& plan, std::string_view statement);
  void Bind(sqlite3_stmt* prepared, const Plan& plan, const std::vector<Token>& tokens) const;
  [[noreturn]] void ThrowStepError(int status, std::string_view text);
  void Configure();
  static int Authorize(void* mirror, int action, const char* first, const char* second,
                       const char* database, const char* trigger);
  static int CheckProgress(void* mirror);

  access::FileState state_;
  bool take_read_lock_;
  std::filesystem::path path_;
  std::shared_ptr<access::DatabaseFile> file_;
  FunctionContext functions_;
  std::chrono::milliseconds time_limit_;
  std::chrono::steady_clock::time_point deadline_;
  bool creating_table_ = false;
  sqlite3* connection_ = nullptr;
  LoadedTables loaded_;
  std::vector<std::shared_ptr<MirrorTable>> tables_;
  std::unordered_map<std::string, std::size_t> numbers_;                // by name in lower case
  std::unordered_map<std::string, std::shared_ptr<CachedPlan>> plans_;  // by shape
};

}  // namespace tenora::query
