// Finding text by positions.
#pragma once

#include <string>
#include <string_view>

namespace tenora::richtext {

struct SearchOptions {
  bool whole_word = false;
  bool match_case = false;
};

// Position of the first occurrence between start and end, or -1. Without match_case,
// letters are compared by Unicode's simple case folding.
int FindText(std::u16string_view text, std::u16string_view part, int start, int end,
             SearchOptions options);

}  // namespace tenora::richtext
