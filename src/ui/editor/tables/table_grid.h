// The geometry of a table. A letter's rows each have cell edges of their own; Qt's tables have one
// set of columns that cells may span.
#pragma once

#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora {

// The columns that a cell takes; `count` cells of the row that are merged across count as one.
struct GridCell {
  int column = 0, span = 1;
  int first = 0, count = 1;
  int rows = 1;          // that it covers
  bool absent = false;   // the row has no cell there
  bool covered = false;  // by a cell above
};

struct TableGrid {
  std::size_t first_row = 0;
  std::vector<int> edges;  // of the columns, twips
  std::vector<std::vector<GridCell>> rows;

  int columns() const { return static_cast<int>(edges.size()) - 1; }
};

// One grid for the whole table; several where the rows have too little in common.
std::vector<TableGrid> MakeGrids(const richtext::Table& table);

// The definition of a row as RTF source, made from its members.
std::string RowSource(const richtext::Row& row);

// The words of a cell's definition that tell how it is merged with others.
std::string CellMergeWords(const richtext::Cell& cell);

// A table of equal columns with lines around its cells.
richtext::Table NewTable(int rows, int columns, int width, const richtext::CharFormat& format);

}  // namespace tenora
