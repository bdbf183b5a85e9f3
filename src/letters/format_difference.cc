#include "letters/format_difference.h"

#include <utility>

namespace tenora {

std::vector<std::string_view> FormatDifference(const richtext::CharFormat& left,
                                               const richtext::CharFormat& right) {
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
  std::vector<std::string_view> words;
  for (const auto& [differs, word] : respects) {
    if (differs) words.push_back(word);
  }
  return words;
}

}  // namespace tenora
