#include "platform/query/functions/like.h"

#include <unicode/uchar.h>

#include <cstddef>
#include <string>

#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

char32_t Folded(char32_t character) {
  if (character < 0x80) return static_cast<char32_t>(LowerAscii(static_cast<char>(character)));
  return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(character), U_FOLD_CASE_DEFAULT));
}

std::u32string Characters(std::string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  while (!text.empty()) characters.push_back(Folded(TakeCodePoint(text)));
  return characters;
}

int Compare(char32_t left, char32_t right, const Collation& collation) {
  std::string left_text, right_text;
  AppendUtf8(left_text, left);
  AppendUtf8(right_text, right);
  return collation.Compare(left_text, right_text);
}

// Both are folded.
bool Equal(char32_t left, char32_t right, const Collation& collation) {
  if (left == right) return true;
  return (left >= 0x80 || right >= 0x80) && Compare(left, right, collation) == 0;
}

// `at` is just past the opening bracket of a list: moves past the closing one and tells whether the
// list contains the character.
bool MatchesList(std::u32string_view pattern, std::size_t& at, char32_t character,
                 const Collation& collation) {
  const std::size_t end = pattern.find(U']', at);
  if (end == std::u32string_view::npos) {
    at = pattern.size();
    return false;
  }
  std::u32string_view list = pattern.substr(at, end - at);
  at = end + 1;
  const bool outside = list.size() > 1 && list.front() == U'!';
  if (outside) list.remove_prefix(1);
  bool found = false;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const bool range = i + 2 < list.size() && list[i + 1] == U'-';
    found = found || (range ? Compare(list[i], character, collation) <= 0 &&
                                  Compare(character, list[i + 2], collation) <= 0
                            : Equal(list[i], character, collation));
    if (range) i += 2;
  }
  return found != outside;
}

// Matches one pattern element other than * against one character; moves past the element.
bool MatchesOne(std::u32string_view pattern, std::size_t& at, char32_t character,
                const Collation& collation) {
  const char32_t element = pattern[at++];
  switch (element) {
    case U'?':
      return true;
    case U'#':
      return character >= U'0' && character <= U'9';
    case U'[':
      return MatchesList(pattern, at, character, collation);
    default:
      return Equal(element, character, collation);
  }
}

}  // namespace

bool MatchesLike(std::string_view text_utf8, std::string_view pattern_utf8,
                 const Collation& collation) {
  const std::u32string text = Characters(text_utf8), pattern = Characters(pattern_utf8);
  std::size_t t = 0, p = 0;
  // Where to backtrack to if what follows the last * does not match: one character further on.
  std::size_t star = std::u32string::npos, resume = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == U'*') {
      star = ++p;
      resume = t;
      continue;
    }
    std::size_t next = p;
    if (p < pattern.size() && MatchesOne(pattern, next, text[t], collation)) {
      p = next;
      ++t;
      continue;
    }
    if (star == std::u32string::npos) return false;
    p = star;
    t = ++resume;
  }
  while (p < pattern.size() && pattern[p] == U'*') ++p;
  return p == pattern.size();
}

}  // namespace tenora::query
