#include "platform/printing/layout/taken_areas.h"

#include <algorithm>

namespace tenora::printing {
namespace {

constexpr double kSlack = 1;         // rounding
constexpr double kNarrowest = 1440;  // that text beside something needs
// On one page; text makes no room for more, since every line looks at all of them.
constexpr std::size_t kMostAreas = 64;

}  // namespace

void TakenAreas::Add(const Floating& floating, QPointF corner) {
  using Wrap = richtext::ShapeBox::Wrap;
  if (floating.wrap == Wrap::kNone || floating.height <= 0) return;
  if (areas_.size() >= kMostAreas) return;
  if (!origin_ && (floating.x_on_paper || floating.y_on_paper)) return;
  const QPointF origin = origin_.value_or(QPointF());
  const QPointF at = floating.Corner(corner + origin) - origin;
  areas_.push_back({at.x(), at.x() + floating.width, at.y(), at.y() + floating.height,
                    floating.wrap == Wrap::kAboveAndBelow, floating.gap});
}

bool TakenAreas::RoomBeside(double taken, double whole) { return whole - taken >= kNarrowest; }

double TakenAreas::FreeBelow(const Strip& strip, QPointF corner) const {
  double top = corner.y();
  const double left = corner.x() + strip.ink_left, right = corner.x() + strip.ink_right;
  for (bool moved = !areas_.empty(); std::exchange(moved, false);) {
    for (const Area& area : areas_) {
      if (area.bottom <= top + kSlack || area.top >= top + strip.height - kSlack) continue;
      const bool beside =
          left >= right || right <= area.left + kSlack || left >= area.right - kSlack;
      if (beside && !area.whole_width) continue;
      top = area.bottom;
      moved = true;
    }
  }
  return top;
}

std::pair<double, double> TakenAreas::Beside(double left, double right, double y,
                                             double height) const {
  double from = left, to = right;
  for (const Area& area : areas_) {
    if (area.whole_width || area.bottom <= y + kSlack || area.top >= y + height - kSlack) continue;
    if (area.right <= from || area.left >= to) continue;
    if (area.left - from > to - area.right) {
      to = area.left - area.gap;
    } else {
      from = area.right + area.gap;
    }
  }
  return to - from < std::min(kNarrowest, right - left) ? std::pair(left, right)
                                                        : std::pair(from, to);
}

void MakeRoom(Strips* strips) {
  const auto floats = [](const auto& strip) { return !strip->floating.empty(); };
  if (std::none_of(strips->begin(), strips->end(), floats)) return;
  TakenAreas taken;
  double y = 0;
  for (const auto& strip : *strips) {
    y += strip->space_before;
    for (const Floating& one : strip->floating) taken.Add(one, QPointF(0, y));
    const double top = taken.FreeBelow(*strip, QPointF(0, y));
    strip->MoveBelowFloating(top - y);
    strip->space_before += top - y;
    y = top + strip->height + strip->space_after;
  }
}

}  // namespace tenora::printing
