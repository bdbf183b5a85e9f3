#include "platform/query/collation.h"

#include <unicode/uchar.h>

#include <array>
#include <string>

#include "platform/query/collation_weights.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr std::uint8_t kPlainAccent = 2;
// Leads the primary bytes of a character whose weight the tables lack; higher than any in them.
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
  if (character < 0x20) {  // control characters: between the blank and the exclamation mark
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
  // Most texts are plain ASCII: weigh them in place, and build keys only from where that fails.
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
