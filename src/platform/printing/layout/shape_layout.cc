#include "platform/printing/layout/shape_layout.h"

#include <QPainterPath>
#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "platform/printing/layout/block_layout.h"
#include "platform/printing/layout/figure_painter.h"
#include "platform/printing/layout/placed_strips.h"
#include "platform/printing/layout/taken_areas.h"
#include "platform/printing/pictures.h"

namespace tenora::printing {
namespace {

using Direction = richtext::Cell::Direction;
using richtext::Figure;
using richtext::ShapeBox;

constexpr double kNarrowestText = 100;
constexpr int kLetteringSize = 1000;
constexpr std::size_t kMostLettering = 200;  // bytes
struct LaidOutFigure {
  std::shared_ptr<const Figure> figure;
  QRectF area;
  QPointF text;          // in the drawing or, for lines up or down the page, from where they begin
  QPainterPath letters;  // of any size
  std::optional<PlacedPicture> picture;
  Strips strips;
};

class LaidOutDrawing : public FloatContent {
 public:
  void Draw(QPainter& painter, QPointF corner) const override {
    for (const LaidOutFigure& one : figures) {
      const QRectF area = one.area.translated(corner);
      painter.save();
      if (one.figure->rotation != 0) {
        painter.translate(area.center());
        painter.rotate(one.figure->rotation);
        painter.translate(-area.center());
      }
      DrawFigure(painter, *one.figure, one.letters, area);
      if (one.picture) DrawPicture(painter, area, *one.picture);
      painter.restore();
      if (one.figure->direction == Direction::kAcross) {
        DrawText(painter, one, corner + one.text);
        continue;
      }
      const bool up = one.figure->direction == Direction::kUp;
      painter.save();
      painter.translate(up ? area.bottomLeft() : area.topRight());
      painter.rotate(up ? -90 : 90);
      DrawText(painter, one, one.text);
      painter.restore();
    }
  }

  std::vector<LaidOutFigure> figures;

 private:
  static void DrawText(QPainter& painter, const LaidOutFigure& figure, QPointF corner) {
    PlacedStrips text;
    for (const auto& strip : figure.strips) {
      corner.ry() += strip->space_before;
      text.Add(strip, corner);
      corner.ry() += strip->height + strip->space_after;
    }
    text.Draw(painter);
  }
};

QPainterPath LettersOf(LayoutContext& context, const richtext::Lettering& lettering) {
  richtext::Font font;
  font.name = lettering.font;
  QFont letters(context.fonts->Installed(font));
  letters.setPixelSize(kLetteringSize);
  letters.setBold(lettering.bold);
  letters.setItalic(lettering.italic);
  QPainterPath path;
  path.addText(0, 0, letters, QString::fromStdString(lettering.text.substr(0, kMostLettering)));
  return path;
}

// How much wider and higher the drawing is than its box says.
struct Stretch {
  double x = 1, y = 1;
};

Stretch StretchOf(const LayoutContext& context, const ShapeBox& box) {
  const PageArea& area = context.area;
  const auto stretch = [](double share, double whole, double set) {
    return share > 0 && set > 0 ? share * whole / set : 1;
  };
  const bool width_of_page = box.width_of == ShapeBox::From::kPage;
  const bool height_of_page = box.height_of == ShapeBox::From::kPage;
  return {stretch(box.width_share, width_of_page ? area.paper_width : area.width(),
                  box.right - box.left),
          stretch(box.height_share, height_of_page ? area.paper_height : area.height(),
                  box.bottom - box.top)};
}

LaidOutFigure LayOutFigure(LayoutContext& context, std::shared_ptr<const Figure> figure,
                           Stretch stretch) {
  LaidOutFigure laid_out;
  laid_out.area = QRectF(QPointF(figure->left * stretch.x, figure->top * stretch.y),
                         QPointF(figure->right * stretch.x, figure->bottom * stretch.y));
  if (figure->picture)
    laid_out.picture =
        context.pictures.Place(*figure->picture, laid_out.area.width(), laid_out.area.height());
  if (figure->lettering) laid_out.letters = LettersOf(context, *figure->lettering);
  const richtext::Padding& inset = figure->inset;
  const bool across = figure->direction == Direction::kAcross;
  const bool up = figure->direction == Direction::kUp;
  laid_out.text = across ? laid_out.area.topLeft() + QPointF(inset.left, inset.top)
                  : up   ? QPointF(inset.bottom, inset.left)
                         : QPointF(inset.top, inset.right);
  if (!figure->blocks.empty()) {
    const double room = across ? laid_out.area.width() - inset.left - inset.right
                               : laid_out.area.height() - inset.top - inset.bottom;
    const double width = std::max(room, kNarrowestText);
    BlockLayout layout(context, figure->blocks, width, 0, 1, BlockLayout::Ending::kVisible);
    double height = inset.top + inset.bottom;
    while (auto block = layout.Next()) {
      for (auto& strip : block->strips) laid_out.strips.push_back(std::move(strip));
    }
    MakeRoom(&laid_out.strips);
    for (const auto& strip : laid_out.strips)
      height += strip->space_before + strip->height + strip->space_after;
    const double least = figure->fits_text ? 0 : laid_out.area.height();
    if (across) laid_out.area.setHeight(std::max(least, height));
  }
  laid_out.figure = std::move(figure);
  return laid_out;
}

// A place on an axis, from where [start, start + size] begins.
double Along(ShapeBox::Align align, double set, double start, double size, double own) {
  switch (align) {
    case ShapeBox::Align::kAsSet:
      return start + set;
    case ShapeBox::Align::kStart:
      return start;
    case ShapeBox::Align::kCentre:
      return start + (size - own) / 2;
    case ShapeBox::Align::kEnd:
      return start + size - own;
  }
  return start;
}

}  // namespace

bool IsShown(const richtext::Verbatim& object) {
  return object.shape.has_value() && !object.figures.empty();
}

Floating PlaceFloating(const LayoutContext& context, const ShapeBox& box, QSizeF size,
                       double width) {
  using From = ShapeBox::From;
  const PageArea& area = context.area;
  Floating floating;
  floating.width = size.width();
  floating.height = size.height();
  floating.behind = box.behind;
  floating.layer = box.layer;
  floating.wrap = box.behind ? ShapeBox::Wrap::kNone : box.wrap;
  floating.x_on_paper = box.x_from != From::kText;
  floating.y_on_paper = box.y_from != From::kText;
  const auto [left, wide] = box.x_from == From::kPage     ? std::pair(0.0, area.paper_width)
                            : box.x_from == From::kMargin ? std::pair(area.left, area.width())
                                                          : std::pair(0.0, width);
  const auto [top, high] = box.y_from == From::kPage     ? std::pair(0.0, area.paper_height)
                           : box.y_from == From::kMargin ? std::pair(area.top, area.height())
                                                         : std::pair(0.0, 0.0);
  floating.x = Along(box.x_align, box.left, left, wide, floating.width);
  floating.y =
      box.y_from == From::kText ? box.top : Along(box.y_align, box.top, top, high, floating.height);
  return floating;
}

Floating LayOutShape(LayoutContext& context, const richtext::Verbatim& drawing, double width) {
  const ShapeBox& box = *drawing.shape;
  auto content = std::make_shared<LaidOutDrawing>();
  const Stretch stretch = StretchOf(context, box);
  QSizeF size((box.right - box.left) * stretch.x, 0);
  for (const auto& figure : drawing.figures) {
    content->figures.push_back(LayOutFigure(context, figure, stretch));
    size.setHeight(std::max(size.height(), content->figures.back().area.bottom()));
  }
  Floating floating = PlaceFloating(context, box, size, width);
  floating.content = std::move(content);
  return floating;
}

}  // namespace tenora::printing
