// The geometry of a table. In a letter each row has its own cell edges; in Qt a table has one set
// of columns, and cells may span several of them.
#pragma once

#include <vector>

#include "platform/richtext/document.h"

namespace tenora {

// The columns that a cell spans. `count` cells of the row that are merged across are one GridCell.
struct GridCell {
  int column = 0, span = 1;
  int first = 0, count = 1;
  int rows = 1;          // that it spans
  bool absent = false;   // the row has no cell there
  bool covered = false;  // by a cell above
};

struct TableGrid {
  std::size_t first_row = 0;
  std::vector<int> edges;  // of the columns, twips
  std::vector<std::vector<GridCell>> rows;

  int columns() const { return static_cast<int>(edges.size()) - 1; }
};

// One grid for the whole table, or several where the rows share too few edges.
std::vector<TableGrid> MakeGrids(const richtext::Table& table);

}  // namespace tenora
