// The sheet of paper that a letter lies on, on a grey desk, and where the pages of it end.
#pragma once

#include <QObject>
#include <QPainter>
#include <QTextCursor>
#include <vector>

#include "ui/editor/document/edited_letter.h"
#include "ui/editor/screen/paper_layout.h"

namespace tenora {

class PageSheet : public QObject {
  Q_OBJECT

 public:
  // Both outlive this object.
  PageSheet(EditedLetter& letter, PaperLayout& paper);

  // Where the pages after the first begin, as positions in Qt's document. They move along with the
  // text until others are known.
  void SetStarts(const std::vector<int>& positions);
  // Under the text, and over it; nothing where no sheet is shown. In the document's coordinates.
  void PaintSheet(QPainter* painter, const QRectF& visible) const;
  void PaintPageEnds(QPainter* painter, const QRectF& visible) const;

 private:
  double PixelsPerTwip() const;
  // The top of the line that begins the page.
  double TopOf(const QTextCursor& start) const;
  // Where the sheet ends: with the last page, which is a whole one.
  double Bottom() const;
  // Lets the window be scrolled to the end of the sheet.
  void ScrollToBottom();

  EditedLetter& letter_;
  PaperLayout& paper_;
  std::vector<QTextCursor> starts_;
  double text_height_ = 0;  // pixels, with the desk; of what Qt has laid out
};

}  // namespace tenora
