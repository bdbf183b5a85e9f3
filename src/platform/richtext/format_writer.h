// Formats as control words, in the order the classic control writes them.
#pragma once

#include "platform/richtext/code_page.h"
#include "platform/richtext/document.h"
#include "platform/richtext/encoder.h"

namespace tenora::richtext {

class FormatWriter {
 public:
  // `symbol_font` is the position of the font for bullets, `default_font` that for numbers.
  FormatWriter(const std::vector<Font>& fonts, const CodePage* default_page, SourceText* out);

  // The words that turn one character format into another. With `from` null: from the state behind
  // \plain, font and size always named.
  void Change(const CharFormat* from, const CharFormat& to);
  // What follows \pard; `number` is the paragraph's number in its list.
  void Paragraph(const ParagraphFormat& format, int number);
  // The bullet or number as text, for readers that know no lists.
  void BulletText(const Bullet& bullet, int number);

 private:
  void ListWords(const Bullet& bullet);
  void ListText(std::string_view word, std::string_view text);
  void LengthWords(const ParagraphFormat& format);
  void BorderWords(std::string_view edge, const Border& border);
  void TabWords(const TabStop& tab);
  void Switch(std::string_view word, bool from, bool to);
  void UnderlineWord(Underline underline);
  int BulletFont(const Bullet& bullet) const;

  int symbol_font_ = -1;
  const CodePage* default_page_;
  SourceText& out_;
};

}  // namespace tenora::richtext
