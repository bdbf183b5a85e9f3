// Commands on the table that the caret is in. Each is one undo step.
#pragma once

#include <functional>

#include "ui/editor/commands/format_commands.h"
#include "ui/editor/document/edited_letter.h"
#include "ui/editor/tables/table_shape.h"

namespace tenora {

class TableCommands {
 public:
  // Both outlive this object.
  TableCommands(EditedLetter& letter, FormatCommands& formats)
      : letter_(letter), formats_(formats) {}

  bool CaretInTable() const;
  // A new table, after the caret's paragraph where that holds text; `width` is in twips.
  void InsertTable(int rows, int columns, int width);
  // Puts the caret into the next cell, or the one before; from the last into a new row.
  void MoveToCell(Side side);
  // A row or column like the caret's.
  void InsertRow(Side side);
  void InsertColumn(Side side);
  // The selected ones, unless they hold protected text; the last takes the table with it.
  void RemoveRows();
  void RemoveColumns();
  // Makes one cell of the selected ones, or of the caret's and the one beside it or below.
  void MergeSelected();
  void MergeAcross();
  void MergeDown();
  // Splits a merged cell into its parts, and any other cell into halves.
  void SplitCell();

 private:
  // Gets the shape of the caret's table and the selected cells, moves the range to where the caret
  // is to be, and returns whether it changed anything.
  using Change = std::function<bool(TableShape&, CellRange&)>;
  void ChangeTable(const Change& change);
  // False where a selected row, or column, has protected text.
  bool MayRemove(bool rows);
  void AppendRow();

  EditedLetter& letter_;
  FormatCommands& formats_;
};

}  // namespace tenora
