#include "platform/query/values/collation.h"

#include <unicode/uchar.h>

#include <array>
#include <string>

#include "platform/query/values/sqlite_value.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

// The sort weight of a character under the engine's "General" sort order: what the keys of a text
// index consist of.
// Bytes from the highest: first and second primary byte (0: none), first and second accent byte (0:
// none, which counts as 2). Upper- and lower-case letters weigh the same. With both primary bytes 0
// the word is either 0, an ignorable character, or 0x0600 + weight: a hyphen or an
// apostrophe, which count only if all else is equal.
using CharacterWeight = std::uint32_t;

// U+0020 to U+024F.
constexpr std::array<std::uint32_t, 560> kLatin = {
    0x07000000, 0x09000000, 0x0A000000, 0x0C000000, 0x0E000000, 0x10000000, 0x12000000, 0x00000680,
    0x14000000, 0x16000000, 0x18000000, 0x2C000000, 0x1A000000, 0x00000682, 0x1C000000, 0x1E000000,
    0x36000000, 0x38000000, 0x3A000000, 0x3C000000, 0x3E000000, 0x40000000, 0x42000000, 0x44000000,
    0x46000000, 0x48000000, 0x20000000, 0x22000000, 0x2E000000, 0x30000000, 0x32000000, 0x24000000,
    0x26000000, 0x4A000000, 0x4C000000, 0x4D000000, 0x4F000000, 0x51000000, 0x53000000, 0x55000000,
    0x57000000, 0x59000000, 0x5B000000, 0x5C000000, 0x5E000000, 0x60000000, 0x62000000, 0x64000000,
    0x66000000, 0x68000000, 0x69000000, 0x6B000000, 0x6D000000, 0x6F000000, 0x71000000, 0x73000000,
    0x75000000, 0x76000000, 0x78000000, 0x27000000, 0x29000000, 0x2A000000, 0x2B020000, 0x2B030000,
    0x2B070000, 0x4A000000, 0x4C000000, 0x4D000000, 0x4F000000, 0x51000000, 0x53000000, 0x55000000,
    0x57000000, 0x59000000, 0x5B000000, 0x5C000000, 0x5E000000, 0x60000000, 0x62000000, 0x64000000,
    0x66000000, 0x68000000, 0x69000000, 0x6B000000, 0x6D000000, 0x6F000000, 0x71000000, 0x73000000,
    0x75000000, 0x76000000, 0x78000000, 0x2B090000, 0x2B0B0000, 0x2B0D0000, 0x2B0F0000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x08020000, 0x2B100000, 0x34A60000, 0x34A70000, 0x34A80000, 0x34A90000, 0x2B110000, 0x34AA0000,
    0x2B120000, 0x34AB0000, 0x4A000300, 0x33050000, 0x34AC0000, 0x00000683, 0x34AD0000, 0x2B130000,
    0x34AE0000, 0x33040000, 0x3A000000, 0x3C000000, 0x2B140000, 0x34AF0000, 0x34B00000, 0x34B10000,
    0x2B150000, 0x38000000, 0x64000300, 0x33070000, 0x37120000, 0x37160000, 0x371A0000, 0x2B160000,
    0x4A000F00, 0x4A000E00, 0x4A001200, 0x4A001900, 0x4A001300, 0x4A001A00, 0x4A510000, 0x4D001C00,
    0x51000F00, 0x51000E00, 0x51001200, 0x51001300, 0x59000F00, 0x59000E00, 0x59001200, 0x59001300,
    0x4F006800, 0x62001900, 0x64000F00, 0x64000E00, 0x64001200, 0x64001900, 0x64001300, 0x33090000,
    0x64002100, 0x6F000F00, 0x6F000E00, 0x6F001200, 0x6F001300, 0x76000E00, 0x6D570000, 0x6B6B0000,
    0x4A000F00, 0x4A000E00, 0x4A001200, 0x4A001900, 0x4A001300, 0x4A001A00, 0x4A510000, 0x4D001C00,
    0x51000F00, 0x51000E00, 0x51001200, 0x51001300, 0x59000F00, 0x59000E00, 0x59001200, 0x59001300,
    0x4F006800, 0x62001900, 0x64000F00, 0x64000E00, 0x64001200, 0x64001900, 0x64001300, 0x330A0000,
    0x64002100, 0x6F000F00, 0x6F000E00, 0x6F001200, 0x6F001300, 0x76000E00, 0x6D570000, 0x76001300,
    0x4A001700, 0x4A001700, 0x4A001500, 0x4A001500, 0x4A001B00, 0x4A001B00, 0x4D000E00, 0x4D000E00,
    0x4D001200, 0x4D001200, 0x4D001000, 0x4D001000, 0x4D001400, 0x4D001400, 0x4F001400, 0x4F001400,
    0x4F001E00, 0x4F001E00, 0x51001700, 0x51001700, 0x51001500, 0x51001500, 0x51001000, 0x51001000,
    0x51001B00, 0x51001B00, 0x51001400, 0x51001400, 0x55001200, 0x55001200, 0x55001500, 0x55001500,
    0x55001000, 0x55001000, 0x55001C00, 0x55001C00, 0x57001200, 0x57001200, 0x57001E00, 0x57001E00,
    0x59001900, 0x59001900, 0x59001700, 0x59001700, 0x59001500, 0x59001500, 0x59001B00, 0x59001B00,
    0x59001000, 0x59000300, 0x595B0000, 0x595B0000, 0x5B001200, 0x5B001200, 0x5C001C00, 0x5C001C00,
    0x5C000300, 0x5E000E00, 0x5E000E00, 0x5E001C00, 0x5E001C00, 0x5E001400, 0x5E001400, 0x5E001100,
    0x5E001100, 0x5E001F00, 0x5E001F00, 0x62000E00, 0x62000E00, 0x62001C00, 0x62001C00, 0x62001400,
    0x62001400, 0x62004800, 0x63050000, 0x63050000, 0x64001700, 0x64001700, 0x64001500, 0x64001500,
    0x64001D00, 0x64001D00, 0x64510000, 0x64510000, 0x69000E00, 0x69000E00, 0x69001C00, 0x69001C00,
    0x69001400, 0x69001400, 0x6B000E00, 0x6B000E00, 0x6B001200, 0x6B001200, 0x6B001C00, 0x6B001C00,
    0x6B001400, 0x6B001400, 0x6D001C00, 0x6D001C00, 0x6D001400, 0x6D001400, 0x6E061E00, 0x6E061E00,
    0x6F001900, 0x6F001900, 0x6F001700, 0x6F001700, 0x6F001500, 0x6F001500, 0x6F001A00, 0x6F001A00,
    0x6F001D00, 0x6F001D00, 0x6F001B00, 0x6F001B00, 0x73001200, 0x73001200, 0x76001200, 0x76001200,
    0x76001300, 0x78000E00, 0x78000E00, 0x78001000, 0x78001000, 0x78001400, 0x78001400, 0x6C060000,
    0x4C001E00, 0x4C004300, 0x4C006800, 0x4C006800, 0x4C008700, 0x4C008700, 0x4D007D00, 0x4D004300,
    0x4D004300, 0x50020400, 0x4F004300, 0x4F001E00, 0x4F001E00, 0x4F007C00, 0x51007D00, 0x51007E00,
    0x51007B00, 0x53004300, 0x53007B00, 0x55004300, 0x55007B00, 0x57007B00, 0x59007B00, 0x59001E00,
    0x5C004300, 0x5C004300, 0x5E001E00, 0x5E002000, 0x60007B00, 0x62004300, 0x62007B00, 0x64002000,
    0x64005200, 0x64005200, 0x64007C00, 0x64007C00, 0x66004300, 0x66004300, 0x69007B00, 0x6B008700,
    0x6B008700, 0x6B007C00, 0x6B007F00, 0x6D005700, 0x6D004300, 0x6D004300, 0x6D005900, 0x6F005200,
    0x6F005200, 0x6F007B00, 0x71007B00, 0x76004300, 0x76004300, 0x78001E00, 0x78001E00, 0x79020000,
    0x79027C00, 0x79027C00, 0x79027D00, 0x3A000300, 0x41020300, 0x41020300, 0x790A0000, 0x73007B00,
    0x330B0000, 0x330C0000, 0x330D0000, 0x2B170000, 0x4F780214, 0x4F780214, 0x4F780214, 0x5E5B0000,
    0x5E5B0000, 0x5E5B0000, 0x625B0000, 0x625B0000, 0x625B0000, 0x4A001400, 0x4A001400, 0x59001400,
    0x59001400, 0x64001400, 0x64001400, 0x6F001400, 0x6F001400, 0x6F002800, 0x6F002800, 0x6F001F00,
    0x6F001F00, 0x6F002500, 0x6F002500, 0x6F002000, 0x6F002000, 0x51007D00, 0x4A002800, 0x4A002800,
    0x4A002500, 0x4A002500, 0x4A511717, 0x4A511717, 0x55001E00, 0x55001E00, 0x55001400, 0x55001400,
    0x5C001400, 0x5C001400, 0x64001B00, 0x64001B00, 0x64003000, 0x64003000, 0x79021400, 0x79021400,
    0x5B001400, 0x4F780000, 0x4F780000, 0x4F780000, 0x55000E00, 0x55000E00, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x4A002600, 0x4A002600, 0x4A510E0E, 0x4A510E0E, 0x64002B00, 0x64002B00,
    0x4A004400, 0x4A004400, 0x4A004600, 0x4A004600, 0x51004400, 0x51004400, 0x51004600, 0x51004600,
    0x59004400, 0x59004400, 0x59004600, 0x59004600, 0x64004400, 0x64004400, 0x64004600, 0x64004600,
    0x69004400, 0x69004400, 0x69004600, 0x69004600, 0x6F004400, 0x6F004400, 0x6F004600, 0x6F004600,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
};

// U+2010 to U+203E: dashes, quotation marks and other general punctuation.
constexpr std::array<std::uint32_t, 47> kPunctuation = {
    0x00000684, 0x00000685, 0x00000688, 0x00000689, 0x0000068B, 0x0000068C, 0x2B350000, 0x2B360000,
    0x2B370000, 0x2B380000, 0x2B390000, 0x2B3A0000, 0x2B3B0000, 0x2B3C0000, 0x2B3D0000, 0x2B3E0000,
    0x34B30000, 0x34B40000, 0x34B50000, 0x34B60000, 0x34B70000, 0x34B80000, 0x34B90000, 0x00000686,
    0x08150000, 0x08160000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000, 0x00000000,
    0x34BA0000, 0x34BB0000, 0x2B3F0000, 0x2B400000, 0x2B410000, 0x2B420000, 0x2B430000, 0x2B440000,
    0x2B450000, 0x2B460000, 0x2B470000, 0x34BC0000, 0x2B480000, 0x2B490000, 0x2B4A0000,
};

constexpr std::uint32_t kEuroSign = 0x35A10000;

// False if the engine's weight of the character is not known.
bool FindCharacterWeight(char32_t character, CharacterWeight& weight) {
  if (character >= 0x20 && character < 0x20 + kLatin.size()) {
    weight = kLatin[character - 0x20];
  } else if (character >= 0x2010 && character < 0x2010 + kPunctuation.size()) {
    weight = kPunctuation[character - 0x2010];
  } else if (character == 0x20AC) {
    weight = kEuroSign;
  } else {
    return false;
  }
  return true;
}

constexpr std::uint8_t kPlainAccent = 2;
// The first primary byte of a character that is not in the tables; higher than any in them.
constexpr char kUnlisted = '\xFE';

// What one character adds to a text's sort key.
struct CharacterKey {
  std::array<char, 4> primary{};
  std::size_t primary_size = 0;
  std::array<char, 2> accents{};
  std::size_t accent_count = 0;
  char special = 0;  // a hyphen's or apostrophe's weight
};

CharacterKey UnlistedKey(char32_t character) {
  CharacterKey key;
  key.accents[0] = kPlainAccent;
  key.accent_count = 1;
  if (character < 0x20) {  // control characters sort between the blank and the exclamation mark
    key.primary = {'\x08', static_cast<char>(0x10 + character)};
    key.primary_size = 2;
    return key;
  }
  const auto folded =
      static_cast<std::uint32_t>(u_foldCase(static_cast<UChar32>(character), U_FOLD_CASE_DEFAULT));
  key.primary = {kUnlisted, static_cast<char>(folded >> 16), static_cast<char>(folded >> 8),
                 static_cast<char>(folded)};
  key.primary_size = 4;
  return key;
}

CharacterKey KeyOf(char32_t character) {
  CharacterWeight weight = 0;
  if (!FindCharacterWeight(character, weight)) return UnlistedKey(character);
  CharacterKey key;
  const auto byte = [weight](int shift) { return static_cast<char>(weight >> shift & 0xFF); };
  if (byte(24) == 0) {
    if (weight != 0) key.special = byte(0);
    return key;
  }
  key.primary = {byte(24), byte(16)};
  key.primary_size = byte(16) == 0 ? 1 : 2;
  key.accents = {byte(8) == 0 ? static_cast<char>(kPlainAccent) : byte(8), byte(0)};
  key.accent_count = byte(0) == 0 ? 1 : 2;
  return key;
}

// The two primary bytes of an ASCII character, 0 for one that needs the whole key.
constexpr std::size_t kAsciiSize = 128;
std::array<std::uint16_t, kAsciiSize> AsciiWeights() {
  std::array<std::uint16_t, kAsciiSize> weights{};
  for (char32_t c = 0x20; c < kAsciiSize; ++c) {
    CharacterWeight weight = 0;
    if (FindCharacterWeight(c, weight)) weights[c] = static_cast<std::uint16_t>(weight >> 16);
  }
  return weights;
}

std::uint16_t AsciiWeight(char c) {
  static const std::array<std::uint16_t, kAsciiSize> weights = AsciiWeights();
  const auto byte = static_cast<unsigned char>(c);
  return byte < kAsciiSize ? weights[byte] : std::uint16_t{0};
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

// A text's whole sort key, level by level.
struct SortKey {
  std::string primary, accents, specials;

  explicit SortKey(std::string_view text) {
    std::size_t position = 0;
    while (!text.empty()) {
      const CharacterKey key = KeyOf(TakeCodePoint(text));
      primary.append(key.primary.data(), key.primary_size);
      accents.append(key.accents.data(), key.accent_count);
      position += key.accent_count;
      if (key.special != 0) AppendSpecial(position, key.special);
    }
    while (!accents.empty() && accents.back() == kPlainAccent) accents.pop_back();
  }

 private:
  void AppendSpecial(std::size_t position, char weight) {
    specials.push_back(static_cast<char>(position >> 16));
    specials.push_back(static_cast<char>(position >> 8));
    specials.push_back(static_cast<char>(position));
    specials.push_back(weight);
  }
};

int Sign(int number) { return (number > 0) - (number < 0); }

int Collate(void*, int left_size, const void* left, int right_size, const void* right) {
  return CompareText({static_cast<const char*>(left), static_cast<std::size_t>(left_size)},
                     {static_cast<const char*>(right), static_cast<std::size_t>(right_size)});
}

int CompareKeys(const SortKey& left, const SortKey& right) {
  if (const int order = left.primary.compare(right.primary); order != 0) return Sign(order);
  if (const int order = left.accents.compare(right.accents); order != 0) return Sign(order);
  return Sign(left.specials.compare(right.specials));
}

}  // namespace

int CompareText(std::string_view left, std::string_view right) {
  left = WithoutTrailingBlanks(left);
  right = WithoutTrailingBlanks(right);
  if (left == right) return 0;
  const std::size_t common = std::min(left.size(), right.size());
  // Most texts are ASCII: compare their weights in place and build keys only if that fails.
  for (std::size_t i = 0; i < common; ++i) {
    const std::uint16_t l = AsciiWeight(left[i]), r = AsciiWeight(right[i]);
    if (l == 0 || r == 0) return CompareKeys(SortKey(left), SortKey(right));
    if (l != r) return l < r ? -1 : 1;
  }
  const std::string_view rest = left.size() > common ? left.substr(common) : right.substr(common);
  for (const char c : rest)
    if (AsciiWeight(c) == 0) return CompareKeys(SortKey(left), SortKey(right));
  if (left.size() == right.size()) return 0;
  return left.size() < right.size() ? -1 : 1;
}

void RegisterCollation(sqlite3* connection) {
  RequireDone(sqlite3_create_collation_v2(connection, kCollationName, SQLITE_UTF8, nullptr, Collate,
                                          nullptr));
}

std::uint64_t HashText(std::string_view text) {
  text = WithoutTrailingBlanks(text);
  constexpr std::uint64_t kPrime = 0x9E3779B97F4A7C15;
  std::uint64_t hash = 0;
  const auto add = [&hash](std::uint8_t byte) { hash = (hash ^ byte) * kPrime; };
  while (!text.empty()) {
    if (const std::uint16_t weight = AsciiWeight(text.front()); weight != 0) {
      add(static_cast<std::uint8_t>(weight >> 8));
      if ((weight & 0xFF) != 0) add(static_cast<std::uint8_t>(weight & 0xFF));
      text.remove_prefix(1);
      continue;
    }
    const CharacterKey key = KeyOf(TakeCodePoint(text));
    for (std::size_t i = 0; i < key.primary_size; ++i)
      add(static_cast<std::uint8_t>(key.primary[i]));
  }
  return hash ^ hash >> 32;
}

}  // namespace tenora::query
