#include "ui/editor/screen/letter_overlay.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextLayout>
#include <QTextTable>
#include <algorithm>

#include "platform/printing/symbol_fonts.h"
#include "platform/richtext/list_mark.h"

namespace tenora {
namespace {

using richtext::Bullet;
using richtext::ParagraphFormat;

class Overlay {
 public:
  Overlay(QPainter* painter, const QTextDocument& document, LetterFormats& formats)
      : painter_(*painter), layout_(*document.documentLayout()), formats_(formats) {
    QPaintDevice* device = layout_.paintDevice();
    scale_ = (device == nullptr ? 96 : device->logicalDpiX()) / 1440.0;
  }

  void Paint(const QTextBlock& block) {
    const ParagraphFormat format = formats_.ParagraphOf(block.blockFormat());
    const QRectF area = layout_.blockBoundingRect(block);
    if (format.page_break_before) {
      painter_.setPen(QPen(Qt::gray, 1, Qt::DashLine));
      painter_.drawLine(area.topLeft(), area.topRight());
    }
    PaintBorders(format, area);
    if (format.bullet.kind != Bullet::Kind::kNone) PaintListMark(block, format, area);
  }

 private:
  void PaintBorders(const ParagraphFormat& format, const QRectF& area) {
    const QRectF text(area.left() + format.left_indent * scale_,
                      area.top() + format.space_before * scale_,
                      area.width() - (format.left_indent + format.right_indent) * scale_,
                      area.height() - (format.space_before + format.space_after) * scale_);
    Line(format.top, text.topLeft(), text.topRight());
    Line(format.bottom, text.bottomLeft(), text.bottomRight());
    Line(format.left, text.topLeft(), text.bottomLeft());
    Line(format.right, text.topRight(), text.bottomRight());
  }

  void Line(const richtext::Border& border, QPointF from, QPointF to) {
    if (!border.present) return;
    const QColor colour = formats_.ColourAt(border.colour);
    painter_.setPen(
        QPen(colour.isValid() ? colour : QColor(Qt::black), std::max(1.0, border.width * scale_)));
    painter_.drawLine(from, to);
  }

  // Adjacent paragraphs of one list are numbered consecutively.
  int NumberOf(const QTextBlock& block, const Bullet& bullet) {
    int before = 0;
    for (QTextBlock other = block.previous(); other.isValid(); other = other.previous()) {
      if (formats_.ParagraphOf(other.blockFormat()).bullet != bullet) break;
      ++before;
    }
    return bullet.start + before;
  }

  void PaintListMark(const QTextBlock& block, const ParagraphFormat& format, const QRectF& area) {
    const QTextLayout* text = block.layout();
    if (text == nullptr || text->lineCount() == 0) return;
    const QTextCharFormat shown =
        block.begin().atEnd() ? block.charFormat() : block.begin().fragment().charFormat();
    QPaintDevice* device = layout_.paintDevice();
    painter_.setFont(device == nullptr ? shown.font() : QFont(shown.font(), device));
    const bool coloured = shown.foreground().style() == Qt::SolidPattern;
    painter_.setPen(coloured ? shown.foreground().color() : QColor(Qt::black));
    const bool counts = format.bullet.kind != Bullet::Kind::kBullet;
    const std::string mark =
        richtext::ListMark(format.bullet, counts ? NumberOf(block, format.bullet) : 1);
    const QTextLine line = text->lineAt(0);
    const double x = area.left() + (format.left_indent + format.first_indent) * scale_;
    painter_.drawText(QPointF(x, text->position().y() + line.y() + line.ascent()),
                      printing::UnicodeBullet(QString::fromStdString(mark)));
  }

  QPainter& painter_;
  QAbstractTextDocumentLayout& layout_;
  LetterFormats& formats_;
  double scale_ = 1;
};

// The first block that may be visible; in a table, the table's first block.
QTextBlock FirstVisible(const QTextDocument& document, const QRectF& visible) {
  const int position = document.documentLayout()->hitTest(visible.topLeft(), Qt::FuzzyHit);
  QTextBlock block = document.findBlock(std::max(position, 0));
  QTextCursor cursor(block);
  QTextFrame* outermost = nullptr;
  for (QTextFrame* frame = cursor.currentFrame();
       frame != nullptr && frame->parentFrame() != nullptr; frame = frame->parentFrame())
    outermost = frame;
  if (outermost != nullptr) block = document.findBlock(outermost->firstPosition());
  return block.previous().isValid() ? block.previous() : block;
}

}  // namespace

void PaintOverlay(QPainter* painter, const QTextDocument& document, LetterFormats& formats,
                  const QRectF& visible) {
  Overlay overlay(painter, document, formats);
  for (QTextBlock block = FirstVisible(document, visible); block.isValid(); block = block.next()) {
    const QRectF area = document.documentLayout()->blockBoundingRect(block);
    const bool in_table = QTextCursor(block).currentTable() != nullptr;
    if (!in_table && area.top() > visible.bottom()) break;
    if (area.intersects(visible)) overlay.Paint(block);
  }
}

}  // namespace tenora
