// In which respects two character formats differ, in words.
#pragma once

#include <string>

#include "platform/richtext/document.h"

namespace tenora {

// "bold, font": the differing respects in a fixed order; empty for equal formats.
std::string FormatDifference(const richtext::CharFormat& left, const richtext::CharFormat& right);

}  // namespace tenora
