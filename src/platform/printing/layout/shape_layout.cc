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

using richtext::Figure;
using richtext::ShapeBox;

constexpr double kNarrowestText = 100;
constexpr int kLetteringSize = 1000;
constexpr std::size_t kMostLettering = 200;  // bytes
struct LaidOutFigure {
  std::shared_ptr<const Figure> figure;
  QRectF area;
  QPointF text;
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
      PlacedStrips text;
      double y = one.text.y();
      for (const auto& strip : one.strips) {
        y += strip->space_before;
        text.Add(strip, corner + QPointF(one.text.x(), y));
        y += strip->height + strip->space_after;
      }
      text.Draw(painter);
    }
  }

  std::vector<LaidOutFigure> figures;
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

LaidOutFigure LayOutFigure(LayoutContext& context, std::shared_ptr<const Figure> figure) {
  LaidOutFigure laid_out;
  laid_out.area =
      QRectF(QPointF(figure->left, figure->top), QPointF(figure->right, figure->bottom));
  if (figure->picture)
    laid_out.picture =
        context.pictures.Place(*figure->picture, laid_out.area.width(), laid_out.area.height());
  if (figure->lettering) laid_out.letters = LettersOf(context, *figure->lettering);
  const richtext::Padding& inset = figure->inset;
  laid_out.text = QPointF(figure->left + inset.left, figure->top + inset.top);
  if (!figure->blocks.empty()) {
    const double width = std::max(laid_out.area.width() - inset.left - inset.right, kNarrowestText);
    BlockLayout layout(context, figure->blocks, width, 0, 1, BlockLayout::Ending::kVisible);
    double height = inset.top + inset.bottom;
    while (auto block = layout.Next()) {
      for (auto& strip : block->strips) laid_out.strips.push_back(std::move(strip));
    }
    MakeRoom(&laid_out.strips);
    for (const auto& strip : laid_out.strips)
      height += strip->space_before + strip->height + strip->space_after;
    const double least = figure->fits_text ? 0 : laid_out.area.height();
    laid_out.area.setHeight(std::max(least, height));
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
  QSizeF size(box.right - box.left, 0);
  for (const auto& figure : drawing.figures) {
    content->figures.push_back(LayOutFigure(context, figure));
    size.setHeight(std::max(size.height(), content->figures.back().area.bottom()));
  }
  Floating floating = PlaceFloating(context, box, size, width);
  floating.content = std::move(content);
  return floating;
}

}  // namespace tenora::printing
