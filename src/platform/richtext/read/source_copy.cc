#include "platform/richtext/read/source_copy.h"

#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/table_numbers.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {

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
