// A letter's formats as Qt draws them. Lengths of the letter are twips; Qt's are pixels of the
// screen at 100 %.
#pragma once

#include <QColor>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora {

double PixelsOfTwips(double twips);
double TwipsOfPixels(double pixels);

class LetterFormats {
 public:
  // The head of the letter: everything but its text. Its tables only grow while one letter is
  // edited, so that what is undone finds its numbers.
  const richtext::Document& head() const { return head_; }
  void SetHead(richtext::Document head);

  // What Qt does not enlarge by itself is enlarged here.
  void SetZoom(double zoom) { zoom_ = zoom; }

  QTextCharFormat Char(const richtext::CharFormat& format);
  // The part of it that an empty paragraph shows; leaves alone what else Qt keeps in that place.
  QTextCharFormat Mark(const richtext::CharFormat& format);
  QTextBlockFormat Paragraph(const richtext::ParagraphFormat& format);

  // The letter's format of a text; one from elsewhere gets its nearest.
  richtext::CharFormat CharOf(const QTextCharFormat& format);
  richtext::ParagraphFormat ParagraphOf(const QTextBlockFormat& format);

  // Position in the letter's tables, added where it is new.
  int FontNumber(const QString& family);
  int ColourNumber(const QColor& colour);
  QString FontName(int font) const;
  // Invalid for automatic.
  QColor ColourAt(int position) const;
  // Takes the numbers of another letter, such as a pasted one, onto this one's tables.
  void Adopt(richtext::Document* document);

  // True for fonts whose characters are glyph numbers, and the Unicode character of a glyph.
  bool IsSymbol(int font) const;
  std::string ShownSymbol(int font, QChar glyph) const;

 private:
  const QString& Family(int font);

  richtext::Document head_;
  double zoom_ = 1;
  std::map<int, QString> families_;
  std::vector<std::pair<richtext::CharFormat, QTextCharFormat>> recent_;
};

}  // namespace tenora
