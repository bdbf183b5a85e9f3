#include "platform/query/functions/functions.h"

#include <array>
#include <string>
#include <vector>

#include "platform/query/sql/statement_error.h"

namespace tenora::query {
namespace {

std::array<std::span<const EngineFunction>, 4> AllFunctions() {
  return {TextFunctions(), NumberFunctions(), DateFunctions(), DecimalFunctions()};
}

struct Registration {
  const EngineFunction* function;
  FunctionContext* context;
};

void Run(const Registration& registration, sqlite3_context* context, int count,
         sqlite3_value** values) {
  const std::string_view types(reinterpret_cast<const char*>(sqlite3_value_text(values[0])));
  std::vector<Value> arguments;
  arguments.reserve(static_cast<std::size_t>(count - 1));
  for (int i = 1; i < count; ++i) {
    arguments.push_back(ReadValue(values[i], TypeOfLetter(types[static_cast<std::size_t>(i - 1)])));
    if (IsNull(arguments.back()) && !registration.function->takes_null)
      return sqlite3_result_null(context);
  }
  const char letter =
      registration.function->result == '=' ? types.front() : registration.function->result;
  SetResult(context, registration.function->call(*registration.context, arguments),
            TypeOfLetter(letter));
}

void Call(sqlite3_context* context, int count, sqlite3_value** values) {
  const auto& registration = *static_cast<const Registration*>(sqlite3_user_data(context));
  try {
    Run(registration, context, count, values);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  } catch (...) {
    registration.context->error = CurrentError();
    sqlite3_result_error(context, registration.context->error->what(), -1);
  }
}

}  // namespace

const EngineFunction* FindFunction(std::string_view name, std::size_t arguments, bool& known) {
  known = false;
  for (const std::span<const EngineFunction> functions : AllFunctions()) {
    for (const EngineFunction& function : functions) {
      if (function.name != name) continue;
      known = true;
      if (function.parameters.size() == arguments) return &function;
    }
  }
  return nullptr;
}

std::string FunctionName(const EngineFunction& function) {
  return "e_" + std::string(function.name);
}

void RegisterFunctions(sqlite3* connection, FunctionContext& context) {
  for (const std::span<const EngineFunction> functions : AllFunctions()) {
    for (const EngineFunction& function : functions) {
      RequireDone(sqlite3_create_function_v2(
          connection, FunctionName(function).c_str(),
          static_cast<int>(function.parameters.size()) + 1, SQLITE_UTF8,
          new Registration{&function, &context}, Call, nullptr, nullptr,
          [](void* registration) { delete static_cast<Registration*>(registration); }));
    }
  }
  RegisterAggregates(connection);
}

}  // namespace tenora::query
