// What has a place of its own on the page. Lengths are twips.
#pragma once

#include <QPainter>
#include <QPointF>
#include <memory>

#include "platform/richtext/document.h"

namespace tenora::printing {

class FloatContent {
 public:
  virtual ~FloatContent() = default;
  virtual void Draw(QPainter& painter, QPointF corner) const = 0;
};

// Between what floats and the text beside it.
inline constexpr double kUsualGap = 115;

struct Floating {
  double x = 0, y = 0;  // from the left top corner of the strip it belongs to
  bool x_on_paper = false, y_on_paper = false;  // from the paper's instead, the painter's origin
  double width = 0, height = 0;
  double gap = kUsualGap;  // to the text beside it
  bool behind = false;     // the text
  int layer = 0;           // what is in a higher one is drawn later
  richtext::ShapeBox::Wrap wrap = richtext::ShapeBox::Wrap::kNone;
  std::shared_ptr<const FloatContent> content;

  QPointF Corner(QPointF strip) const {
    return {x + (x_on_paper ? 0 : strip.x()), y + (y_on_paper ? 0 : strip.y())};
  }
};

}  // namespace tenora::printing
