#include "platform/printing/layout/figure_painter.h"

#include <QBrush>
#include <QLinearGradient>
#include <QPen>
#include <QRadialGradient>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace tenora::printing {
namespace {

using richtext::Figure;
using richtext::Outline;

constexpr double kCornerShare = 0.18;  // of a rounded rectangle's shorter side
constexpr double kHairline = 5;        // twips; the thinnest outline
// An arrow's head is so many times as long and as wide as its line, which counts as this at least.
constexpr double kHeadShare = 3, kHeadLeastLine = 15;

QColor ColourOf(const richtext::Colour& colour, double opacity) {
  QColor drawn(colour.red, colour.green, colour.blue);
  drawn.setAlphaF(static_cast<float>(opacity));
  return drawn;
}

QGradientStops StopsOf(const Figure& figure) {
  const richtext::Gradient& gradient = *figure.gradient;
  const QColor from = ColourOf(*figure.fill, figure.opacity);
  const QColor to = ColourOf(gradient.to, figure.opacity);
  if (gradient.turn >= 1) return {{0, from}, {1, to}};
  return {{0, from}, {gradient.turn, to}, {1, from}};
}

QBrush BrushOf(const Figure& figure, const QRectF& area) {
  if (!figure.fill) return Qt::NoBrush;
  if (!figure.gradient) return ColourOf(*figure.fill, figure.opacity);
  if (figure.gradient->radial) {
    QRadialGradient gradient(area.center(), std::hypot(area.width(), area.height()) / 2);
    gradient.setStops(StopsOf(figure));
    return gradient;
  }
  const double angle = figure.gradient->angle * std::numbers::pi / 180;
  const QPointF along(std::sin(angle), std::cos(angle));
  // The way through the area in this direction.
  const double half =
      (std::abs(along.x()) * area.width() + std::abs(along.y()) * area.height()) / 2;
  QLinearGradient gradient(area.center() - along * half, area.center() + along * half);
  gradient.setStops(StopsOf(figure));
  return gradient;
}

QPainterPath PathOf(const Outline& outline, const QRectF& area) {
  using Kind = Outline::Step::Kind;
  const auto at = [&](const Outline::Point& point) {
    return QPointF(area.left() + point.x * area.width(), area.top() + point.y * area.height());
  };
  QPainterPath path;
  for (const Outline::Step& step : outline.steps) {
    switch (step.kind) {
      case Kind::kMove:
        path.moveTo(at(step.to));
        break;
      case Kind::kLine:
        path.lineTo(at(step.to));
        break;
      case Kind::kCurve:
        path.cubicTo(at(step.first), at(step.second), at(step.to));
        break;
      case Kind::kClose:
        path.closeSubpath();
        break;
    }
  }
  return path;
}

// `angle` is the path's direction at the end with the head, counter-clockwise degrees.
void DrawHead(QPainter& painter, QPointF tip, double angle, const Figure& figure) {
  const double size = kHeadShare * std::max<double>(figure.line_width, kHeadLeastLine);
  QPolygonF head({QPointF(0, 0), QPointF(-size, -size / 2), QPointF(-size, size / 2)});
  painter.setPen(Qt::NoPen);
  painter.setBrush(ColourOf(*figure.line, 1));
  painter.drawPolygon(QTransform().translate(tip.x(), tip.y()).rotate(-angle).map(head));
}

void DrawOutline(QPainter& painter, const Figure& figure, const QRectF& area) {
  const QPainterPath path = PathOf(figure.outline, area);
  painter.drawPath(path);
  if (!figure.line || path.elementCount() < 2) return;
  if (figure.arrow_at_end)
    DrawHead(painter, path.currentPosition(), path.angleAtPercent(1), figure);
  if (figure.arrow_at_start)
    DrawHead(painter, path.elementAt(0), path.angleAtPercent(0) + 180, figure);
}

}  // namespace

void DrawFigure(QPainter& painter, const Figure& figure, const QPainterPath& letters,
                const QRectF& area) {
  if (!figure.fill && !figure.line) return;
  QPen pen(Qt::NoPen);
  if (figure.line) {
    pen = QPen(ColourOf(*figure.line, 1), std::max<double>(figure.line_width, kHairline));
    pen.setJoinStyle(Qt::MiterJoin);
    pen.setCapStyle(Qt::FlatCap);
  }
  painter.setPen(pen);
  painter.setBrush(BrushOf(figure, area));
  if (figure.lettering) {
    const QRectF own = letters.boundingRect();
    if (own.isEmpty()) return;
    const QTransform fit =
        QTransform::fromTranslate(-own.left(), -own.top()) *
        QTransform::fromScale(area.width() / own.width(), area.height() / own.height()) *
        QTransform::fromTranslate(area.left(), area.top());
    return painter.drawPath(fit.map(letters));
  }
  const double radius = kCornerShare * std::min(area.width(), area.height());
  switch (figure.kind) {
    case Figure::Kind::kRectangle:
      return painter.drawRect(area);
    case Figure::Kind::kRounded:
      return painter.drawRoundedRect(area, radius, radius);
    case Figure::Kind::kEllipse:
      return painter.drawEllipse(area);
    case Figure::Kind::kLine:
      return figure.rising ? painter.drawLine(area.bottomLeft(), area.topRight())
                           : painter.drawLine(area.topLeft(), area.bottomRight());
    case Figure::Kind::kOutline:
      return DrawOutline(painter, figure, area);
  }
}

}  // namespace tenora::printing
