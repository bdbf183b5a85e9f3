#include "ui/editor/screen/page_sheet.h"

#include <QAbstractTextDocumentLayout>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

namespace tenora {
namespace {

const QColor kPageEnd(110, 125, 145);

}  // namespace

PageSheet::PageSheet(EditedLetter& letter, PaperLayout& paper) : letter_(letter), paper_(paper) {
  QTextEdit& control = letter.control();
  connect(control.verticalScrollBar(), &QScrollBar::rangeChanged, this, &PageSheet::ScrollToBottom);
  // Asked for it, Qt would lay out all of a long letter at once.
  connect(control.document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged,
          this, [this](const QSizeF& size) {
            text_height_ = size.height();
            ScrollToBottom();
          });
  connect(&paper, &PaperLayout::LaidOut, this, &PageSheet::ScrollToBottom);
  connect(&letter, &EditedLetter::Cleared, this, [this] { starts_.clear(); });
}

void PageSheet::SetStarts(const std::vector<int>& positions) {
  QTextDocument* const document = letter_.control().document();
  starts_.clear();
  for (const int position : positions) {
    QTextCursor start(document);
    start.setPosition(std::clamp(position, 0, document->characterCount() - 1));
    starts_.push_back(start);
  }
  ScrollToBottom();
  letter_.control().viewport()->update();
}

double PageSheet::PixelsPerTwip() const {
  const QPaintDevice* device = letter_.control().document()->documentLayout()->paintDevice();
  return (device == nullptr ? 96 : device->logicalDpiX()) / 1440.0;
}

double PageSheet::TopOf(const QTextCursor& start) const {
  const QTextBlock block = start.block();
  const double top = letter_.control().document()->documentLayout()->blockBoundingRect(block).top();
  const QTextLine line = block.layout()->lineForTextPosition(start.positionInBlock());
  return line.isValid() ? top + line.y() : top;
}

double PageSheet::Bottom() const {
  const PaperLook& look = paper_.Look();
  const double scale = PixelsPerTwip(), desk = kDesk * scale;
  const double last = starts_.empty() ? desk + look.height * scale
                                      : TopOf(starts_.back()) + (look.height - look.top) * scale;
  return std::max(last, text_height_ - desk);
}

// Qt knows the end of the text only, and sets the range by it again and again.
void PageSheet::ScrollToBottom() {
  if (!paper_.Look().sheet) return;
  QScrollBar& bar = *letter_.control().verticalScrollBar();
  const double all = Bottom() + kDesk * PixelsPerTwip();
  const int height = letter_.control().viewport()->height();
  bar.setMaximum(std::max(static_cast<int>(std::ceil(all)) - height, 0));
}

void PageSheet::PaintSheet(QPainter* painter, const QRectF& visible) const {
  const PaperLook& look = paper_.Look();
  if (!look.sheet) return;
  const QPalette palette = letter_.control().palette();
  const double scale = PixelsPerTwip(), desk = kDesk * scale;
  painter->fillRect(visible, palette.mid());
  const QRectF sheet(0, desk, look.width * scale, Bottom() - desk);
  painter->fillRect(sheet, Qt::white);
  painter->setPen(palette.dark().color());
  painter->setBrush(Qt::NoBrush);
  painter->drawRect(sheet.adjusted(0, 0, -1, -1));
}

void PageSheet::PaintPageEnds(QPainter* painter, const QRectF& visible) const {
  const PaperLook& look = paper_.Look();
  if (!look.sheet || starts_.empty()) return;
  const QAbstractTextDocumentLayout& layout = *letter_.control().document()->documentLayout();
  const int first = std::max(layout.hitTest(visible.topLeft(), Qt::FuzzyHit), 0);
  const int last = layout.hitTest(visible.bottomRight(), Qt::FuzzyHit);
  const double width = look.width * PixelsPerTwip();
  painter->save();
  QFont small = letter_.control().font();
  small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.8));
  painter->setFont(small);
  for (std::size_t i = 0; i < starts_.size(); ++i) {
    // A table's row has several lines at one height.
    if (starts_[i].position() < first || starts_[i].position() > last) continue;
    const double y = std::floor(TopOf(starts_[i])) + 0.5;
    const QString number = tr("Page %1").arg(i + 2);
    QRectF label = painter->fontMetrics().boundingRect(number).adjusted(-4, -1, 4, 1);
    label.moveCenter(QPointF(0, y));
    label.moveRight(width - 6);
    painter->setPen(QPen(kPageEnd, 1, Qt::DashLine));
    painter->drawLine(QPointF(0, y), QPointF(width, y));
    painter->fillRect(label, Qt::white);
    painter->setPen(kPageEnd);
    painter->drawText(label, Qt::AlignCenter, number);
  }
  painter->restore();
}

}  // namespace tenora
