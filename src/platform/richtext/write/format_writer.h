// Formats as control words, in the order the classic control writes them.
#pragma once

#include <string_view>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/write/source_text.h"

namespace tenora::richtext {

// A placeholder number for the document's default font in source that is written while the
// document is still being read: a header may come before the font table, and the last \deff counts.
// Renumber puts the right number in its place.
inline constexpr int kDefaultFontToCome = 999'999'999;

// The font that bullets are written in; its name may come in any letter case.
bool IsBulletFont(const Font& font);
Font BulletFont();
// True for the bullet that the classic control writes as a character of that font.
bool IsSymbolBullet(const Bullet& bullet);

// Our own word in a \pn group, which other readers pass over: lists that look alike and follow each
// other differ in its number.
inline constexpr std::string_view kListWord = "tenoralist";
inline constexpr std::string_view kListGapWord = "tenoralistgap";  // 1: a space, 2: nothing

// Writes nothing for a border that is not there; `edge` is the word that names its place.
void WriteBorder(std::string_view edge, const Border& border, SourceText* out);

class FormatWriter {
 public:
  // Bullets are written in the Symbol font among `fonts`, numbers in the default font.
  FormatWriter(const std::vector<Font>& fonts, int default_font, SourceText* out);

  // The words that turn one character format into another. With `from` null: from the state after
  // \plain, font and size always named.
  void Change(const CharFormat* from, const CharFormat& to);
  // Writes what follows \pard; `number` is the paragraph's number in its list.
  void Paragraph(const ParagraphFormat& format, int number);
  // The bullet or number as text, for readers without list support.
  void BulletText(const Bullet& bullet, int number);

 private:
  void ListWords(const Bullet& bullet);
  void ListText(std::string_view word, std::string_view text);
  void FrameWords(const FramePlace& frame);
  void LengthWords(const ParagraphFormat& format);
  void TabWords(const TabStop& tab);
  void Switch(std::string_view word, bool from, bool to);
  void UnderlineWord(Underline underline);
  bool InSymbol(const Bullet& bullet) const;

  int symbol_font_ = -1;
  int default_font_;
  SourceText& out_;
};

}  // namespace tenora::richtext
