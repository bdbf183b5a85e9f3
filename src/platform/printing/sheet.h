// The sheet that pages are printed on.
#pragma once

#include <utility>

namespace tenora::printing {

// A sheet and what of its edges the device cannot print on, in twips.
struct Paper {
  int width = 0, height = 0;
  int offset_x = 0, offset_y = 0;
};

// How a sheet lies: as the printer holds it, or with its longer side at the bottom.
enum class Sheet { kAsHeld, kLandscape };

inline Paper Laid(Paper paper, Sheet sheet) {
  if (sheet == Sheet::kLandscape && paper.width < paper.height) {
    std::swap(paper.width, paper.height);
    std::swap(paper.offset_x, paper.offset_y);
  }
  return paper;
}

}  // namespace tenora::printing
