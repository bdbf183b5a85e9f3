// Setting rows of a table. Lengths are twips.
#pragma once

#include <cstddef>

#include "platform/printing/layout/paragraph_layout.h"
#include "platform/printing/layout/strip.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

// Tables within tables beyond this depth are left out.
inline constexpr int kDeepestTable = 16;

struct TablePlace {
  double width = 0;  // of the text area
  int position = 0;  // of the first row's first character
  int depth = 0;     // tables around this one
};

// How many rows from `first` cells merged downwards tie together.
std::size_t RowsTogether(const richtext::Table& table, std::size_t first);

// One strip a row. Rows tied together stay together where a page can hold them.
BlockStrips SetRows(LayoutContext& context, const richtext::Table& table, std::size_t first,
                    std::size_t count, const TablePlace& place);

}  // namespace tenora::printing
