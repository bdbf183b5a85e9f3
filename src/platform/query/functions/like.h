// The engine's patterns.
#pragma once

#include <string_view>

namespace tenora::query {

// Letter case is ignored. In a pattern * stands for any text, ? for one character, # for one digit,
// [a-z] for one of a list or range and [!a-z] for one outside it; [*] takes the sign as it is. A
// list left open matches nothing. Takes time in proportion to the product of the lengths at most.
bool MatchesLike(std::string_view text, std::string_view pattern);

}  // namespace tenora::query
