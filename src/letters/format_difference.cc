#include "letters/format_difference.h"

#include <string_view>
#include <utility>

namespace tenora {

std::string FormatDifference(const richtext::CharFormat& left, const richtext::CharFormat& right) {
  const std::pair<bool, std::string_view> respects[] = {
      {left.bold != right.bold, "bold"},
      {left.italic != right.italic, "italic"},
      {left.underline != right.underline, "underline"},
      {left.strike != right.strike, "strikethrough"},
      {left.font != right.font, "font"},
      {left.half_points != right.half_points, "size"},
      {left.colour != right.colour, "colour"},
      {left.highlight != right.highlight, "highlight"},
      {left.script != right.script || left.raise_half_points != right.raise_half_points,
       "raised or lowered text"},
      {left.all_caps != right.all_caps || left.small_caps != right.small_caps, "capitals"},
      {left.hidden != right.hidden, "hidden text"},
      {left.protect != right.protect, "protected text"},
  };
  std::string words;
  for (const auto& [differs, word] : respects) {
    if (!differs) continue;
    if (!words.empty()) words += ", ";
    words += word;
  }
  return words;
}

}  // namespace tenora
