// Writes characters as RTF source, which is ASCII.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/richtext/characters/code_page.h"

namespace tenora::richtext {

// RTF source under construction. A control word is separated from text after it by a blank, which
// is only put in when such text comes.
class SourceText {
 public:
  void Word(std::string_view name);
  void Word(std::string_view name, int parameter);
  // Source as it is; `open_word`: it ends in a control word.
  void Raw(std::string_view source, bool open_word = false);
  // Text: characters that `page` has as \'xx, others as \uN with a fallback, "\t", "\v" and "\f" as
  // \tab, \line and \page. Without a page every character beyond ASCII is written as \uN.
  void Text(std::string_view utf8, const CodePage* page);
  void LineEnd() { Raw("\r\n"); }

  const std::string& text() const { return text_; }
  std::string Take() { return std::move(text_); }

 private:
  void Character(char32_t character, const CodePage* page);
  void Part();

  std::string text_;
  bool open_word_ = false;
};

// \'xx with lower-case digits.
void AppendHexByte(std::string* source, unsigned char byte);
// \uN in UTF-16 units, each with a fallback of one character: an ASCII letter close to it, or "?".
void AppendUnicode(std::string* source, char32_t character);

}  // namespace tenora::richtext
