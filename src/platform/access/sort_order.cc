#include "platform/access/sort_order.h"

#include <charconv>

#include "platform/access/sort_order_tables.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr std::uint32_t kGeneralLegacyNumber = 0x00000409;
constexpr std::uint32_t kGeneralNumber = 0x01000409;

constexpr std::size_t kMostCharacters = 255;
constexpr char kNoAccent = 2;
constexpr char kSectionEnd = 1;
constexpr char kTextEnd = 0;
constexpr char kMarkKind = 6;
constexpr unsigned kMarkPositionFlag = 0x8000, kMarkPositionStart = 7, kMarkPositionStep = 4;

char Hex(std::string_view digits) {
  unsigned value = 0;
  std::from_chars(digits.data(), digits.data() + 2, value, 16);
  return static_cast<char>(value);
}

std::string Named(char32_t character) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "character U+";
  for (int shift = 20; shift >= 0; shift -= 4) {
    if (shift < 16 || character >> shift != 0) text += kDigits[character >> shift & 15];
  }
  return text;
}

void AppendMark(char mark, std::size_t weights_before, std::string& marks) {
  const auto position = static_cast<unsigned>(
      kMarkPositionFlag | (kMarkPositionStart + kMarkPositionStep * weights_before));
  marks += static_cast<char>(position >> 8);
  marks += static_cast<char>(position);
  marks += kMarkKind;
  marks += mark;
}

}  // namespace

const SortOrder* SortOrder::Find(std::uint32_t number) {
  static const SortOrder legacy(true), general(false);
  if (number == kGeneralLegacyNumber) return &legacy;
  return number == kGeneralNumber ? &general : nullptr;
}

SortOrder::SortOrder(bool legacy) {
  for (const SortCodeRow& row : legacy ? GeneralLegacyCodes() : GeneralCodes()) {
    char32_t character = row.first;
    for (const std::string& word : Split(row.codes, " "))
      codes_[PlaceOf(character++)] = Parse(word, legacy);
  }
}

SortOrder::Codes SortOrder::Parse(std::string_view word, bool legacy) {
  Codes codes;
  if (word == "-") {
    codes.kind = Codes::kIgnored;
  } else if (word.starts_with('\'')) {
    codes.kind = Codes::kMark;
    codes.mark = Hex(word.substr(1));
  } else {
    codes.kind = Codes::kWeights;
    for (const std::string& part : Split(word, "+")) {
      Codes::Weight& weight = codes.weights[codes.weight_count++];
      const std::size_t point = part.find('.');
      const std::size_t digits = point == std::string::npos ? part.size() : point;
      for (std::size_t i = 0; i < digits; i += 2) {
        weight.bytes[weight.size++] = Hex(std::string_view(part).substr(i));
      }
      weight.accent =
          point == std::string::npos ? kNoAccent : Hex(std::string_view(part).substr(point + 1));
      codes.accented = codes.accented || point != std::string::npos;
    }
    codes.unclear_count = codes.weight_count > 1 || (legacy && codes.weights[0].size > 1);
  }
  return codes;
}

std::size_t SortOrder::PlaceOf(char32_t character) {
  if (character < kLatinEnd) return character;
  if (character >= kSignsStart && character < kSignsEnd) {
    return kLatinEnd + (character - kSignsStart);
  }
  return character == kEuro ? kPlaces - 2 : kPlaces - 1;
}

void SortOrder::AppendText(std::string_view text, std::string& key) const {
  while (text.ends_with(' ')) text.remove_suffix(1);
  std::string accents, marks;
  std::size_t characters = 0, accents_end = 0;
  char32_t unclear = 0;  // a character behind which the weights are no longer counted
  while (!text.empty()) {
    const char32_t character = TakeCodePoint(text);
    if (++characters > kMostCharacters) {
      throw NotEncodable("a text in an index may not be longer than 255 characters");
    }
    const Codes& codes = codes_[PlaceOf(character)];
    if (codes.kind == Codes::kUnknown) {
      throw NotEncodable("the sort codes of " + Named(character) + " are not known");
    }
    if (unclear != 0 && (codes.kind == Codes::kMark || codes.accented)) {
      throw NotEncodable("the sort codes of " + Named(character) + " behind " + Named(unclear) +
                         " are not known");
    }
    if (codes.kind == Codes::kMark) AppendMark(codes.mark, accents.size(), marks);
    for (std::size_t i = 0; i < codes.weight_count; ++i) {
      const Codes::Weight& weight = codes.weights[i];
      key.append(weight.bytes.data(), weight.size);
      accents += weight.accent;
      if (weight.accent != kNoAccent) accents_end = accents.size();
    }
    if (codes.unclear_count) unclear = character;
  }
  key += kSectionEnd;
  key.append(accents, 0, accents_end);
  if (!marks.empty()) key.append(3, kSectionEnd).append(marks);
  key += kTextEnd;
}

}  // namespace tenora::access
