#include "platform/printing/layout/note_layout.h"

#include <QPen>

#include "platform/printing/layout/block_layout.h"

namespace tenora::printing {
namespace {

constexpr double kLineLength = 2880, kLineWidth = 10, kRoom = 200;  // twips

class Separator : public Strip {
 public:
  void Draw(QPainter& painter, QPointF corner) const override {
    const double y = corner.y() + height / 2;
    painter.save();
    painter.setPen(QPen(Qt::black, kLineWidth));
    painter.drawLine(QPointF(corner.x(), y), QPointF(corner.x() + kLineLength, y));
    painter.restore();
  }
};

}  // namespace

Strips LayOutNote(LayoutContext& context, const Note& note, double width) {
  // As deep as a cell: notes hold no frames.
  return LayOutInside(context, *note.blocks, width, note.position, 1);
}

std::shared_ptr<Strip> NoteSeparator(int position) {
  auto separator = std::make_shared<Separator>();
  separator->height = kRoom;
  separator->begin = separator->end = position;
  return separator;
}

}  // namespace tenora::printing
