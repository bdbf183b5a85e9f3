// The size of the paper that pages are printed on, and which way it is turned.
#pragma once

namespace tenora::printing {

// The paper's size and the margins that the device cannot print on, in twips.
struct Paper {
  int width = 0, height = 0;
  int offset_x = 0, offset_y = 0;
};

// As the printer is set, or with the longer side at the bottom.
enum class Orientation { kAsPrinterIsSet, kLandscape };

Paper Oriented(Paper paper, Orientation orientation);

// A4, or Letter where LC_ALL, LC_PAPER or LANG names a country that uses it; printable to the edge.
Paper RegionalPaper();

}  // namespace tenora::printing
