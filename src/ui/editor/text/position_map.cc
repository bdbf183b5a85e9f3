#include "ui/editor/text/position_map.h"

#include <algorithm>

namespace tenora {

void PositionMap::Add(int box_length, int qt_length) {
  if (!spans_.empty()) {
    Span& last = spans_.back();
    if (box_length == qt_length && last.box_length == last.qt_length) {
      last.box_length += box_length;
      last.qt_length += qt_length;
      return;
    }
    spans_.push_back({last.box + last.box_length, last.qt + last.qt_length, box_length, qt_length});
    return;
  }
  spans_.push_back({0, 0, box_length, qt_length});
}

int PositionMap::ToQt(int box) const {
  if (spans_.empty()) return 0;
  // The last span that begins there: a caret goes after what is not in the letter.
  auto span = std::upper_bound(spans_.begin(), spans_.end(), box,
                               [](int position, const Span& s) { return position < s.box; });
  --span;
  const int inside = box - span->box;
  if (span->box_length == span->qt_length) return span->qt + std::min(inside, span->qt_length);
  return inside == 0 && span->box_length > 0 ? span->qt : span->qt + span->qt_length;
}

int PositionMap::ToBox(int qt) const {
  if (spans_.empty()) return 0;
  auto span = std::upper_bound(spans_.begin(), spans_.end(), qt,
                               [](int position, const Span& s) { return position < s.qt; });
  --span;
  const int inside = qt - span->qt;
  if (span->box_length == span->qt_length) return span->box + std::min(inside, span->box_length);
  return inside == 0 && span->qt_length > 0 ? span->box : span->box + span->box_length;
}

}  // namespace tenora
