#include "platform/printing/layout/rule.h"

#include <QPen>
#include <algorithm>

namespace tenora::printing {
namespace {

using Kind = richtext::Border::Kind;

constexpr double kThinnest = 5;  // twips; thinner lines are drawn so, but take less room
constexpr int kUnnamed = 15;     // of a border without a width, as word processors draw it

// `along` and `across` are unit vectors of the rule's direction and of its thickness.
void Draw(QPainter& painter, const Rule& rule, QPointF start, double length, QPointF along,
          QPointF across) {
  if (rule.width <= 0) return;
  const double width = std::max(rule.width, kThinnest);
  if (rule.kind == Kind::kDotted || rule.kind == Kind::kDashed) {
    const Qt::PenStyle style = rule.kind == Kind::kDotted ? Qt::DotLine : Qt::DashLine;
    painter.setPen(QPen(rule.colour, width, style, Qt::FlatCap));
    painter.drawLine(start, start + along * length);
    return;
  }
  // Filled rectangles: their thickness is exact, and they need no pen.
  const auto line = [&](double offset) {
    const QPointF corner = start + across * (offset - width / 2);
    const QPointF extent = along * length + across * width;
    painter.fillRect(QRectF(corner, QSizeF(extent.x(), extent.y())), rule.colour);
  };
  if (rule.kind != Kind::kDouble) return line(0);
  line(-width);
  line(width);
}

}  // namespace

double Rule::Thickness() const { return kind == Kind::kDouble ? 3 * width : width; }

Rule RuleOf(const richtext::Border& border, const Fonts& fonts) {
  if (!border.present) return {};
  const int width = border.width > 0 ? border.width : kUnnamed;
  return {double(width), fonts.Colour(border.colour), border.kind};
}

void DrawHorizontal(QPainter& painter, const Rule& rule, double x, double y, double length) {
  Draw(painter, rule, {x, y}, length, {1, 0}, {0, 1});
}

void DrawVertical(QPainter& painter, const Rule& rule, double x, double y, double length) {
  Draw(painter, rule, {x, y}, length, {0, 1}, {1, 0});
}

}  // namespace tenora::printing
