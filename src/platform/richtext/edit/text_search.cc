#include "platform/richtext/edit/text_search.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>

namespace tenora::richtext {
namespace {

// Folding changes no length: characters whose folded form needs more or fewer units stay.
std::u16string Fold(std::u16string_view text) {
  std::u16string folded(text);
  const auto size = static_cast<std::int32_t>(folded.size());
  for (std::int32_t at = 0; at < size;) {
    const std::int32_t start = at;
    UChar32 character = 0;
    U16_NEXT(folded.data(), at, size, character);
    const UChar32 lower = u_foldCase(character, U_FOLD_CASE_DEFAULT);
    if (lower == character || U16_LENGTH(lower) != at - start) continue;
    std::int32_t out = start;
    U16_APPEND_UNSAFE(folded.data(), out, lower);
  }
  return folded;
}

bool IsWordUnit(std::u16string_view text, std::size_t at) {
  return at < text.size() && (u_isalnum(text[at]) || text[at] == '_');
}

}  // namespace

int FindText(std::u16string_view text, std::u16string_view part, int start, int end,
             SearchOptions options) {
  const auto last = end < 0 ? text.size() : std::min<std::size_t>(text.size(), end);
  if (part.empty() || start < 0 || static_cast<std::size_t>(start) > last) return -1;
  std::u16string folded_text, folded_part;
  if (!options.match_case) {
    folded_text = Fold(text.substr(0, last));
    folded_part = Fold(part);
    part = folded_part;
  } else {
    folded_text = text.substr(0, last);
  }
  const std::u16string_view searched = folded_text;
  for (std::size_t at = searched.find(part, static_cast<std::size_t>(start));
       at != std::u16string_view::npos; at = searched.find(part, at + 1)) {
    const bool whole = !(at > 0 && IsWordUnit(text, at - 1)) && !IsWordUnit(text, at + part.size());
    if (!options.whole_word || whole) return static_cast<int>(at);
  }
  return -1;
}

}  // namespace tenora::richtext
