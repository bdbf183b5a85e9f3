// A letter's formats as Qt draws them. Lengths of the letter are twips; Qt's are pixels of the
// screen at 100 %.
#pragma once

#include <QColor>
#include <QTextBlock>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <QTextCursor>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/richtext/document.h"
#include "ui/editor/text/screen_fit.h"

namespace tenora {

double PixelsOfTwips(double twips);
double TwipsOfPixels(double pixels);

class LetterFormats {
 public:
  // The head of the letter: everything but its text. Its font and colour tables only grow while a
  // letter is edited, so that the numbers in undone text stay valid.
  const richtext::Document& head() const { return head_; }
  void SetHead(richtext::Document head);

  // The factor for lengths that Qt does not scale itself.
  void SetZoom(double zoom);

  QTextCharFormat Char(const richtext::CharFormat& format);
  // The properties that set the height of an empty paragraph, to be merged into its block's format.
  QTextCharFormat Mark(const richtext::CharFormat& format);
  QTextBlockFormat Paragraph(const richtext::ParagraphFormat& format);
  // The same with lines as high as on paper for most of the text that the block has now.
  QTextBlockFormat Fitted(const richtext::ParagraphFormat& format, const QTextBlock& block);
  // Makes the lines of the cursor's block as high as on paper.
  void FitLines(QTextCursor* cursor);
  // Of text on the screen, percent, so that it is as wide as on paper.
  double LetterSpacing(const QTextCharFormat& format);

  // The letter's format of text in Qt's document; for text from elsewhere the nearest one.
  richtext::CharFormat CharOf(const QTextCharFormat& format);
  richtext::ParagraphFormat ParagraphOf(const QTextBlockFormat& format);

  // The position in the letter's tables; new entries are added.
  int FontNumber(const QString& family);
  int ColourNumber(const QColor& colour);
  QString FontName(int font) const;
  // Invalid for automatic.
  QColor ColourAt(int position) const;
  // Converts another letter's font and colour numbers, such as a pasted one's, to this letter's
  // tables.
  void Adopt(richtext::Document* document);

  // True for fonts whose characters are glyph numbers, and the Unicode character of a glyph.
  bool IsSymbol(int font) const;
  std::string ShownSymbol(int font, QChar glyph) const;

 private:
  const QString& Family(int font);
  std::optional<richtext::CharFormat> MainText(const QTextBlock& block);

  richtext::Document head_;
  double zoom_ = 1;
  ScreenFits fits_;
  std::map<int, QString> families_;
  std::vector<std::pair<richtext::CharFormat, QTextCharFormat>> recent_;
};

}  // namespace tenora
