// Finds what a misspelt name was meant to be.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tenora {

// How many bytes must be added, left out, exchanged or swapped with their neighbour to turn one
// text into the other.
std::size_t EditDistance(std::string_view left, std::string_view right);

// The name with the fewest letters added, left out, exchanged or swapped against `name`, letter
// case and blanks aside; the first of several. Empty when more than a third of the letters differ.
std::string NearestName(std::string_view name, const std::vector<std::string_view>& names);

}  // namespace tenora
