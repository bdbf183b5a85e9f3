// Lays out the rows of a table. Lengths are twips.
#pragma once

#include <cstddef>
#include <optional>

#include "platform/printing/layout/paragraph_layout.h"
#include "platform/printing/layout/strip.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

// Tables nested more deeply are left out.
inline constexpr int kDeepestTable = 16;

struct TablePlace {
  double width = 0;  // of the text area
  int position = 0;  // of the first row's first character
  int depth = 0;     // tables around this one
  // To the right of where the rows stand by themselves, whatever their alignment.
  std::optional<double> shift = std::nullopt;
};

// The number of rows from `first` on that vertically merged cells tie together.
std::size_t RowsTogether(const richtext::Table& table, std::size_t first);

// One strip per row. Rows tied together stay on one page where they fit.
BlockStrips LayOutRows(LayoutContext& context, const richtext::Table& table, std::size_t first,
                       std::size_t count, const TablePlace& place);

}  // namespace tenora::printing
