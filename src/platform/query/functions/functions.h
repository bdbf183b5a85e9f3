// The functions of the engine's dialect.
#pragma once

#include <sqlite3.h>

#include <functional>
#include <optional>
#include <span>
#include <string_view>

#include "platform/query/values/sqlite_value.h"
#include "platform/runtime/date.h"
#include "platform/runtime/error.h"

namespace tenora::query {

struct FunctionContext {
  std::function<Date()> now;
  // The error that made a function fail, kept until the statement that called it reports it.
  std::optional<RuntimeError> error;
};

struct EngineFunction {
  std::string_view name;  // lower case
  // A letter for each argument: the type it is converted to (TypeLetter), '?' for any.
  std::string_view parameters;
  char result;              // a type's letter, '=' for that of the first argument
  bool takes_null = false;  // others give null when any argument is null
  // The arguments, as many as parameters. May raise any RuntimeError.
  Value (*call)(const FunctionContext& context, std::span<const Value> arguments) = nullptr;
};

// The function of that name with so many arguments; null when there is none. `known` tells whether
// the name is a function at all.
const EngineFunction* FindFunction(std::string_view name, std::size_t arguments, bool& known);

// The name under which SQLite knows it. Its first argument there is the letters of the types of the
// others.
std::string FunctionName(const EngineFunction& function);

// Makes functions and aggregates known to SQLite. `context` outlives the connection.
void RegisterFunctions(sqlite3* connection, FunctionContext& context);

std::span<const EngineFunction> TextFunctions();
std::span<const EngineFunction> NumberFunctions();
std::span<const EngineFunction> DateFunctions();

// Registers the aggregates that SQLite lacks: e_first, e_last, e_avg_money (of ten-thousandths,
// rounded half to even), and the deviations e_stdev, e_stdevp, e_var, e_varp.
void RegisterAggregates(sqlite3* connection);

}  // namespace tenora::query
