// The outlines of shapes that are neither rectangles nor ellipses nor plain lines.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// The first values that adjust a kind of shape, as the arrow's head; nothing for its usual ones.
using Adjustments = std::vector<std::optional<int>>;

// The outline of a kind of shape, by the number that word processors give it; nothing for a kind
// that is not known.
std::optional<Outline> OutlineOfType(int type, const Adjustments& adjustments);

// A shape drawn by hand: its points, and how they are joined, as its properties "pVerticies" and
// "pSegmentInfo" have them; without the latter, by lines. The points lie in the box from (left,
// top) to (right, bottom). Nothing where no two points can be read.
struct FreeForm {
  std::string_view points, segments;
  double left = 0, top = 0, right = 21600, bottom = 21600;
};
std::optional<Outline> OutlineOf(const FreeForm& form);

// Mirrors the outline in its box.
void Flip(Outline* outline, bool left_to_right, bool top_to_bottom);

}  // namespace tenora::richtext
