// A sort order encodes a text as the bytes of an index key. Two texts are equal to the engine
// exactly when these bytes are, and sort as they do:
//
//   weights       one or two bytes for each character, the same for upper and lower case
//   01
//   accents       a byte for each weight up to the last accented one; 02 for no accent
//   [01 01 01     then for each mark (hyphens, the apostrophe), which has no weight:
//    position     80 00 + 7 + 4 for each weight before it (2 bytes, high byte first)
//    06, code]
//   00
//
// Trailing spaces are ignored. Some characters sort as two, or have two-byte weights where others
// have one; how many weights they count for is not known, so a text with an accent or a mark after
// such a character is refused.
#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tenora::access {

// A key cannot be encoded because part of its format is not known. It must not be guessed: a wrong
// key would corrupt the index.
class NotEncodable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class SortOrder {
 public:
  // The sort order with a column's number: language in the low 16 bits, version in the top 8. Null
  // for an unknown one: only the general orders (1033) of versions 0 and 1 are known.
  static const SortOrder* Find(std::uint32_t number);

  // Appends the encoding of UTF-8 `text` to `key`. Raises NotEncodable for a character whose codes
  // are not known, and for more than 255 characters.
  void AppendText(std::string_view text, std::string& key) const;

 private:
  struct Codes {
    enum Kind : std::uint8_t { kUnknown, kIgnored, kMark, kWeights };
    struct Weight {
      std::array<char, 2> bytes{};
      std::uint8_t size = 0;
      char accent = 0;
    };
    Kind kind = kUnknown;
    bool accented = false;
    bool unclear_count = false;
    std::uint8_t weight_count = 0;
    char mark = 0;
    std::array<Weight, 2> weights;
  };

  explicit SortOrder(bool legacy);
  static Codes Parse(std::string_view word, bool legacy);
  static std::size_t PlaceOf(char32_t character);

  // The codes are stored for Latin letters and the signs among them, then general punctuation, then
  // the euro sign.
  static constexpr char32_t kLatinEnd = 0x250, kSignsStart = 0x2010, kSignsEnd = 0x2040,
                            kEuro = 0x20AC;
  static constexpr std::size_t kPlaces = kLatinEnd + (kSignsEnd - kSignsStart) + 2;
  std::array<Codes, kPlaces> codes_;  // the last is for all other characters
};

}  // namespace tenora::access
