#include "platform/access/format/sort_order.h"

#include <charconv>
#include <span>

#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

// What each character adds to the key of a text in the two general sort orders. A row has its first
// character and, separated by spaces, a word for that one and each following it:
//
//   4A      a weight, one or two bytes
//   4A.0F   with its accent
//   4A+51   two weights: the character sorts like two others
//   '80     no weight; a mark with this code in the last section of the key
//   -       the character is ignored
//
// The codes of a character that is in no row are not known.
struct SortCodeRow {
  char16_t first;
  std::string_view codes;
};

// clang-format off
constexpr SortCodeRow kGeneralLegacy[] = {
    {0x0003, "'05"},
    {0x0020, "07 09 0A 0C 0E 10 12 '80 14 16 18 2C 1A '82 1C 1E"},
    {0x0030, "36 38 3A 3C 3E 40 42 44 46 48 20 22 2E 30 32 24"},
    {0x0040, "26 4A 4C 4D 4F 51 53 55 57 59 5B 5C 5E 60 62 64"},
    {0x0050, "66 68 69 6B 6D 6F 71 73 75 76 78 27 29 2A 2B02 2B03"},
    {0x0060, "2B07 4A 4C 4D 4F 51 53 55 57 59 5B 5C 5E 60 62 64"},
    {0x0070, "66 68 69 6B 6D 6F 71 73 75 76 78 2B09 2B0B 2B0D 2B0F"},
    {0x00A0, "0802 2B10 34A6 34A7 34A8 34A9 2B11 34AA 2B12 34AB 4A.03 3305 34AC '83 34AD 2B13"},
    {0x00B0, "34AE 3304 3A 3C 2B14 34AF 34B0 34B1 2B15 38 64.03 3307 3712 3716 371A 2B16"},
    {0x00C0,
     "4A.0F 4A.0E 4A.12 4A.19 4A.13 4A.1A 4A+51 4D.1C 51.0F 51.0E 51.12 51.13 59.0F "
     "59.0E 59.12 59.13"},
    {0x00D0,
     "4F.68 62.19 64.0F 64.0E 64.12 64.19 64.13 3309 64.21 6F.0F 6F.0E 6F.12 6F.13 "
     "76.0E 6D+57 6B+6B"},
    {0x00E0,
     "4A.0F 4A.0E 4A.12 4A.19 4A.13 4A.1A 4A+51 4D.1C 51.0F 51.0E 51.12 51.13 59.0F "
     "59.0E 59.12 59.13"},
    {0x00F0,
     "4F.68 62.19 64.0F 64.0E 64.12 64.19 64.13 330A 64.21 6F.0F 6F.0E 6F.12 6F.13 "
     "76.0E 6D+57 76.13"},
    {0x0100,
     "4A.17 4A.17 4A.15 4A.15 4A.1B 4A.1B 4D.0E 4D.0E 4D.12 4D.12 4D.10 4D.10 4D.14 "
     "4D.14 4F.14 4F.14"},
    {0x0110,
     "4F.1E 4F.1E 51.17 51.17 51.15 51.15 51.10 51.10 51.1B 51.1B 51.14 51.14 55.12 "
     "55.12 55.15 55.15"},
    {0x0120,
     "55.10 55.10 55.1C 55.1C 57.12 57.12 57.1E 57.1E 59.19 59.19 59.17 59.17 59.15 "
     "59.15 59.1B 59.1B"},
    {0x0130,
     "59.10 59.03 59+5B 59+5B 5B.12 5B.12 5C.1C 5C.1C 5C.03 5E.0E 5E.0E 5E.1C 5E.1C "
     "5E.14 5E.14 5E.11"},
    {0x0140,
     "5E.11 5E.1F 5E.1F 62.0E 62.0E 62.1C 62.1C 62.14 62.14 62.48 6305 6305 64.17 "
     "64.17 64.15 64.15"},
    {0x0150,
     "64.1D 64.1D 64+51 64+51 69.0E 69.0E 69.1C 69.1C 69.14 69.14 6B.0E 6B.0E 6B.12 "
     "6B.12 6B.1C 6B.1C"},
    {0x0160,
     "6B.14 6B.14 6D.1C 6D.1C 6D.14 6D.14 6E06.1E 6E06.1E 6F.19 6F.19 6F.17 6F.17 "
     "6F.15 6F.15 6F.1A 6F.1A"},
    {0x0170,
     "6F.1D 6F.1D 6F.1B 6F.1B 73.12 73.12 76.12 76.12 76.13 78.0E 78.0E 78.10 78.10 "
     "78.14 78.14 6C06"},
    {0x0180,
     "4C.1E 4C.43 4C.68 4C.68 4C.87 4C.87 4D.7D 4D.43 4D.43 5002.04 4F.43 4F.1E "
     "4F.1E 4F.7C 51.7D 51.7E"},
    {0x0190,
     "51.7B 53.43 53.7B 55.43 55.7B 57.7B 59.7B 59.1E 5C.43 5C.43 5E.1E 5E.20 60.7B "
     "62.43 62.7B 64.20"},
    {0x01A0,
     "64.52 64.52 64.7C 64.7C 66.43 66.43 69.7B 6B.87 6B.87 6B.7C 6B.7F 6D.57 6D.43 "
     "6D.43 6D.59 6F.52"},
    {0x01B0,
     "6F.52 6F.7B 71.7B 76.43 76.43 78.1E 78.1E 7902 7902.7C 7902.7C 7902.7D 3A.03 "
     "4102.03 4102.03 790A 73.7B"},
    {0x01C0,
     "330B 330C 330D 2B17 4F+78.14 4F+78.14 4F+78.14 5E+5B 5E+5B 5E+5B 62+5B 62+5B "
     "62+5B 4A.14 4A.14 59.14"},
    {0x01D0,
     "59.14 64.14 64.14 6F.14 6F.14 6F.28 6F.28 6F.1F 6F.1F 6F.25 6F.25 6F.20 6F.20 "
     "51.7D 4A.28 4A.28"},
    {0x01E0,
     "4A.25 4A.25 4A.17+51.17 4A.17+51.17 55.1E 55.1E 55.14 55.14 5C.14 5C.14 64.1B "
     "64.1B 64.30 64.30 7902.14 7902.14"},
    {0x01F0,
     "5B.14 4F+78 4F+78 4F+78 55.0E 55.0E - - - - 4A.26 4A.26 4A.0E+51.0E "
     "4A.0E+51.0E 64.2B 64.2B"},
    {0x0200,
     "4A.44 4A.44 4A.46 4A.46 51.44 51.44 51.46 51.46 59.44 59.44 59.46 59.46 64.44 "
     "64.44 64.46 64.46"},
    {0x0210, "69.44 69.44 69.46 69.46 6F.44 6F.44 6F.46 6F.46 - - - - - - - -"},
    {0x0220, "- - - - - - - - - - - - - - - -"},
    {0x0230, "- - - - - - - - - - - - - - - -"},
    {0x0240, "- - - - - - - - - - - - - - - -"},
    {0x2010, "'84 '85 '88 '89 '8B '8C 2B35 2B36 2B37 2B38 2B39 2B3A 2B3B 2B3C 2B3D 2B3E"},
    {0x2020, "34B3 34B4 34B5 34B6 34B7 34B8 34B9 '86 0815 0816 - - - - - -"},
    {0x2030, "34BA 34BB 2B3F 2B40 2B41 2B42 2B43 2B44 2B45 2B46 2B47 34BC 2B48 2B49 2B4A 2B4B"},
    {0x20AC, "35A1"},
};

constexpr SortCodeRow kGeneral[] = {
    {0x0003, "'05"},
    {0x0020, "0702 071C 071D 071F 0721 0723 0725 '80 0727 072A 072D 0803 072F '82 0733 0735"},
    {0x0030, "0D17 0D19 0D1A 0D1B 0D1C 0D1D 0D1E 0D1F 0D20 0D21 0737 073A 080E 0812 0814 073C"},
    {0x0040, "073E 0E02 0E09 0E0A 0E1A 0E21 0E23 0E25 0E2C 0E32 0E35 0E36 0E48 0E51 0E70 0E7C"},
    {0x0050, "0E7E 0E89 0E8A 0E91 0E99 0E9F 0EA2 0EA4 0EA6 0EA7 0EA9 073F 0741 0742 0743 0744"},
    {0x0060, "0748 0E02 0E09 0E0A 0E1A 0E21 0E23 0E25 0E2C 0E32 0E35 0E36 0E48 0E51 0E70 0E7C"},
    {0x0070, "0E7E 0E89 0E8A 0E91 0E99 0E9F 0EA2 0EA4 0EA6 0EA7 0EA9 074A 074C 074E 0750"},
    {0x00A0, "0704 0751 0797 0798 0799 079A 0752 0A06 0753 0A07 0E02.03 0818 0A08 - 0A09 0754"},
    {0x00B0,
     "0A0A 0817 0D1A 0D1B 0755 0A0B 0A0C 0A0D 0756 0D19 0E7C.03 081A 0D18.CE "
     "0D18.D6 0D1B.DE 0757"},
    {0x00C0,
     "0E02.0F 0E02.0E 0E02.12 0E02.19 0E02.13 0E02.1A 0E02+0E21 0E0A.1C 0E21.0F "
     "0E21.0E 0E21.12 0E21.13 0E32.0F 0E32.0E 0E32.12 0E32.13"},
    {0x00D0,
     "0E1A.68 0E70.19 0E7C.0F 0E7C.0E 0E7C.12 0E7C.19 0E7C.13 081C 0E7C.21 0E9F.0F "
     "0E9F.0E 0E9F.12 0E9F+0E21 0EA7.0E 0E99+0E2C 0E91+0E91"},
    {0x00E0,
     "0E02.0F 0E02.0E 0E02.12 0E02.19 0E02.13 0E02.1A 0E02+0E21 0E0A.1C 0E21.0F "
     "0E21.0E 0E21.12 0E21.13 0E32.0F 0E32.0E 0E32.12 0E32.13"},
    {0x00F0,
     "0E1A.68 0E70.19 0E7C.0F 0E7C.0E 0E7C.12 0E7C.19 0E7C.13 081D 0E7C.21 0E9F.0F "
     "0E9F.0E 0E9F.12 0E9F+0E21 0EA7.0E 0E99+0E2C 0EA7.13"},
    {0x0100,
     "0E02.17 0E02.17 0E02.15 0E02.15 0E02.1B 0E02.1B 0E0A.0E 0E0A.0E 0E0A.12 "
     "0E0A.12 0E0A.10 0E0A.10 0E0A.14 0E0A.14 0E1A.14 0E1A.14"},
    {0x0110,
     "0E1A.1E 0E1A.1E 0E21.17 0E21.17 0E21.15 0E21.15 0E21.10 0E21.10 0E21.1B "
     "0E21.1B 0E21.14 0E21.14 0E25.12 0E25.12 0E25.15 0E25.15"},
    {0x0120,
     "0E25.10 0E25.10 0E25.1C 0E25.1C 0E2C.12 0E2C.12 0E2C.1E 0E2C.1E 0E32.19 "
     "0E32.19 0E32.17 0E32.17 0E32.15 0E32.15 0E32.1B 0E32.1B"},
    {0x0130,
     "0E32.10 0E32.03 0E32+0E35 0E32+0E35 0E35.12 0E35.12 0E36.1C 0E36.1C 0E36.03 "
     "0E48.0E 0E48.0E 0E48.1C 0E48.1C 0E48.14 0E48.14 0E48.11"},
    {0x0140,
     "0E48.11 0E48.1F 0E48.1F 0E70.0E 0E70.0E 0E70.1C 0E70.1C 0E70.14 0E70.14 "
     "0E70.48 0E74 0E74 0E7C.17 0E7C.17 0E7C.15 0E7C.15"},
    {0x0150,
     "0E7C.1D 0E7C.1D 0E7C+0E21 0E7C+0E21 0E8A.0E 0E8A.0E 0E8A.1C 0E8A.1C 0E8A.14 "
     "0E8A.14 0E91.0E 0E91.0E 0E91.12 0E91.12 0E91.1C 0E91.1C"},
    {0x0160,
     "0E91.14 0E91.14 0E99.1C 0E99.1C 0E99.14 0E99.14 0E9E.1E 0E9E.1E 0E9F.19 "
     "0E9F.19 0E9F.17 0E9F.17 0E9F.15 0E9F.15 0E9F.1A 0E9F.1A"},
    {0x0170,
     "0E9F.1D 0E9F.1D 0E9F.1B 0E9F.1B 0EA4.12 0EA4.12 0EA7.12 0EA7.12 0EA7.13 "
     "0EA9.0E 0EA9.0E 0EA9.10 0EA9.10 0EA9.14 0EA9.14 0E96"},
    {0x0180,
     "0E09.1E 0E09.43 0E09.68 0E09.68 0E09.87 0E09.87 0E0A.7D 0E0A.43 0E0A.43 "
     "0E1B.04 0E1A.43 0E1A.22 0E1A.22 0E1A.7C 0E21.7D 0E21.7E"},
    {0x0190,
     "0E21.7B 0E23.43 0E23.7B 0E25.43 0E25.7B 0E2C.7B 0E32.7B 0E32.1E 0E36.43 "
     "0E36.43 0E48.1E 0E48.20 0E51.7B 0E70.43 0E70.7B 0E7C.20"},
    {0x01A0,
     "0E7C.52 0E7C.52 0E7C.7C 0E7C.7C 0E7E.43 0E7E.43 0E8A.7B 0E91.87 0E91.87 "
     "0E91.7C 0E91.AA 0E99.57 0E99.43 0E99.43 0E99.59 0E9F.52"},
    {0x01B0,
     "0E9F.52 0E9F.7B 0EA2.7B 0EA7.43 0EA7.43 0EA9.1E 0EA9.1E 0EAC 0EAC.7C 0EAC.7C "
     "0EAC.7D 0D1A 0D1D 0D1D 0EB3 0EA4.7B"},
    {0x01C0,
     "081E 081F 0820 0758 0E1A+0EA9.14 0E1A+0EA9.14 0E1A+0EA9.14 0E48+0E35 "
     "0E48+0E35 0E48+0E35 0E70+0E35 0E70+0E35 0E70+0E35 0E02.14 0E02.14 0E32.14"},
    {0x01D0,
     "0E32.14 0E7C.14 0E7C.14 0E9F.14 0E9F.14 0E9F.28 0E9F.28 0E9F.1F 0E9F.1F "
     "0E9F.25 0E9F.25 0E9F.20 0E9F.20 0E21.7D 0E02.28 0E02.28"},
    {0x01E0,
     "0E02.25 0E02.25 0E02.17+0E21.17 0E02.17+0E21.17 0E25.1E 0E25.1E 0E25.14 "
     "0E25.14 0E36.14 0E36.14 0E7C.1B 0E7C.1B 0E7C.30 0E7C.30 0EAC.14 0EAC.14"},
    {0x01F0,
     "0E35.14 0E1A+0EA9 0E1A+0EA9 0E1A+0EA9 0E25.0E 0E25.0E 0E2D.59 0E7E.51 0E70.0F "
     "0E70.0F 0E02.26 0E02.26 0E02.0E+0E21.0E 0E02.0E+0E21.0E 0E7C.2B 0E7C.2B"},
    {0x0200,
     "0E02.44 0E02.44 0E02.46 0E02.46 0E21.44 0E21.44 0E21.46 0E21.46 0E32.44 "
     "0E32.44 0E32.46 0E32.46 0E7C.44 0E7C.44 0E7C.46 0E7C.46"},
    {0x0210,
     "0E8A.44 0E8A.44 0E8A.46 0E8A.46 0E9F.44 0E9F.44 0E9F.46 0E9F.46 0E91.5B "
     "0E91.5B 0E99.5B 0E99.5B 0E21.97 0E21.97 0E2C.14 0E2C.14"},
    {0x0220,
     "0E70.4B 0E1E 0E7D 0E7D 0EA9.43 0EA9.0A 0E02.10 0E02.10 0E21.1C 0E21.1C "
     "0E7C.28 0E7C.28 0E7C.2E 0E7C.2E 0E7C.10 0E7C.10"},
    {0x0230,
     "0E7C.25 0E7C.25 0EA7.17 0EA7.17 0E4A.C8 0E72.C8 0E99.C8 0E35.03 0E1A+0E09 "
     "0E89+0E7E 0E02.1C 0E0A.1D 0E0A.1D 0E4B 0E99.64 0E91.5C"},
    {0x0240,
     "0EA9.5C 0EB3.03 0EB3.03 0E09.1E 0E9F.1E 0EA2.7C 0E21.1D 0E21.1D 0E35.1D "
     "0E35.1D 0E89.45 0E89.45 0E8A.1D 0E8A.1D 0EA7.1D 0EA7.1D"},
    {0x2010, "'84 '85 '88 '89 '90 '92 0777 0778 0779 077A 077B 077C 077D 077E 077F 0780"},
    {0x2020, "0B25 0B26 0B27 0B28 0733 0A0F 0A10 '86 0717 0718 - - - - - 0702.0A"},
    {0x2030,
     "0B2C.0C 0B2C.0E 0781 0781.14 0781.28 0784 0781.19 0781.2D 0787 0788 0789 0B2E "
     "071C.14 078B 078C 078D"},
    {0x20AC, "07A9"},
};
// clang-format on

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
  const std::span<const SortCodeRow> rows = legacy ? std::span<const SortCodeRow>(kGeneralLegacy)
                                                   : std::span<const SortCodeRow>(kGeneral);
  for (const SortCodeRow& row : rows) {
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
  char32_t unclear = 0;  // a character after which the count of weights is not known
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
      throw NotEncodable("the sort codes of " + Named(character) + " after " + Named(unclear) +
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
