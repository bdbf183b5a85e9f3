#include "platform/printing/layout/note_layout.h"

#include <QPen>
#include <utility>

#include "platform/printing/layout/block_layout.h"
#include "platform/printing/layout/taken_areas.h"

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
  Strips strips;
  // As in a cell: notes hold no frames.
  BlockLayout layout(context, *note.blocks, width, note.position, 1, BlockLayout::Ending::kWhole);
  while (auto block = layout.Next()) {
    for (auto& strip : block->strips) {
      strip->ForgetBreaks();
      strips.push_back(std::move(strip));
    }
  }
  MakeRoom(&strips);
  return strips;
}

std::shared_ptr<Strip> NoteSeparator(int position) {
  auto separator = std::make_shared<Separator>();
  separator->height = kRoom;
  separator->begin = separator->end = position;
  return separator;
}

}  // namespace tenora::printing
