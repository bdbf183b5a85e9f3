// Runs selects of the engine's dialect in an in-memory SQLite connection over tables of one state
// of a database.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/query/cache/table_source.h"
#include "platform/query/cache/virtual_table.h"
#include "platform/query/engine.h"
#include "platform/query/execute/plan_cache.h"
#include "platform/query/functions/functions.h"
#include "platform/query/translate/translator.h"

namespace tenora::query {

struct ConnectionSettings {
  std::function<Date()> now;
  std::function<std::string(Date)> short_date;
  std::chrono::milliseconds time_limit;  // for one step of a statement
};

class SqliteConnection : private Catalogue {
 public:
  // `collation` is that of the database's texts.
  SqliteConnection(std::shared_ptr<TableStore> tables, const Collation& collation,
                   const ConnectionSettings& settings);
  ~SqliteConnection() override;
  SqliteConnection(const SqliteConnection&) = delete;
  SqliteConnection& operator=(const SqliteConnection&) = delete;

  const Collation& collation() const { return functions_.collation; }

  // A statement ready for its first step, and the plan it is returned to.
  struct Ready {
    std::shared_ptr<CachedPlan> plan;
    StatementPtr statement;
  };
  // Raises the errors of EngineDatabase::OpenRecordset.
  Ready Prepare(std::string_view statement);
  // The same for a select that is parsed already, its literals among `tokens`. The plan is not
  // cached. `statement` is the text that the select comes from, for errors.
  Ready Prepare(const Select& select, std::string_view statement, const std::vector<Token>& tokens);
  // How a select would read its tables now, in the order of its loops: the columns table, access
  // ("index PrimaryKey", "range of index PrimaryKey", "memory", "whole table", "one pass"), the
  // names of the columns of a look-up, and the expected number of rows.
  std::unique_ptr<Recordset> Explain(std::string_view statement);
  // Moves to the next row; false past the last. `text` is the statement, for errors.
  bool Step(sqlite3_stmt* statement, std::string_view text);
  // Restarts a statement of a TopRows plan without the limit.
  void RestartUnlimited(const Ready& ready);
  void GiveBack(Ready ready);

 private:
  Entry FindTable(std::string_view name) override;

  // The plan with its literals bound.
  Ready Begin(std::shared_ptr<CachedPlan> plan, std::string_view statement,
              const std::vector<Token>& tokens);
  StatementPtr Compile(const Plan& plan, std::string_view statement);
  void Bind(sqlite3_stmt* prepared, const Plan& plan, const std::vector<Token>& tokens) const;
  // Raises the error of reading a table, if there is one.
  void ThrowReadError();
  [[noreturn]] void ThrowStepError(int status, std::string_view text);
  void Configure();
  static int Authorize(void* connection, int action, const char* first, const char* second,
                       const char* database, const char* trigger);
  static int CheckProgress(void* connection);

  std::shared_ptr<TableStore> tables_;
  FunctionContext functions_;
  std::chrono::milliseconds time_limit_;
  std::chrono::steady_clock::time_point deadline_;
  bool creating_table_ = false;
  sqlite3* connection_ = nullptr;
  VirtualTables virtual_tables_;
  std::unordered_map<std::string, std::size_t> numbers_;  // by table name in lower case
  PlanCache plans_;
};

}  // namespace tenora::query
