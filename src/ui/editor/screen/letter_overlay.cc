#include "ui/editor/screen/letter_overlay.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextLayout>
#include <QTextTable>
#include <algorithm>

#include "platform/printing/symbol_fonts.h"
#include "platform/richtext/border_kinds.h"
#include "platform/richtext/list_counter.h"
#include "platform/richtext/list_mark.h"

namespace tenora {
namespace {

using richtext::Bullet;
using richtext::ParagraphFormat;

// Whether two blocks are in one cell, or both outside tables: lists do not reach across.
bool InOneText(const QTextBlock& one, const QTextBlock& other) {
  const QTextCursor first(one), second(other);
  const QTextTable* table = first.currentTable();
  if (table != second.currentTable()) return false;
  return table == nullptr || table->cellAt(first) == table->cellAt(second);
}

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
    using Kind = richtext::Border::Kind;
    const double width = std::max(1.0, border.width * scale_);
    QPen pen(colour.isValid() ? colour : QColor(Qt::black), width);
    if (border.kind == Kind::kDotted) pen.setStyle(Qt::DotLine);
    if (border.kind == Kind::kDashed) pen.setStyle(Qt::DashLine);
    if (border.kind == Kind::kDashDot) pen.setStyle(Qt::DashDotLine);
    if (border.kind == Kind::kDashDotDot) pen.setStyle(Qt::DashDotDotLine);
    painter_.setPen(pen);
    if (!richtext::HasSeveralLines(border.kind)) return painter_.drawLine(from, to);
    const QPointF apart = from.y() == to.y() ? QPointF(0, width) : QPointF(width, 0);
    painter_.drawLine(from - apart, to - apart);
    painter_.drawLine(from + apart, to + apart);
  }

  bool IsItem(const QTextBlock& block) {
    return block.isValid() &&
           formats_.ParagraphOf(block.blockFormat()).bullet.kind != Bullet::Kind::kNone;
  }

  // Blocks are painted in their order, so mostly the block before is the last one counted.
  int NumberOf(const QTextBlock& block) {
    if (!counted_.isValid() || counted_.next() != block || !InOneText(counted_, block)) {
      numbers_.EndAll();
      QTextBlock first = block;
      while (IsItem(first.previous()) && InOneText(first.previous(), first))
        first = first.previous();
      for (; first != block; first = first.next())
        numbers_.Next(formats_.ParagraphOf(first.blockFormat()));
    }
    counted_ = block;
    return numbers_.Next(formats_.ParagraphOf(block.blockFormat()));
  }

  void PaintListMark(const QTextBlock& block, const ParagraphFormat& format, const QRectF& area) {
    const QTextLayout* text = block.layout();
    if (text == nullptr || text->lineCount() == 0) return;
    const QTextCharFormat shown = block.charFormat();
    QPaintDevice* device = layout_.paintDevice();
    painter_.setFont(device == nullptr ? shown.font() : QFont(shown.font(), device));
    const bool coloured = shown.foreground().style() == Qt::SolidPattern;
    painter_.setPen(coloured ? shown.foreground().color() : QColor(Qt::black));
    const std::string mark = richtext::ListMark(format.bullet, NumberOf(block));
    const QTextLine line = text->lineAt(0);
    const double x = area.left() + (format.left_indent + format.first_indent) * scale_;
    painter_.drawText(QPointF(x, text->position().y() + line.y() + line.ascent()),
                      printing::UnicodeBullet(QString::fromStdString(mark)));
  }

  QPainter& painter_;
  QAbstractTextDocumentLayout& layout_;
  LetterFormats& formats_;
  double scale_ = 1;
  richtext::ListCounter numbers_;
  QTextBlock counted_;  // the last one
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
