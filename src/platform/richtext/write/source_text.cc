#include "platform/richtext/write/source_text.h"

#include <unicode/unorm2.h>

#include <array>

#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

bool IsPlain(char c) { return c >= 0x20 && c < 0x7f && c != '\\' && c != '{' && c != '}'; }

// The letter under the accents: "a" for "ā". Zero if it is not ASCII.
char CloseLetter(char32_t character) {
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* normalizer = unorm2_getNFDInstance(&error);
  if (U_FAILURE(error)) return 0;
  std::array<UChar, 16> parts{};
  const int length = unorm2_getDecomposition(normalizer, static_cast<UChar32>(character),
                                             parts.data(), parts.size(), &error);
  if (U_FAILURE(error) || length <= 0) return 0;
  const UChar base = parts[0];
  const bool letter = (base >= 'a' && base <= 'z') || (base >= 'A' && base <= 'Z');
  return letter ? static_cast<char>(base) : 0;
}

void AppendUnit(std::string* source, unsigned unit, char fallback) {
  const int number = unit > 0x7fff ? static_cast<int>(unit) - 0x10000 : static_cast<int>(unit);
  source->append("\\u").append(std::to_string(number)).push_back(fallback);
}

}  // namespace

void AppendHexByte(std::string* source, unsigned char byte) {
  static constexpr char kDigits[] = "0123456789abcdef";
  source->append("\\'");
  source->push_back(kDigits[byte >> 4]);
  source->push_back(kDigits[byte & 15]);
}

void AppendUnicode(std::string* source, char32_t character) {
  if (character > 0xffff) {
    const unsigned offset = static_cast<unsigned>(character) - 0x10000;
    AppendUnit(source, 0xd800 + (offset >> 10), '?');
    AppendUnit(source, 0xdc00 + (offset & 0x3ff), '?');
    return;
  }
  const char close = CloseLetter(character);
  AppendUnit(source, static_cast<unsigned>(character), close != 0 ? close : '?');
}

void SourceText::Part() {
  if (open_word_) text_ += ' ';
  open_word_ = false;
}

void SourceText::Word(std::string_view name) {
  text_.append("\\").append(name);
  open_word_ = true;
}

void SourceText::Word(std::string_view name, int parameter) {
  text_.append("\\").append(name).append(std::to_string(parameter));
  open_word_ = true;
}

void SourceText::Raw(std::string_view source, bool open_word) {
  if (source.empty()) return;
  text_.append(source);
  open_word_ = open_word;
}

void SourceText::Text(std::string_view utf8, const CodePage* page) {
  while (!utf8.empty()) {
    std::size_t plain = 0;
    while (plain < utf8.size() && IsPlain(utf8[plain])) ++plain;
    if (plain > 0) {
      Part();
      text_.append(utf8.substr(0, plain));
      utf8.remove_prefix(plain);
    } else {
      Character(TakeCodePoint(utf8), page);
    }
  }
}

void SourceText::Character(char32_t character, const CodePage* page) {
  switch (character) {
    case '\t':
      return Word("tab");
    case '\v':
      return Word("line");
    case '\f':
      return Word("page");
    case '\\':
    case '{':
    case '}':
      text_ += '\\';
      text_ += static_cast<char>(character);
      open_word_ = false;
      return;
    default:
      break;
  }
  if (character < 0x20 || character == 0x7f) return;
  open_word_ = false;
  const std::string bytes = page == nullptr ? std::string() : page->Encode(character);
  if (bytes.empty()) return AppendUnicode(&text_, character);
  for (const char byte : bytes) AppendHexByte(&text_, static_cast<unsigned char>(byte));
}

}  // namespace tenora::richtext
