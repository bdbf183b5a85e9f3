// Commands on the table that the caret stands in.
#pragma once

#include "ui/editor/letter_editor.h"
#include "ui/editor/tables/table_shape.h"

namespace tenora {

bool CaretInTable(const LetterEditor& editor);
// As wide as the text, behind the caret's paragraph where that holds text.
void InsertTable(LetterEditor& editor, int rows, int columns);

// Puts the caret into the next cell, or the one before; from the last into a new row.
void MoveToCell(LetterEditor& editor, Side side);
// A row or column like the caret's.
void InsertTableRow(LetterEditor& editor, Side side);
void InsertTableColumn(LetterEditor& editor, Side side);
// The selected ones; the last takes the table with it.
void RemoveTableRows(LetterEditor& editor);
void RemoveTableColumns(LetterEditor& editor);
// Makes one cell of the selected ones, or of the caret's and the one beside it or below.
void MergeTableCells(LetterEditor& editor);
void MergeCellAcross(LetterEditor& editor);
void MergeCellDown(LetterEditor& editor);
// Parts a merged cell again; halves another one.
void SplitTableCell(LetterEditor& editor);

}  // namespace tenora
