// What each character of the basic plane adds to the key of a text in the two general sort orders:
// the tables, as short as they can be written.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace tenora::access {

struct SortCodes {
  enum Kind : std::uint8_t {
    kUnknown,
    kIgnored,
    kMark,       // no weight; a mark with the code `mark` in the last section of the key
    kCombining,  // no weight; an accent for the character before it
    kWeights,
  };
  // Kana have a section of their own in the key, between accents and marks.
  enum Kana : std::uint8_t { kNone, kFull, kSmall };

  std::string_view Weights() const { return {weights.data(), weight_size}; }
  std::string_view Accents() const { return {accents.data(), accent_count}; }

  Kind kind = kUnknown;
  Kana kana = kNone;
  std::uint8_t weight_size = 0;
  std::uint8_t accent_count = 0;  // 0 with weights: not accented
  std::array<char, 8> weights{};
  std::array<char, 3> accents{};
  char mark = 0;
};

// The codes of `first` and the characters after it, a word for each, separated by spaces:
//
//   4A        weights: one to eight bytes in hexadecimal
//   4A.0F     weights and an accent; .0F without weights: a combining character
//   7F0Ak     weights of a kana; s: of a small one
//   '80       a mark
//   -         the character is ignored
//   ?         its codes are not known
//   =  =.0F   the weights of the character before
//   +  +C.0F  the same, counted up by 1, or by the hexadecimal number after the sign. Bytes are 02
//             to FF
//   @3*20     the last three words, twenty times more
struct SortCodeRow {
  char16_t first;
  std::string_view words;
};

// Of version 0 (Jet 4, ACE of 2007) and 1 (ACE from 2010 on). In the order of their characters;
// those in no row are not known.
extern const std::span<const SortCodeRow> kLegacySortCodes;
extern const std::span<const SortCodeRow> kGeneralSortCodes;

// Puts the codes of a row's characters into `codes`, as many as it has room for.
void ReadSortCodes(const SortCodeRow& row, std::span<SortCodes> codes);

}  // namespace tenora::access
