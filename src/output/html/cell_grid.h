// A table as HTML counts its cells: in columns and rows that cells can span. RTF gives each row its
// own cell edges instead, and says of a merged cell's parts that they continue the one before.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::html {

struct GridCell {
  const richtext::Cell* cell = nullptr;  // null for a gap ahead of a row's first cell
  std::size_t column = 0;
  std::size_t columns = 1, rows = 1;  // that it spans
  bool covered = false;               // by a cell above: not shown
};

struct CellGrid {
  // The edges of the columns, twips from the left edge of the text; one more than columns.
  std::vector<int> edges;
  std::vector<std::vector<GridCell>> rows;

  std::size_t columns() const { return edges.size() - 1; }
  int Width(const GridCell& cell) const {
    return edges[cell.column + cell.columns] - edges[cell.column];
  }
  int width() const { return edges.back() - edges.front(); }
};

// Edges that are next to each other are one. Points into the table.
CellGrid GridOf(const richtext::Table& table);

}  // namespace tenora::html
