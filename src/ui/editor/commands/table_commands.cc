#include "ui/editor/commands/table_commands.h"

#include <QTextTable>
#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "ui/editor/document/letter_reader.h"
#include "ui/editor/document/letter_update.h"
#include "ui/editor/tables/row_source.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Row;
using richtext::Table;

constexpr int kNarrowestTable = 1440;  // twips

CellRange SelectedCells(const QTextCursor& cursor, const QTextTable& table) {
  CellRange range;
  if (cursor.hasComplexSelection()) {
    cursor.selectedTableCells(&range.row, &range.rows, &range.column, &range.columns);
    return range;
  }
  const QTextTableCell cell = table.cellAt(cursor);
  return {cell.row(), cell.rowSpan(), cell.column(), cell.columnSpan()};
}

// True where the block is the table or holds it, at any depth.
bool Holds(const Block& block, const Table* wanted) {
  const auto* const table = std::get_if<std::shared_ptr<Table>>(&block);
  if (table == nullptr || table->get() == wanted) return table != nullptr;
  return std::ranges::any_of((*table)->rows, [&](const Row& row) {
    return std::ranges::any_of(row.cells, [&](const richtext::Cell& cell) {
      return std::ranges::any_of(cell.blocks,
                                 [&](const Block& inner) { return Holds(inner, wanted); });
    });
  });
}

// Gives the table other rows and returns whether it was found. A table without rows is removed.
bool ReplaceRows(const Table* table, std::size_t first, std::size_t count, std::vector<Row>* rows,
                 std::vector<Block>* blocks) {
  for (auto block = blocks->begin(); block != blocks->end(); ++block) {
    if (!Holds(*block, table)) continue;
    auto* const found = std::get_if<std::shared_ptr<Table>>(&*block);
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

}  // namespace

void TableCommands::ChangeTable(const Change& change) {
  letter_.ShowBox();
  const QTextCursor cursor = letter_.control().textCursor();
  const QTextTable* const table = cursor.currentTable();
  if (table == nullptr) return;
  LetterReader reader(letter_.formats());
  reader.LookFor(table);
  const std::vector<Block> blocks = reader.Read(*letter_.control().document());
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
  const auto holder =
      std::ranges::find_if(blocks, [&](const Block& block) { return Holds(block, found.table); });
  std::vector<Block> changed = {*holder};
  ReplaceRows(found.table, found.grid.first_row, found.grid.rows.size(), &rows, &changed);
  ReplaceBlock(letter_.control().document(), &letter_.formats(), blocks, reader.positions(),
               static_cast<std::size_t>(holder - blocks.begin()), changed);
  letter_.box().Select(caret, 0);
}

bool TableCommands::MayRemove(bool rows) {
  letter_.ShowBox();
  const QTextCursor cursor = letter_.control().textCursor();
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
    if (!letter_.MayChange(cell.firstPosition(), cell.lastPosition())) return false;
  }
  return true;
}

void TableCommands::AppendRow() {
  ChangeTable([](TableShape& shape, CellRange& cells) {
    cells = {.row = shape.rows() - 1};
    shape.InsertRow(cells, Side::kAfter);
    ++cells.row;
    return true;
  });
}

bool TableCommands::CaretInTable() const {
  return letter_.control().textCursor().currentTable() != nullptr;
}

void TableCommands::MoveToCell(Side side) {
  QTextCursor cursor = letter_.control().textCursor();
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
    // After the last cell comes a new row.
    if (i >= table->rows() * columns) return AppendRow();
    if (!is_stop(i / columns, i % columns)) continue;
    return letter_.control().setTextCursor(
        table->cellAt(i / columns, i % columns).firstCursorPosition());
  }
}

void TableCommands::InsertTable(int rows, int columns, int width) {
  const richtext::CharFormat format = formats_.CharAtCaret();
  std::vector<Block> blocks;
  blocks.emplace_back(
      std::make_shared<Table>(NewTable(rows, columns, std::max(width, kNarrowestTable), format)));
  richtext::Paragraph behind;
  behind.format = formats_.ParagraphAtCaret();
  behind.mark = format;
  blocks.emplace_back(std::move(behind));
  const int place = letter_.control().textCursor().selectionStart();
  letter_.InsertBlocks(blocks);
  // The caret goes into the first cell.
  QTextCursor cursor = letter_.control().textCursor();
  cursor.setPosition(place + 1);
  letter_.control().setTextCursor(cursor);
}

void TableCommands::InsertRow(Side side) {
  ChangeTable([side](TableShape& shape, CellRange& cells) {
    shape.InsertRow(cells, side);
    if (side == Side::kAfter) cells.row += cells.rows;
    return true;
  });
}

void TableCommands::InsertColumn(Side side) {
  ChangeTable([side](TableShape& shape, CellRange& cells) {
    shape.InsertColumn(cells, side);
    if (side == Side::kAfter) cells.column += cells.columns;
    return true;
  });
}

void TableCommands::RemoveRows() {
  if (!MayRemove(true)) return;
  ChangeTable([](TableShape& shape, const CellRange& cells) {
    shape.RemoveRows(cells);
    return true;
  });
}

void TableCommands::RemoveColumns() {
  if (!MayRemove(false)) return;
  ChangeTable([](TableShape& shape, const CellRange& cells) {
    shape.RemoveColumns(cells);
    return true;
  });
}

void TableCommands::MergeSelected() {
  ChangeTable([](TableShape& shape, CellRange& cells) { return shape.Merge(&cells); });
}

void TableCommands::MergeAcross() {
  ChangeTable([](TableShape& shape, CellRange& cells) {
    ++cells.columns;
    return shape.Merge(&cells);
  });
}

void TableCommands::MergeDown() {
  ChangeTable([](TableShape& shape, CellRange& cells) {
    ++cells.rows;
    return shape.Merge(&cells);
  });
}

void TableCommands::SplitCell() {
  ChangeTable([](TableShape& shape, const CellRange& cells) { return shape.Split(cells); });
}

}  // namespace tenora
