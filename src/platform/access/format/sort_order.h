// A sort order: what turns a text into the bytes that stand for it in an index. Two texts are equal
// to the engine exactly when their bytes are, and sort as their bytes do:
//
//   weights       of each character, one or two bytes; letter case makes no difference
//   01
//   accents       a byte for each weight up to the last accented one; 02 for none
//   [01 01 01     and for each mark (hyphens, the apostrophe), which has no weight:
//    position     80 00 + 7 + 4 for each weight before it (2 bytes, high byte first)
//    06, code]
//   00
//
// Blanks at the end do not count. How many weights those characters count for that sort as two, or
// that have two bytes where others have one, is not known to us: a text with an accent or a mark
// behind such a character is refused.
#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tenora::access {

// Why a key cannot be made: what the index needs is not known here, and must not be guessed.
class NotEncodable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class SortOrder {
 public:
  // The order of a column: the language in the low half of `number`, the version in its last byte.
  // Null for one not known here: all but the general ones (1033), versions 0 and 1.
  static const SortOrder* Find(std::uint32_t number);

  // Appends the bytes of UTF-8 `text` to `key`. Raises NotEncodable for a character whose codes are
  // not known, and for more than 255 characters.
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

  // Latin letters and the signs among them, then general punctuation, then the euro.
  static constexpr char32_t kLatinEnd = 0x250, kSignsStart = 0x2010, kSignsEnd = 0x2040,
                            kEuro = 0x20AC;
  static constexpr std::size_t kPlaces = kLatinEnd + (kSignsEnd - kSignsStart) + 2;
  std::array<Codes, kPlaces> codes_;  // the last: of all others
};

}  // namespace tenora::access
