#include "platform/richtext/characters/special_characters.h"

#include <unordered_map>

namespace tenora::richtext {

char32_t CharacterOfWord(std::string_view word) {
  static const std::unordered_map<std::string_view, char32_t> kCharacters{
      {"tab", U'\t'},        {"line", U'\v'},       {"lbr", U'\v'},      {"page", U'\f'},
      {"emdash", 0x2014},    {"endash", 0x2013},    {"lquote", 0x2018},  {"rquote", 0x2019},
      {"ldblquote", 0x201c}, {"rdblquote", 0x201d}, {"bullet", 0x2022},  {"emspace", 0x2003},
      {"enspace", 0x2002},   {"qmspace", 0x2005},   {"zwj", 0x200d},     {"zwnj", 0x200c},
      {"zwbo", 0x200b},      {"zwnbo", 0x2060},     {"ltrmark", 0x200e}, {"rtlmark", 0x200f}};
  const auto found = kCharacters.find(word);
  return found == kCharacters.end() ? 0 : found->second;
}

char32_t CharacterOfSymbol(char symbol) {
  switch (symbol) {
    case '~':
      return 0xa0;
    case '-':
      return 0xad;
    case '_':
      return 0x2011;
    case '\\':
    case '{':
    case '}':
      return static_cast<char32_t>(symbol);
    default:
      return 0;
  }
}

char32_t CleanCharacter(char32_t character) {
  if (character == '\t' || character == '\v' || character == '\f') return character;
  if (character < 0x20 || character == 0x7f) return 0;
  const bool surrogate = character >= 0xd800 && character <= 0xdfff;
  return surrogate || character == 0xfffc || character > 0x10ffff ? 0xfffd : character;
}

}  // namespace tenora::richtext
