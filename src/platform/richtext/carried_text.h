// The texts inside source that is carried through: in a header, a footnote, a text box, …
#pragma once

#include <string_view>
#include <vector>

namespace tenora::richtext {

// Both point into the source.
struct CarriedText {
  std::string_view word;     // that begins the text's group, as "footnote"
  std::string_view content;  // of the group, as RTF source
};

// The texts in the order of the source; one that is part of another is found in that one's content.
std::vector<CarriedText> CarriedTexts(std::string_view source);

}  // namespace tenora::richtext
