// The source of something the editor cannot edit, rebuilt token by token while it is read: the same
// words in the same order, but with the font and colour numbers of the document in hand, with every
// character beyond ASCII as a Unicode escape and without the revision noise of word processors.
#pragma once

#include <string>
#include <string_view>

#include "platform/richtext/read/font_table.h"
#include "platform/richtext/rtf_tokenizer.h"
#include "platform/richtext/write/source_text.h"

namespace tenora::richtext {

class ColourTable;

class SourceCopy {
 public:
  enum class Style {
    kWhole,        // groups and formatting as they came
    kInstruction,  // a field's instruction: text, and only those groups that hold something else
  };

  explicit SourceCopy(Style style) : style_(style) {}

  Style style() const { return style_; }
  // The destination word of the group comes next, as a Word.
  void Open(bool starred) { out_.Raw(starred ? "{\\*" : "{"); }
  void Close() { out_.Raw("}"); }
  void Word(const Token& word, FontTable& fonts, const ColourTable& colours);
  void Symbol(char symbol);
  void Character(char32_t character);
  void Text(std::string_view ascii) { out_.Text(ascii, nullptr); }
  // Hexadecimal digits, as pictures and objects hold them.
  void Data(std::string_view digits);
  // The bytes of a \bin, as hexadecimal digits: source is ASCII.
  void Binary(std::string_view bytes);
  void Raw(std::string_view source) { out_.Raw(source); }

  std::size_t size() const { return out_.text().size(); }
  std::string_view Tail(std::size_t from) const {
    return std::string_view(out_.text()).substr(from);
  }
  std::string Take() { return out_.Take(); }

 private:
  Style style_;
  SourceText out_;
};

}  // namespace tenora::richtext
