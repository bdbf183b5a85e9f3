// In which respects two character formats differ, in words.
#pragma once

#include <string_view>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora {

// "bold", "font": in a fixed order; empty for equal formats.
std::vector<std::string_view> FormatDifference(const richtext::CharFormat& left,
                                               const richtext::CharFormat& right);

}  // namespace tenora
