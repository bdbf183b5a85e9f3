// A sort order encodes a text as the bytes of an index key. Two texts are equal to the engine
// exactly when these bytes are, and sort as they do:
//
//   weights       one or two bytes for each character, the same for upper and lower case
//   01
//   accents       a byte for each character with weights, up to the last accented one; 02 for no
//                 accent. Few characters count as two: Ǽ sorts as Á and É
//   [01 01 01     then for each mark (hyphens, the apostrophe), which has no weight:
//    position     80 00 + 7 + 4 for each accent before it (2 bytes, high byte first)
//    06, code]
//   00
//
// Trailing spaces are ignored. The accent of a combining character is added, modulo 256, to
// that of the character before it; at the start of a text it has a byte of its own, which positions
// do not count.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tenora::access {

struct SortCodes;
struct SortCodeRow;

// A key cannot be encoded because part of its format is not known. It must not be guessed: a wrong
// key would corrupt the index.
class NotEncodable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Its functions can be called by several threads at once.
class SortOrder {
 public:
  // The sort order with a column's number: language in the low 16 bits, version in the top 8. Null
  // for an unknown one: only the general orders (1033) of versions 0 and 1 are known.
  static const SortOrder* Find(std::uint32_t number);

  // The same, with the general order of its version in place of an unknown one. It is good enough
  // to compare texts, not to write keys.
  static const SortOrder& Closest(std::uint32_t number);

  SortOrder(const SortOrder&) = delete;
  SortOrder& operator=(const SortOrder&) = delete;
  ~SortOrder();

  // Appends the encoding of UTF-8 `text` to `key`. Raises NotEncodable for more than 255
  // characters, for a character whose codes are not known and for one of which it is not known how
  // it sorts beside the others of the text.
  void AppendText(std::string_view text, std::string& key) const;

  // The same for texts to be compared only: never refuses. Unknown characters sort behind all
  // others.
  void AppendComparable(std::string_view text, std::string& key) const;

 private:
  explicit SortOrder(std::span<const SortCodeRow> rows);

  const SortCodes& CodesOf(char32_t character) const;
  void RequireKnown(std::string_view text) const;

  // The codes from a row's first character to the next one's, read when they are first needed: few
  // texts have any but common characters.
  struct Block {
    std::once_flag read;
    std::vector<SortCodes> codes;
  };

  const std::span<const SortCodeRow> rows_;
  std::vector<SortCodes> common_;          // of the characters before kCommonEnd
  const std::unique_ptr<Block[]> blocks_;  // one for each row
};

}  // namespace tenora::access
