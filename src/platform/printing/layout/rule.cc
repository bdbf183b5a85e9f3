#include "platform/printing/layout/rule.h"

#include <QPen>
#include <algorithm>
#include <array>
#include <numeric>

namespace tenora::printing {
namespace {

using Kind = richtext::Border::Kind;

constexpr double kThinnest = 5;  // twips; thinner lines are drawn so, but take less room
constexpr int kUnnamed = 15;     // of a border without a width, as word processors draw it
// Twips, of kinds whose lines do not all grow with the border's width.
constexpr double kThin = 15, kSmallGap = 15, kLargeThick = 30;

// The thicknesses of a rule's lines and of the gaps between them by turns, from the outside; lines
// that it does not have are 0.
using Lines = std::array<double, 5>;

Lines LinesOf(const Rule& rule) {
  const double w = rule.width;
  switch (rule.kind) {
    case Kind::kThick:
      return {2 * w};
    case Kind::kDouble:
      return {w, w, w};
    case Kind::kTriple:
      return {w, w, w, w, w};
    case Kind::kThickThinSmall:
      return {w, kSmallGap, kThin};
    case Kind::kThinThickSmall:
      return {kThin, kSmallGap, w};
    case Kind::kThinThickThinSmall:
      return {kThin, kSmallGap, w, kSmallGap, kThin};
    case Kind::kThickThinMedium:
      return {w, w / 2, w / 2};
    case Kind::kThinThickMedium:
      return {w / 2, w / 2, w};
    case Kind::kThinThickThinMedium:
      return {w / 2, w / 2, w, w / 2, w / 2};
    case Kind::kThickThinLarge:
      return {kLargeThick, w, kThin};
    case Kind::kThinThickLarge:
      return {kThin, w, kLargeThick};
    case Kind::kThinThickThinLarge:
      return {kThin, w, kLargeThick, w, kThin};
    default:
      return {w};
  }
}

Qt::PenStyle PenOf(Kind kind) {
  switch (kind) {
    case Kind::kDotted:
      return Qt::DotLine;
    case Kind::kDashed:
      return Qt::DashLine;
    case Kind::kDashDot:
      return Qt::DashDotLine;
    case Kind::kDashDotDot:
      return Qt::DashDotDotLine;
    default:
      return Qt::SolidLine;
  }
}

// Where a rule runs: `start` is on its outer side, `along` and `inwards` are unit vectors of its
// direction and of its thickness. Where it meets another rule, each of its lines ends where that
// one's line does.
struct Course {
  QPointF start;
  double length = 0;
  QPointF along, inwards;
  bool meets_at_start = false, meets_at_end = false;
};

void Draw(QPainter& painter, const Rule& rule, const Course& course) {
  if (rule.width <= 0) return;
  const Qt::PenStyle style = PenOf(rule.kind);
  if (style != Qt::SolidLine) {
    painter.setPen(QPen(rule.colour, std::max(rule.width, kThinnest), style, Qt::FlatCap));
    const QPointF middle = course.start + course.inwards * (rule.width / 2);
    painter.drawLine(middle, middle + course.along * course.length);
    return;
  }
  // Filled rectangles: their thickness is exact, and they need no pen.
  const Lines lines = LinesOf(rule);
  double depth = 0;
  for (std::size_t i = 0; i < lines.size() && lines[i] > 0; i += 2) {
    if (i > 0) depth += lines[i - 1];
    const double width = std::max(lines[i], kThinnest);
    const double from = course.meets_at_start ? depth : 0;
    const double to = course.length - (course.meets_at_end ? depth : 0);
    const QPointF corner =
        course.start + course.along * from + course.inwards * (depth + (lines[i] - width) / 2);
    const QPointF extent = course.along * (to - from) + course.inwards * width;
    painter.fillRect(QRectF(corner, QSizeF(extent.x(), extent.y())).normalized(), rule.colour);
    depth += lines[i];
  }
}

bool Meet(const Rule& one, const Rule& other) {
  return one.width > 0 && one.kind == other.kind && one.width == other.width;
}

}  // namespace

double Rule::Thickness() const {
  if (width <= 0) return 0;
  const Lines lines = LinesOf(*this);
  return std::accumulate(lines.begin(), lines.end(), 0.0);
}

Rule RuleOf(const richtext::Border& border, const Fonts& fonts) {
  if (!border.present) return {};
  const int width = border.width > 0 ? border.width : kUnnamed;
  return {double(width), fonts.Colour(border.colour), border.kind};
}

void DrawHorizontal(QPainter& painter, const Rule& rule, double x, double y, double length) {
  Draw(painter, rule, {{x, y - rule.Thickness() / 2}, length, {1, 0}, {0, 1}});
}

void DrawVertical(QPainter& painter, const Rule& rule, double x, double y, double length) {
  Draw(painter, rule, {{x - rule.Thickness() / 2, y}, length, {0, 1}, {1, 0}});
}

void DrawBox(QPainter& painter, const BoxRules& rules, const QRectF& outside) {
  const auto draw = [&](const Rule& rule, QPointF start, double length, QPointF along,
                        QPointF inwards, const Rule& before, const Rule& behind) {
    Draw(painter, rule, {start, length, along, inwards, Meet(rule, before), Meet(rule, behind)});
  };
  const double width = outside.width(), height = outside.height();
  draw(rules.top, outside.topLeft(), width, {1, 0}, {0, 1}, rules.left, rules.right);
  draw(rules.bottom, outside.bottomLeft(), width, {1, 0}, {0, -1}, rules.left, rules.right);
  draw(rules.left, outside.topLeft(), height, {0, 1}, {1, 0}, rules.top, rules.bottom);
  draw(rules.right, outside.topRight(), height, {0, 1}, {-1, 0}, rules.top, rules.bottom);
}

}  // namespace tenora::printing
