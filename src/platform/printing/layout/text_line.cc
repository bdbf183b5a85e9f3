#include "platform/printing/layout/text_line.h"

#include <QPen>
#include <algorithm>
#include <cmath>

namespace tenora::printing {
namespace {

using richtext::Underline;

// Rules are filled rectangles: their thickness is then exact, and they need no pen.
void HorizontalRule(QPainter& painter, double x, double y, double width, double thickness,
                    const QColor& colour) {
  painter.fillRect(QRectF(x, y - thickness / 2, width, thickness), colour);
}

void PenRule(QPainter& painter, double x, double y, double width, double thickness,
             const QColor& colour, Qt::PenStyle style) {
  painter.setPen(QPen(colour, thickness, style, Qt::FlatCap));
  painter.drawLine(QPointF(x, y), QPointF(x + width, y));
}

void Wave(QPainter& painter, double x, double y, double width, double thickness,
          const QColor& colour) {
  const double step = thickness * 2;
  QPolygonF points;
  bool up = false;
  for (double at = 0; at <= width; at += step, up = !up) {
    points << QPointF(x + at, y + (up ? -thickness : thickness));
  }
  painter.setPen(QPen(colour, thickness / 2));
  painter.drawPolyline(points);
}

void DrawUnderline(QPainter& painter, double x, double y, double width, double size,
                   const QColor& colour, Underline kind) {
  const double thin = size / 18;
  switch (kind) {
    case Underline::kNone:
      break;
    case Underline::kSingle:
    case Underline::kWords:
      HorizontalRule(painter, x, y, width, thin, colour);
      break;
    case Underline::kThick:
      HorizontalRule(painter, x, y, width, thin * 2, colour);
      break;
    case Underline::kDouble:
      HorizontalRule(painter, x, y - thin, width, thin, colour);
      HorizontalRule(painter, x, y + thin, width, thin, colour);
      break;
    case Underline::kDotted:
      PenRule(painter, x, y, width, thin, colour, Qt::DotLine);
      break;
    case Underline::kDash:
      PenRule(painter, x, y, width, thin, colour, Qt::DashLine);
      break;
    case Underline::kWave:
      Wave(painter, x, y, width, thin, colour);
      break;
  }
}

// The height of a strike-through above the line's baseline: raised letters have one of their own.
double MiddleOfLetters(const richtext::CharFormat& format, const FontUse& use) {
  constexpr double kMiddle = 0.27;  // of the size
  constexpr double kScript = 2.0 / 3, kSuper = 1.0 / 2,
                   kSub = -1.0 / 6;  // as text layouts set them
  const double raised = format.raise_half_points * kTwipsPerHalfPoint;
  if (format.script == richtext::Script::kNormal) return raised + kMiddle * use.size;
  const double shift = format.script == richtext::Script::kSuper ? kSuper : kSub;
  return raised + kScript * (kMiddle * use.size + shift * (use.ascent + use.descent));
}

// The x range of characters [start, end) of a layout on a line.
std::pair<double, double> Stretch(const QTextLine& line, int start, int end) {
  const double one = line.cursorToX(start), other = line.cursorToX(end);
  return {std::min(one, other), std::max(one, other)};
}

}  // namespace

int ShapedText::PositionAt(int offset) const {
  if (const auto here = FragmentsIn(offset, offset + 1); !here.empty()) {
    const Fragment& fragment = here.front();
    return fragment.position + (fragment.one_position ? 0 : offset - fragment.start);
  }
  if (fragments.empty()) return 0;
  const Fragment& last = fragments.back();
  return last.position + (last.one_position ? 1 : last.length);
}

std::span<const Fragment> ShapedText::FragmentsIn(int from, int to) const {
  // Binary search: a paragraph may have as many fragments as letters.
  const auto first = std::partition_point(
      fragments.begin(), fragments.end(),
      [&](const Fragment& fragment) { return fragment.start + fragment.length <= from; });
  const auto last = std::partition_point(
      first, fragments.end(), [&](const Fragment& fragment) { return fragment.start < to; });
  return {first, last};
}

void TextLine::Draw(QPainter& painter, QPointF corner) const {
  if (frame) DrawFrame(painter, corner);
  for (const double bar : bars) {
    painter.fillRect(QRectF(corner.x() + bar, corner.y(), 10, height), Qt::black);
  }
  for (const Piece& piece : pieces) {
    const QPointF origin(corner.x() + piece.x, corner.y() + baseline);
    if (const auto* text = std::get_if<PlacedText>(&piece.content)) {
      DrawText(painter, QPointF(corner.x(), origin.y()), *text);
    } else if (const auto* tab = std::get_if<PlacedTab>(&piece.content)) {
      DrawTab(painter, origin, *tab);
    } else if (const auto* picture = std::get_if<PlacedPicture>(&piece.content)) {
      DrawPicture(painter,
                  QRectF(origin.x(), origin.y() - picture->height, picture->width, picture->height),
                  *picture);
    }
  }
}

void TextLine::SetEnds(bool begins_column, bool ends_column) {
  cut_above_ = begins_column && !closed_above;
  cut_below_ = ends_column && !closed_below;
}

// Where a column cuts the frame, it is closed outside of the lines, which have no room for that.
void TextLine::DrawFrame(QPainter& painter, QPointF corner) const {
  const double above = cut_above_ ? frame->top_edge.Room() : 0;
  const double below = cut_below_ ? frame->bottom_edge.Room() : frame_below;
  const double left = frame->left - frame->left_edge.Room();
  const double width = frame->right + frame->right_edge.Room() - left;
  const QRectF area(corner.x() + left, corner.y() - above, width, above + height + below);
  if (frame->shading.isValid()) painter.fillRect(area, frame->shading);
  BoxRules rules{{}, frame->left_edge.rule, {}, frame->right_edge.rule};
  if (closed_above || cut_above_) rules.top = frame->top_edge.rule;
  if (closed_below || cut_below_) rules.bottom = frame->bottom_edge.rule;
  DrawBox(painter, rules, area);
  if (!parted_above || cut_above_) return;
  const double inner_left = area.left() + frame->left_edge.rule.Thickness();
  const double inner_right = area.right() - frame->right_edge.rule.Thickness();
  const Rule& between = frame->between.rule;
  DrawHorizontal(painter, between, inner_left, area.top() + between.Thickness() / 2,
                 inner_right - inner_left);
}

// `origin` is the left edge of the text area on the baseline: the line knows its own x.
void TextLine::DrawText(QPainter& painter, QPointF origin, const PlacedText& text) const {
  const QTextLine& line = text.line;
  const int from = line.textStart(), to = from + line.textLength();
  const auto each_fragment = [&](auto&& draw) {
    for (const Fragment& fragment : text.text->FragmentsIn(from, to)) {
      const int first = std::max(from, fragment.start);
      const int stop = std::min(to, fragment.start + fragment.length);
      if (first >= stop) continue;
      const auto [left, right] = Stretch(line, first, stop);
      draw(*fragment.format, first, stop, origin.x() + left, right - left);
    }
  };
  each_fragment([&](const richtext::CharFormat& format, int, int, double x, double width) {
    Highlight(painter, QRectF(x, origin.y() - line.ascent(), width, line.ascent() + line.descent()),
              format);
  });
  painter.setPen(text.text->colour);
  line.draw(&painter, QPointF(origin.x(), origin.y() - line.ascent()));
  each_fragment(
      [&](const richtext::CharFormat& format, int first, int stop, double x, double width) {
        if (format.underline != Underline::kWords) {
          Decorate(painter, QPointF(x, origin.y()), width, format);
          return;
        }
        const QString shown = text.text->layout.text();
        for (int word = first; word < stop;) {
          int next = word + 1;
          const bool blank = shown[word].isSpace();
          while (next < stop && shown[next].isSpace() == blank) ++next;
          const auto [left, right] = Stretch(line, word, next);
          richtext::CharFormat part = format;
          if (blank) part.underline = Underline::kNone;
          Decorate(painter, QPointF(origin.x() + left, origin.y()), right - left, part);
          word = next;
        }
      });
}

void TextLine::DrawTab(QPainter& painter, QPointF origin, const PlacedTab& tab) const {
  const FontUse& use = fonts_->Use(*tab.format);
  Highlight(painter,
            QRectF(origin.x(), origin.y() - use.ascent, tab.width, use.ascent + use.descent),
            *tab.format);
  Decorate(painter, origin, tab.width, *tab.format);
  if (tab.leader == "ul" || tab.leader == "th") {
    DrawUnderline(painter, origin.x(), origin.y() + use.size / 10, tab.width, use.size, use.colour,
                  tab.leader == "th" ? Underline::kThick : Underline::kSingle);
    return;
  }
  const char mark = tab.leader == "dot"    ? '.'
                    : tab.leader == "mdot" ? '\xB7'
                    : tab.leader == "hyph" ? '-'
                    : tab.leader == "eq"   ? '='
                                           : '\0';
  if (mark == '\0') return;
  const double step = QFontMetricsF(use.font).horizontalAdvance(QLatin1Char(mark));
  // On a grid of the line's start, so that the leaders of neighbouring lines stand in columns.
  const double first = std::ceil(origin.x() / step) * step;
  const int count = static_cast<int>((origin.x() + tab.width - first) / step);
  if (step <= 0 || count <= 0) return;
  painter.setPen(use.colour);
  painter.setFont(use.font);
  painter.drawText(QPointF(first, origin.y()), QString(count, QLatin1Char(mark)));
}

void TextLine::Highlight(QPainter& painter, const QRectF& area,
                         const richtext::CharFormat& format) const {
  if (format.highlight > 0) painter.fillRect(area, fonts_->Colour(format.highlight));
}

void TextLine::Decorate(QPainter& painter, QPointF origin, double width,
                        const richtext::CharFormat& format) const {
  if (format.underline == Underline::kNone && !format.strike) return;
  const FontUse& use = fonts_->Use(format);
  DrawUnderline(painter, origin.x(), origin.y() + use.size / 9, width, use.size, use.colour,
                format.underline);
  if (format.strike) {
    HorizontalRule(painter, origin.x(), origin.y() - MiddleOfLetters(format, use), width,
                   use.size / 18, use.colour);
  }
}

}  // namespace tenora::printing
