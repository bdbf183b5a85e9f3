// The engine's like patterns.
#pragma once

#include <string_view>

#include "platform/query/values/collation.h"

namespace tenora::query {

// In a pattern * stands for any text, ? for one character, # for one digit, [a-z] for one of a list
// or range and [!a-z] for one outside it; [*] matches a literal *. Characters are equal, and in a
// range, as the collation compares them, so é is in [a-f]. An unclosed list matches nothing. Takes
// time in proportion to the product of the lengths at most.
bool MatchesLike(std::string_view text, std::string_view pattern, const Collation& collation);

}  // namespace tenora::query
