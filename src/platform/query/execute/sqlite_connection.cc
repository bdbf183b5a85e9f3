#include "platform/query/execute/sqlite_connection.h"

#include <algorithm>
#include <array>

#include "platform/query/execute/row_list.h"
#include "platform/query/sql/lexer.h"
#include "platform/query/sql/parser.h"
#include "platform/query/sql/statement_error.h"
#include "platform/query/values/collation.h"
#include "platform/query/values/decimal.h"
#include "platform/query/values/sqlite_value.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr int kOperationsBetweenChecks = 10000;
constexpr sqlite3_int64 kMostMemory = sqlite3_int64{1} << 30;  // bytes, total of SQLite
constexpr int kLongestValue = 256 << 20;                       // bytes
constexpr std::size_t kMostIdle = 4;

// The built-in SQLite functions that translated statements call.
constexpr std::array<std::string_view, 8> kPlainFunctions = {
    "count", "sum", "avg", "min", "max", "coalesce", "rank", "row_number"};

Value Negated(const Value& literal) {
  if (const auto* whole = std::get_if<std::int64_t>(&literal)) return -*whole;
  return -ToDouble(literal);
}

// A number with all the digits that the statement has.
Decimal ExactValue(const Token& token) {
  const bool number = token.kind == TokenKind::kInteger || token.kind == TokenKind::kDecimal;
  return Decimal::Of(number ? Value(std::string(token.source)) : token.value);
}

int LimitParameter(const Plan& plan) { return static_cast<int>(plan.parameters.size()) + 1; }

}  // namespace

SqliteConnection::SqliteConnection(std::shared_ptr<TableStore> tables, const Collation& collation,
                                   const ConnectionSettings& settings)
    : tables_(std::move(tables)),
      functions_{.now = settings.now,
                 .short_date = settings.short_date,
                 .collation = collation,
                 .error = {}},
      time_limit_(settings.time_limit) {
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

SqliteConnection::~SqliteConnection() {
  plans_.Clear();
  sqlite3_close(connection_);
}

void SqliteConnection::Configure() {
  RequireDone(sqlite3_exec(connection_, "pragma temp_store=memory", nullptr, nullptr, nullptr));
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
  sqlite3_limit(connection_, SQLITE_LIMIT_LENGTH, kLongestValue);
  sqlite3_limit(connection_, SQLITE_LIMIT_ATTACHED, 0);
  RegisterCollation(connection_, functions_.collation);
  RegisterVirtualTables(connection_, virtual_tables_);
  RegisterFunctions(connection_, functions_);
  sqlite3_set_authorizer(connection_, Authorize, this);
  sqlite3_progress_handler(connection_, kOperationsBetweenChecks, CheckProgress, this);
}

// Translated statements only read. This enforces it even if the translation should be wrong.
int SqliteConnection::Authorize(void* connection, int action, const char*, const char* second,
                                const char*, const char*) {
  if (static_cast<SqliteConnection*>(connection)->creating_table_) return SQLITE_OK;
  if (action == SQLITE_SELECT || action == SQLITE_READ) return SQLITE_OK;
  if (action != SQLITE_FUNCTION || second == nullptr) return SQLITE_DENY;
  const std::string_view function = second;
  const bool known =
      function.starts_with("e_") ||
      std::find(kPlainFunctions.begin(), kPlainFunctions.end(), function) != kPlainFunctions.end();
  return known ? SQLITE_OK : SQLITE_DENY;
}

int SqliteConnection::CheckProgress(void* connection) {
  const bool late =
      std::chrono::steady_clock::now() > static_cast<SqliteConnection*>(connection)->deadline_;
  return late || sqlite3_memory_used() > kMostMemory ? 1 : 0;
}

Catalogue::Entry SqliteConnection::FindTable(std::string_view name) {
  const std::string key = ToLower(name);
  if (const auto known = numbers_.find(key); known != numbers_.end())
    return {.number = known->second, .table = virtual_tables_.sources[known->second].get()};
  std::shared_ptr<TableSource> table = tables_->Find(name);
  if (table == nullptr) return {.query = tables_->FindQuery(name)};
  const std::size_t number = virtual_tables_.sources.size();
  virtual_tables_.sources.push_back(std::move(table));
  const std::string digits = std::to_string(number);
  const std::string create = "create virtual table t" + digits + " using source(" + digits + ")";
  creating_table_ = true;
  const int status = sqlite3_exec(connection_, create.c_str(), nullptr, nullptr, nullptr);
  creating_table_ = false;
  if (status != SQLITE_OK) {
    virtual_tables_.sources.pop_back();
    throw RuntimeError(engine_error::kOutOfResources,
                       "Table '" + std::string(name) + "': " + sqlite3_errmsg(connection_),
                       "DAO.Database");
  }
  numbers_.emplace(key, number);
  return {.number = number, .table = virtual_tables_.sources[number].get()};
}

StatementPtr SqliteConnection::Compile(const Plan& plan, std::string_view statement) {
  sqlite3_stmt* prepared = nullptr;
  const int status =
      sqlite3_prepare_v3(connection_, plan.sql.c_str(), static_cast<int>(plan.sql.size()) + 1,
                         SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
  ThrowReadError();
  if (status != SQLITE_OK)
    throw StatementError(engine_error::kTooComplex,
                         std::string("Query is too complex (") + sqlite3_errmsg(connection_) + ").",
                         statement);
  return StatementPtr(prepared);
}

void SqliteConnection::Bind(sqlite3_stmt* prepared, const Plan& plan,
                            const std::vector<Token>& tokens) const {
  for (std::size_t i = 0; i < plan.parameters.size(); ++i) {
    const Parameter& parameter = plan.parameters[i];
    const Token& token =
        (parameter.query == nullptr ? tokens : parameter.query->tokens)[parameter.token];
    const auto number = static_cast<int>(i + 1);
    if (parameter.type == Type::kDecimal) {
      const Decimal decimal = ExactValue(token);
      BindDecimal(prepared, number, parameter.negated ? -decimal : decimal);
    } else {
      const Value value = parameter.negated ? Negated(token.value) : token.value;
      BindValue(prepared, number, ConvertTo(value, parameter.type));
    }
  }
  // One row more shows whether any ties with the last.
  if (plan.top) BindValue(prepared, LimitParameter(plan), plan.top->count + 1);
}

SqliteConnection::Ready SqliteConnection::Prepare(std::string_view statement) {
  const std::vector<Token> tokens = ReadTokens(statement);
  const auto translate = [&] {
    return Translate(*ParseSelect(statement, tokens), statement, *this);
  };
  return Begin(plans_.Get(tokens, translate), statement, tokens);
}

SqliteConnection::Ready SqliteConnection::Prepare(const Select& select, std::string_view statement,
                                                  const std::vector<Token>& tokens) {
  auto plan = std::make_shared<CachedPlan>();
  plan->plan = Translate(select, statement, *this);
  return Begin(std::move(plan), statement, tokens);
}

SqliteConnection::Ready SqliteConnection::Begin(std::shared_ptr<CachedPlan> plan,
                                                std::string_view statement,
                                                const std::vector<Token>& tokens) {
  Ready ready{.plan = std::move(plan), .statement = nullptr};
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

std::unique_ptr<Recordset> SqliteConnection::Explain(std::string_view statement) {
  const std::vector<Token> tokens = ReadTokens(statement);
  Plan plan = Translate(*ParseSelect(statement, tokens), statement, *this);
  plan.sql.insert(0, "explain query plan ");
  const StatementPtr prepared = Compile(plan, statement);
  std::vector<std::vector<Value>> rows;
  while (Step(prepared.get(), statement)) {
    constexpr int kDetail = 3;
    const auto* const detail =
        reinterpret_cast<const char*>(sqlite3_column_text(prepared.get(), kDetail));
    const std::optional<TablePlan> read = ReadTablePlan(detail == nullptr ? "" : detail);
    if (!read || read->number >= virtual_tables_.sources.size()) continue;
    TableSource& source = *virtual_tables_.sources[read->number];
    std::string columns;
    for (const std::size_t column : read->columns) {
      columns += (columns.empty() ? "" : ", ") + source.columns().at(column).name;
    }
    const access::IndexPath* path = nullptr;
    if (source.rows() == nullptr && !read->columns.empty())
      path = read->range ? source.FindRangeIndex(read->columns.front())
                         : source.FindIndex(read->columns);
    std::string access = source.Streams() ? "one pass" : "whole table";
    if (source.rows() != nullptr) access = "memory";
    if (path != nullptr) access = (read->range ? "range of index " : "index ") + path->name;
    const auto expected = path == nullptr || read->range
                              ? source.row_count()
                              : static_cast<std::int64_t>(path->rows_per_key);
    rows.push_back({source.name(), access, columns, expected});
  }
  return std::make_unique<RowList>(std::vector<std::string>{"table", "access", "columns", "rows"},
                                   std::move(rows));
}

bool SqliteConnection::Step(sqlite3_stmt* statement, std::string_view text) {
  deadline_ = std::chrono::steady_clock::now() + time_limit_;
  const int status = sqlite3_step(statement);
  tables_->EndStep();
  if (status == SQLITE_ROW) return true;
  if (status == SQLITE_DONE) return false;
  ThrowStepError(status, text);
}

void SqliteConnection::ThrowReadError() {
  if (!virtual_tables_.error) return;
  const RuntimeError error = *virtual_tables_.error;
  virtual_tables_.error.reset();
  throw error;
}

void SqliteConnection::ThrowStepError(int status, std::string_view text) {
  ThrowReadError();
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

void SqliteConnection::RestartUnlimited(const Ready& ready) {
  sqlite3_reset(ready.statement.get());  // returns the status of the last step
  BindValue(ready.statement.get(), LimitParameter(ready.plan->plan), std::int64_t{-1});
}

void SqliteConnection::GiveBack(Ready ready) {
  sqlite3_reset(ready.statement.get());
  sqlite3_clear_bindings(ready.statement.get());
  if (ready.plan->idle.size() < kMostIdle) ready.plan->idle.push_back(std::move(ready.statement));
}

}  // namespace tenora::query
