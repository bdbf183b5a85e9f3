#include "platform/printing/layout/placed_strips.h"

namespace tenora::printing {

void PlacedStrips::Draw(QPainter& painter) {
  std::vector<PlacedFloating> floating;
  for (const Placed& one : placed_) one.strip->CollectFloating(one.corner, &floating);
  const auto draw = [&](bool behind) {
    for (const PlacedFloating& one : floating) {
      if (one.floating->behind == behind) one.floating->content->Draw(painter, one.corner);
    }
  };
  draw(true);
  for (const Placed& one : placed_) one.strip->Draw(painter, one.corner);
  draw(false);
  placed_.clear();
}

}  // namespace tenora::printing
