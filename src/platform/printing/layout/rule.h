// The lines that borders are drawn with.
#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>

#include "platform/printing/fonts.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

struct Rule {
  double width = 0;  // twips, as the border has it; 0 for none
  QColor colour;
  richtext::Border::Kind kind = richtext::Border::Kind::kSingle;

  // Of all its lines and the gaps between them.
  double Thickness() const;
};

Rule RuleOf(const richtext::Border& border, const Fonts& fonts);

// `y` and `x` are the middle of the rule, whose outermost line is the upper or the left one.
void DrawHorizontal(QPainter& painter, const Rule& rule, double x, double y, double length);
void DrawVertical(QPainter& painter, const Rule& rule, double x, double y, double length);

struct BoxRules {
  Rule top, left, bottom, right;
};

// Rules along the inside of a rectangle's edges, the outermost lines of each on the edge.
void DrawBox(QPainter& painter, const BoxRules& rules, const QRectF& outside);

}  // namespace tenora::printing
