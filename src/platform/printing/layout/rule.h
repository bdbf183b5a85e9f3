// The lines that borders are drawn with.
#pragma once

#include <QColor>
#include <QPainter>

#include "platform/printing/fonts.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

struct Rule {
  double width = 0;  // twips, of each line; 0 for none
  QColor colour;
  richtext::Border::Kind kind = richtext::Border::Kind::kSingle;

  // Of all its lines and the gaps between them.
  double Thickness() const;
};

Rule RuleOf(const richtext::Border& border, const Fonts& fonts);

// `y` and `x` are the middle of the rule.
void DrawHorizontal(QPainter& painter, const Rule& rule, double x, double y, double length);
void DrawVertical(QPainter& painter, const Rule& rule, double x, double y, double length);

}  // namespace tenora::printing
