// What each character adds to a text's index key, in the two general sort orders. A row names its
// first character; a word for each character follows, the words divided by blanks:
//
//   4A      a weight, one or two bytes
//   4A.0F   with its accent
//   4A+51   two weights: the character sorts as two others do
//   '80     no weight; a mark of this code in the key's last section
//   -       nothing: the character is ignored
//
// A character in no row is one whose codes are not known.
#pragma once

#include <span>
#include <string_view>

namespace tenora::access {

struct SortCodeRow {
  char16_t first;
  std::string_view codes;
};

std::span<const SortCodeRow> GeneralLegacyCodes();  // Jet 4 and ACE 2007
std::span<const SortCodeRow> GeneralCodes();        // from ACE 2010 on

}  // namespace tenora::access
