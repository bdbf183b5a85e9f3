// The font table while a document is read: font numbers as the source uses them, and the fonts
// they mean. A font's position never changes once it is given out.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/document.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

// The name a font gets when the document gives none.
inline constexpr const char* kDefaultFontName = "Times New Roman";

class FontTable {
 public:
  explicit FontTable(CodePages* code_pages) : code_pages_(code_pages) {}

  // The content of the \fonttbl group.
  void Word(const Token& token);
  void Byte(unsigned char byte);
  void Character(char32_t character);
  // The end of an entry's group, or of the table: takes the entry even without its semicolon.
  void EndEntry();

  void SetDefaultNumber(int number) { default_number_ = number; }
  void SetDocumentCodePage(int number) { document_code_page_ = number; }
  int document_code_page() const { return document_code_page_; }

  // Position of the font with this number in the source; an unknown number is the default font.
  int Position(int number);
  int DefaultPosition();
  // Position of the font with this name (UTF-8), which is added if there is none.
  int PositionOf(std::string_view name);
  // The font at this position if a list's mark has it for its own: not a font of symbols, whose
  // characters are Unicode by now, nor the default font, which saved letters name for want of one.
  std::optional<int> FontOfMark(int position);
  // Position of the font that bullets are written in.
  int SymbolPosition();
  // How the bytes of text in the font with this number are read.
  const CodePage& PageOf(int number);
  const CodePage& DefaultPage() { return PageOf(default_number_); }
  const std::vector<Font>& fonts() const { return fonts_; }
  std::vector<Font> Take() { return std::move(fonts_); }

 private:
  int Add(Font font);

  CodePages* code_pages_;
  int document_code_page_ = kDefaultCodePage;
  int default_number_ = 0;
  std::vector<Font> fonts_;
  struct Numbered {
    int position = 0;
    int code_page = kDefaultCodePage;
  };
  std::map<int, Numbered> numbers_;
  // By lower-case name, and whether it is one of symbols. The other character sets of a name are
  // one font: editors change between them with the keyboard, also in the middle of a merge code.
  std::map<std::pair<std::string, bool>, int> by_name_;

  Font entry_;  // being read
  bool entry_open_ = false;
  bool has_charset_ = false;
  int entry_code_page_ = 0;  // \cpg, 0 when absent
  std::u32string name_;      // bytes as kByte + value, to be decoded when the charset is known
};

}  // namespace tenora::richtext
