#include "platform/richtext/source_copy.h"

#include <unordered_map>

#include "platform/richtext/colour_table.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {

Reference ReferenceOf(std::string_view word) {
  static const std::unordered_map<std::string_view, Reference> kReferences{
      {"f", Reference::kFont},
      {"pnf", Reference::kFont},
      {"cf", Reference::kColour},
      {"cb", Reference::kColour},
      {"highlight", Reference::kColour},
      {"chcbpat", Reference::kColour},
      {"chcfpat", Reference::kColour},
      {"cbpat", Reference::kColour},
      {"cfpat", Reference::kColour},
      {"brdrcf", Reference::kColour},
      {"clcbpat", Reference::kColour},
      {"clcfpat", Reference::kColour},
      {"clcbpatraw", Reference::kColour},
      {"clcfpatraw", Reference::kColour},
      {"trcbpat", Reference::kColour},
      {"trcfpat", Reference::kColour},
      {"ulc", Reference::kColour},
      {"pncf", Reference::kColour}};
  const auto found = kReferences.find(word);
  return found == kReferences.end() ? Reference::kNone : found->second;
}

void SourceCopy::Word(const Token& word, FontTable& fonts, const ColourTable& colours) {
  if (!word.has_param) return out_.Word(word.text);
  switch (ReferenceOf(word.text)) {
    case Reference::kFont:
      return out_.Word(word.text, fonts.Position(word.param));
    case Reference::kColour:
      return out_.Word(word.text, colours.Position(word.param));
    case Reference::kNone:
      return out_.Word(word.text, word.param);
  }
}

void SourceCopy::Symbol(char symbol) {
  const char source[] = {'\\', symbol, '\0'};
  out_.Raw(source);
}

void SourceCopy::Character(char32_t character) {
  std::string text;
  AppendUtf8(text, character);
  out_.Text(text, nullptr);
}

void SourceCopy::Data(std::string_view digits) { out_.Text(digits, nullptr); }

void SourceCopy::Binary(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  digits.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    digits += kDigits[byte >> 4];
    digits += kDigits[byte & 15];
  }
  Data(digits);
}

}  // namespace tenora::richtext
