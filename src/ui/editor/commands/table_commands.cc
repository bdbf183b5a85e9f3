#include "ui/editor/commands/table_commands.h"

#include <QTextTable>
#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "ui/editor/document/letter_reader.h"
#include "ui/editor/document/letter_update.h"
#include "ui/editor/tables/table_grid.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Row;
using richtext::Table;

constexpr int kPlainWidth = 9000;  // twips of a table where lines end at the window

CellRange SelectedCells(const QTextCursor& cursor, const QTextTable& table) {
  CellRange range;
  if (cursor.hasComplexSelection()) {
    cursor.selectedTableCells(&range.row, &range.rows, &range.column, &range.columns);
    return range;
  }
  const QTextTableCell cell = table.cellAt(cursor);
  return {cell.row(), cell.rowSpan(), cell.column(), cell.columnSpan()};
}

// Gives the table other rows; true once it was found. Without rows it goes.
bool ReplaceRows(const Table* table, std::size_t first, std::size_t count, std::vector<Row>* rows,
                 std::vector<Block>* blocks) {
  for (auto block = blocks->begin(); block != blocks->end(); ++block) {
    auto* const found = std::get_if<std::shared_ptr<Table>>(&*block);
    if (found == nullptr) continue;
    const auto changed = std::make_shared<Table>(**found);
    if (found->get() == table) {
      const auto begin = changed->rows.begin() + static_cast<std::ptrdiff_t>(first);
      const auto behind = changed->rows.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
      changed->rows.insert(behind, std::make_move_iterator(rows->begin()),
                           std::make_move_iterator(rows->end()));
      if (changed->rows.empty())
        blocks->erase(block);
      else
        *found = changed;
      return true;
    }
    for (Row& row : changed->rows) {
      for (richtext::Cell& cell : row.cells) {
        if (!ReplaceRows(table, first, count, rows, &cell.blocks)) continue;
        *found = changed;
        return true;
      }
    }
  }
  return false;
}

// Runs a change of the shape of the caret's table as one undo step. The change gets the shape and
// the selected cells, moves the range to where the caret is to stand, and tells whether it changed
// anything.
template <class Change>
void ChangeTable(LetterEditor& editor, const Change& change) {
  editor.ShowBox();
  const QTextCursor cursor = editor.textCursor();
  const QTextTable* const table = cursor.currentTable();
  if (table == nullptr) return;
  LetterReader reader(editor.formats());
  reader.LookFor(table);
  std::vector<Block> blocks = reader.Read(*editor.document());
  const LetterReader::FoundTable& found = reader.Found();
  if (found.table == nullptr) return;
  CellRange cells = SelectedCells(cursor, *table);
  TableShape shape(*found.table, found.grid);
  if (!change(shape, cells)) return;
  int caret = reader.positions().ToBox(table->cellAt(0, 0).firstPosition());
  std::vector<Row> rows = shape.Rows();
  if (!rows.empty()) {
    caret += shape.PositionOf(std::clamp(cells.row, 0, shape.rows() - 1),
                              std::clamp(cells.column, 0, shape.columns() - 1));
  }
  const std::vector<Block> before = blocks;
  ReplaceRows(found.table, found.grid.first_row, found.grid.rows.size(), &rows, &blocks);
  UpdateLetter(editor.document(), &editor.formats(), before, reader.positions(), blocks);
  editor.box().Select(caret, 0);
}

// False where a selected row, or column, has protected text.
bool MayRemove(LetterEditor& editor, bool rows) {
  editor.ShowBox();
  const QTextCursor cursor = editor.textCursor();
  const QTextTable* const table = cursor.currentTable();
  if (table == nullptr) return false;
  CellRange range = SelectedCells(cursor, *table);
  if (rows) {
    range.column = 0;
    range.columns = table->columns();
  } else {
    range.row = 0;
    range.rows = table->rows();
  }
  for (int i = 0; i < range.rows * range.columns; ++i) {
    const QTextTableCell cell =
        table->cellAt(range.row + i / range.columns, range.column + i % range.columns);
    if (!editor.MayChange(cell.firstPosition(), cell.lastPosition())) return false;
  }
  return true;
}

void AppendRow(LetterEditor& editor) {
  ChangeTable(editor, [](TableShape& shape, CellRange& cells) {
    cells = {.row = shape.rows() - 1};
    shape.InsertRow(cells, Side::kAfter);
    ++cells.row;
    return true;
  });
}

}  // namespace

bool CaretInTable(const LetterEditor& editor) {
  return editor.textCursor().currentTable() != nullptr;
}

void MoveToCell(LetterEditor& editor, Side side) {
  QTextCursor cursor = editor.textCursor();
  const QTextTable* table = cursor.currentTable();
  if (table == nullptr) return;
  const QTextTableCell here = table->cellAt(cursor);
  const int columns = table->columns(), step = side == Side::kAfter ? 1 : -1;
  const auto is_stop = [&](int row, int column) {
    const QTextTableCell cell = table->cellAt(row, column);
    const auto data = SharedProperty<CellData>(cell.format(), kCellProperty);
    return cell.row() == row && cell.column() == column &&
           (data == nullptr || !data->parts.empty());
  };
  for (int i = here.row() * columns + here.column() + step;; i += step) {
    if (i < 0) return;
    // From the last cell into a new row.
    if (i >= table->rows() * columns) return AppendRow(editor);
    if (!is_stop(i / columns, i % columns)) continue;
    return editor.setTextCursor(table->cellAt(i / columns, i % columns).firstCursorPosition());
  }
}

void InsertTable(LetterEditor& editor, int rows, int columns) {
  const PaperLook& paper = editor.Paper();
  const int width = paper.wraps_at_page ? paper.width - paper.left - paper.right : kPlainWidth;
  const richtext::CharFormat format = editor.CharAtCaret();
  std::vector<Block> blocks;
  blocks.emplace_back(
      std::make_shared<Table>(NewTable(rows, columns, std::max(width, 1440), format)));
  richtext::Paragraph behind;
  behind.format = editor.ParagraphAtCaret();
  behind.mark = format;
  blocks.emplace_back(std::move(behind));
  const int place = editor.textCursor().selectionStart();
  editor.InsertBlocks(blocks);
  // The caret into the first cell.
  QTextCursor cursor = editor.textCursor();
  cursor.setPosition(place + 1);
  editor.setTextCursor(cursor);
}

void InsertTableRow(LetterEditor& editor, Side side) {
  ChangeTable(editor, [side](TableShape& shape, CellRange& cells) {
    shape.InsertRow(cells, side);
    if (side == Side::kAfter) cells.row += cells.rows;
    return true;
  });
}

void InsertTableColumn(LetterEditor& editor, Side side) {
  ChangeTable(editor, [side](TableShape& shape, CellRange& cells) {
    shape.InsertColumn(cells, side);
    if (side == Side::kAfter) cells.column += cells.columns;
    return true;
  });
}

void RemoveTableRows(LetterEditor& editor) {
  if (!MayRemove(editor, true)) return;
  ChangeTable(editor, [](TableShape& shape, const CellRange& cells) {
    shape.RemoveRows(cells);
    return true;
  });
}

void RemoveTableColumns(LetterEditor& editor) {
  if (!MayRemove(editor, false)) return;
  ChangeTable(editor, [](TableShape& shape, const CellRange& cells) {
    shape.RemoveColumns(cells);
    return true;
  });
}

void MergeTableCells(LetterEditor& editor) {
  ChangeTable(editor, [](TableShape& shape, CellRange& cells) { return shape.Merge(&cells); });
}

void MergeCellAcross(LetterEditor& editor) {
  ChangeTable(editor, [](TableShape& shape, CellRange& cells) {
    ++cells.columns;
    return shape.Merge(&cells);
  });
}

void MergeCellDown(LetterEditor& editor) {
  ChangeTable(editor, [](TableShape& shape, CellRange& cells) {
    ++cells.rows;
    return shape.Merge(&cells);
  });
}

void SplitTableCell(LetterEditor& editor) {
  ChangeTable(editor, [](TableShape& shape, const CellRange& cells) { return shape.Split(cells); });
}

}  // namespace tenora
