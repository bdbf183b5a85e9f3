// Text compared as people search for it: letter case and accents do not count.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tenora {

// Equal for texts that differ only in letter case, accents, the shape of an apostrophe, or letters
// with a stroke or ligature ("ø", "ł", "æ"). A text that is no UTF-8 is only put into lower case,
// as far as it is ASCII.
std::string FoldedForSearch(std::string_view text);

// The words that a search asks for, folded; none for blanks.
std::vector<std::string> SearchWords(std::string_view search);

// Whether a folded text holds every word, in any order. Its apostrophes may be missing in the
// words: "obrien" is in "o'brien".
bool HoldsWords(std::string_view folded, const std::vector<std::string>& words);

}  // namespace tenora
