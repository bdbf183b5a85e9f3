// The size of the paper that pages are printed on, and which way it is turned.
#pragma once

#include "platform/richtext/document.h"

namespace tenora::printing {

// The paper's size and the margins that the device cannot print on, in twips.
struct Paper {
  int width = 0, height = 0;
  int offset_x = 0, offset_y = 0;

  bool operator==(const Paper&) const = default;
};

// As the printer is set, or with the longer side at the bottom.
enum class Orientation { kAsPrinterIsSet, kLandscape };

Paper Oriented(Paper paper, Orientation orientation);

// What a page of a letter is printed on: the printer's paper or, where `any_size` says that the
// printer takes every size, the paper that the letter names. It lies across where either says so.
Paper PaperFor(const richtext::PageSetup& page, const Paper& printers, bool any_size);

// A4, or Letter where LC_ALL, LC_PAPER or LANG names a country that uses it; printable to the edge.
Paper RegionalPaper();

}  // namespace tenora::printing
