// How a picture stands in a letter: its size, and how the text goes around it.
#pragma once

#include <optional>

#include "platform/richtext/document.h"

namespace tenora::richtext {

enum class PicturePlace {
  kInLine,  // as a letter does
  kLeft,    // at the left of the text, which goes on beside it
  kRight,
  kAsSet,  // a place of its own that a word processor has set
};

struct PictureLook {
  int width = 0, height = 0;  // twips
  PicturePlace place = PicturePlace::kInLine;

  bool operator==(const PictureLook&) const = default;
};

// Nothing for a run without a picture, and for one whose look is not its own: an embedded object's,
// one of a group of shapes, one with text over it.
std::optional<PictureLook> LookOf(const Run& run);
// The size that the picture has by its own resolution, made smaller where it exceeds a page's text;
// as it is where it names none. The run has a look.
PictureLook OwnLookOf(const Run& run);
// The run with its picture looking so; cropping is kept. The run has a look. A place other than the
// one it has makes a new shape without the border and the like of the old one; kAsSet leaves the
// place as it is. `text_width`: of the lines around it, twips; some word processors go by that
// alone.
Run WithLook(const Run& run, const PictureLook& look, int text_width);

}  // namespace tenora::richtext
