// Pieces of SQLite text with their types.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/query/translate/translator.h"
#include "platform/query/values/sqlite_value.h"

namespace tenora::query {

// Operator precedence, lowest first. Brackets are written only where needed: SQLite's parser has a
// shallow stack.
enum class Binding : std::uint8_t { kOr, kAnd, kNot, kCompare, kAdd, kMultiply, kUnary, kWhole };

struct Fragment {
  std::string sql = {};
  Type type = Type::kNull;
  Binding binding = Binding::kWhole;
  bool truth = false;   // 1 or 0, the result of a SQLite comparison, not yet -1 or 0
  bool column = false;  // a column, which carries its collation
  int parameter = 0;    // of a literal: its parameter number, else 0
};

// The text, in brackets if it binds less tightly than `least`.
std::string Bracketed(const Fragment& fragment, Binding least);

// "a <operation> b"; the right operand must bind more tightly than the operation.
Fragment Join(const Fragment& left, std::string_view operation, const Fragment& right,
              Binding binding, Type type);

// Converts a truth value to the engine's boolean; anything else is unchanged.
Fragment AsValue(Fragment fragment);

// The value converted to the type; null stays null. A literal is converted when it is bound.
Fragment Convert(Fragment fragment, Type type, std::vector<Parameter>& parameters);

// A call of one of our functions with arguments of the right types.
std::string CallText(std::string_view function, const std::vector<Fragment>& arguments);

// Adds the engine's collation to a text that is not a column.
std::string Collated(const Fragment& fragment);

// The type that can hold values of both types.
Type CommonType(Type left, Type right);

}  // namespace tenora::query
