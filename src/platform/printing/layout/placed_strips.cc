#include "platform/printing/layout/placed_strips.h"

#include <algorithm>

namespace tenora::printing {

void SortByLayer(std::vector<PlacedFloating>* floating) {
  std::stable_sort(floating->begin(), floating->end(),
                   [](const PlacedFloating& one, const PlacedFloating& other) {
                     return one.floating->layer < other.floating->layer;
                   });
}

void PlacedStrips::Draw(QPainter& painter) {
  std::vector<PlacedFloating> floating;
  for (const Placed& one : placed_) one.strip->CollectFloating(one.corner, &floating);
  SortByLayer(&floating);
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
