// The name that a misspelt one was meant to be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tenora {

// The name with the fewest letters added, left out, exchanged or swapped against `name`, letter
// case and blanks aside; the first of several. Empty when more than a third of the letters differ.
std::string NearestName(std::string_view name, const std::vector<std::string_view>& names);

}  // namespace tenora
