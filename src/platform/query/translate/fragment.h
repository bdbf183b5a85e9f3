// Pieces of SQLite text that know their type.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/query/translate/translator.h"
#include "platform/query/values/sqlite_value.h"

namespace tenora::query {

// How tightly a piece holds together, so that brackets stand only where they must: SQLite's parser
// has a shallow stack.
enum class Binding : std::uint8_t { kOr, kAnd, kNot, kCompare, kAdd, kMultiply, kUnary, kWhole };

struct Fragment {
  std::string sql = {};
  Type type = Type::kNull;
  Binding binding = Binding::kWhole;
  bool truth = false;   // 1 or 0 as SQLite's comparisons give, not yet -1 or 0
  bool column = false;  // text that brings its collation along
  int parameter = 0;    // of a literal: the parameter it became, else 0
};

// The text, in brackets when it holds together less tightly than `least`.
std::string Bracketed(const Fragment& fragment, Binding least);

// "a <operation> b"; the right operand is held one step tighter than the whole.
Fragment Join(const Fragment& left, std::string_view operation, const Fragment& right,
              Binding binding, Type type);

// A truth value as the engine's boolean, anything else as it is.
Fragment AsValue(Fragment fragment);

// The value turned into the type, null staying null. A literal is turned when it is bound.
Fragment Convert(Fragment fragment, Type type, std::vector<Parameter>& parameters);

// A call of one of our functions with arguments that already have their types.
std::string CallText(std::string_view function, const std::vector<Fragment>& arguments);

// The text with the engine's collation, for texts that are no plain columns.
std::string Collated(const Fragment& fragment);

// What a select hands out for rows of the one and of the other type.
Type CommonType(Type left, Type right);

}  // namespace tenora::query
