// What stands between "<<" and ">>" where a form begins, goes on or ends: "If Balance Owing > 0",
// "Else", "End Each".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tenora {

struct FormMarker {
  enum class Kind { kIf, kElseIf, kElse, kEndIf, kEach, kEndEach };
  Kind kind = Kind::kIf;
  std::string rest;  // behind the words: a condition, a collection

  bool Begins() const { return kind == Kind::kIf || kind == Kind::kEach; }
  bool Ends() const { return kind == Kind::kEndIf || kind == Kind::kEndEach; }
};

// Letter case and blanks aside; nothing for other codes.
std::optional<FormMarker> MarkerOf(std::string_view code);

// What <<Each …>> says.
struct EachWords {
  std::string collection;
  std::optional<std::string> since, until, where;
  bool newest_first = false;
  std::string behind_where;  // a word in `where` that could be a clause's; empty for none
};

inline constexpr std::string_view kEachExample =
    "for example <<Each Payment since 1 April where Payment Amount > 100 newest first>>";

// "since" and "until" come before "where", "newest first" at the end. Raises ConditionError for a
// clause that is there twice, in the wrong place or says nothing.
EachWords ReadEach(std::string_view rest);

}  // namespace tenora
