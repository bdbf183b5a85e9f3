// The shape of a table while rows, columns and cells come, go, merge and split, apart from the
// QTextTable that shows it: Qt loses its way when it undoes such changes where cells are merged.
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
  // The grid's cells stand where they are shown; a row may have none in some columns.
  TableShape(const richtext::Table& table, const TableGrid& grid);

  // A row or column beside the range, like the one of the range that it stands by. The table stays
  // as wide as it is.
  void InsertRow(const CellRange& range, Side side);
  void InsertColumn(const CellRange& range, Side side);
  void RemoveRows(const CellRange& range);
  void RemoveColumns(const CellRange& range);
  // Makes one cell of those in the range, with the text of all; false where they are one already
  // or form no rectangle. The range grows to take whole cells.
  bool Merge(CellRange* range);
  // Parts merged cells again, the text staying in the first; halves a cell that was never merged.
  // False where that would be too narrow.
  bool Split(const CellRange& range);

  int rows() const { return static_cast<int>(rows_.size()); }
  int columns() const { return static_cast<int>(edges_.size()) - 1; }
  // The rows that nothing changed are as they were. Without rows or columns no row is left.
  std::vector<richtext::Row> Rows() const;
  // Where the text of the cell at this place begins, counted from the table's start.
  int PositionOf(int row, int column) const;

 private:
  struct DefinedCell {
    richtext::Cell cell;
    std::string words;  // of its definition, but for its merging and its edge
  };
  // A cell as it is shown.
  struct Piece {
    int row = 0, rows = 1, column = 0, columns = 1;
    std::vector<std::vector<DefinedCell>> parts;  // for each row the cells merged across

    bool Covers(int at_row, int at_column) const;
  };
  struct RowHead {
    richtext::Row row;  // without cells
    std::string words;  // of its definition, but for its left edge
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
