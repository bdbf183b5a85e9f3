// The strips of a page, or of a part of it, until they are drawn: what floats may be behind or over
// any of them.
#pragma once

#include <QPainter>
#include <QPointF>
#include <memory>
#include <utility>
#include <vector>

#include "platform/printing/layout/strip.h"

namespace tenora::printing {

// Puts what floats in the order in which it is drawn.
void SortByLayer(std::vector<PlacedFloating>* floating);

class PlacedStrips {
 public:
  void Add(std::shared_ptr<const Strip> strip, QPointF corner) {
    placed_.push_back({std::move(strip), corner});
  }
  // Draws them and forgets them.
  void Draw(QPainter& painter);

 private:
  struct Placed {
    std::shared_ptr<const Strip> strip;
    QPointF corner;
  };
  std::vector<Placed> placed_;
};

}  // namespace tenora::printing
