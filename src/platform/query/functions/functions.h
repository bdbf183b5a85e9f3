// The functions of the engine's dialect.
#pragma once

#include <sqlite3.h>

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/query/values/collation.h"
#include "platform/query/values/sqlite_value.h"
#include "platform/runtime/date.h"
#include "platform/runtime/error.h"

namespace tenora::query {

struct FunctionContext {
  std::function<Date()> now;
  std::function<std::string(Date)> short_date;  // a day as the locale writes it
  const Collation& collation;                   // of the database
  // The error of a function that failed, kept until its statement reports it.
  std::optional<RuntimeError> error;
};

struct EngineFunction {
  std::string_view name;  // lower case
  // A letter for each argument: the type it is converted to (TypeLetter), '?' for any.
  std::string_view parameters;
  char result;              // a type letter, or '=' for the type of the first argument
  bool takes_null = false;  // otherwise null if any argument is null
  // The arguments, as many as parameters. May raise any RuntimeError.
  Value (*call)(const FunctionContext& context, std::span<const Value> arguments) = nullptr;
};

// The function of that name with that number of arguments, or null. `known` tells whether there is
// a function of that name at all.
const EngineFunction* FindFunction(std::string_view name, std::size_t arguments, bool& known);

// Its name in SQLite, where its first argument holds the type letters of the others.
std::string FunctionName(const EngineFunction& function);

// Registers functions and aggregates with SQLite. `context` outlives the connection.
void RegisterFunctions(sqlite3* connection, FunctionContext& context);

std::span<const EngineFunction> TextFunctions();
std::span<const EngineFunction> NumberFunctions();
std::span<const EngineFunction> DateFunctions();
std::span<const EngineFunction> DecimalFunctions();

// Registers the aggregates that SQLite lacks: e_first, e_last, e_avg_money (of ten-thousandths,
// rounded half to even), e_sum_decimal and e_avg_decimal (of decimals), and the deviations e_stdev,
// e_stdevp, e_var, e_varp.
void RegisterAggregates(sqlite3* connection);

}  // namespace tenora::query
