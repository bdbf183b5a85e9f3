// The shape of a table while rows and columns are inserted and removed and cells are merged and
// split. It is independent of the QTextTable that shows it, since Qt's undo of such changes loses
// cells where cells are merged.
#pragma once

#include <string>
#include <vector>

#include "platform/richtext/document.h"
#include "ui/editor/tables/table_grid.h"

namespace tenora {

// Cells by the grid's rows and columns.
struct CellRange {
  int row = 0, rows = 1, column = 0, columns = 1;
};

enum class Side { kBefore, kAfter };

class TableShape {
 public:
  // The grid says where each cell is shown; a row may have no cell in some columns.
  TableShape(const richtext::Table& table, const TableGrid& grid);

  // Inserts a row or column beside the range, with the formats of its neighbour in the range. The
  // table keeps its width.
  void InsertRow(const CellRange& range, Side side);
  void InsertColumn(const CellRange& range, Side side);
  void RemoveRows(const CellRange& range);
  void RemoveColumns(const CellRange& range);
  // Makes one cell of those in the range, with the text of all. The range grows to whole cells.
  // False where it is a single cell already or has places without a cell.
  bool Merge(CellRange* range);
  // Splits a merged cell into its original cells, with the text in the first, and any other cell
  // into halves. False where these would be too narrow.
  bool Split(const CellRange& range);

  int rows() const { return static_cast<int>(rows_.size()); }
  int columns() const { return static_cast<int>(edges_.size()) - 1; }
  // Unchanged rows keep their definitions. Empty where no row or no column is left.
  std::vector<richtext::Row> Rows() const;
  // The position of the text of the cell at this place, relative to the table's start.
  int PositionOf(int row, int column) const;

 private:
  struct DefinedCell {
    richtext::Cell cell;
    std::string words;  // of its definition, without those for merging and its edge
  };
  // A cell as it is shown.
  struct Piece {
    int row = 0, rows = 1, column = 0, columns = 1;
    std::vector<std::vector<DefinedCell>> parts;  // for each row the cells merged across

    bool Covers(int at_row, int at_column) const;
  };
  struct RowHead {
    richtext::Row row;  // without cells
    std::string words;  // of its definition, without that for its left edge
    bool changed = false;
  };

  const Piece* At(int row, int column) const;
  std::vector<const Piece*> InRow(int row) const;
  bool GrowToWholeCells(CellRange* range) const;
  void TouchRows(int first, int count);
  void PartPiece(const Piece& piece, std::vector<Piece>* parts) const;
  void InsertEdge(int column, int position);
  richtext::Row MakeRow(int row) const;

  std::vector<int> edges_;
  std::vector<RowHead> rows_;
  std::vector<Piece> pieces_;
};

}  // namespace tenora
