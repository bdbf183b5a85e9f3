#include "ui/editor/table_commands.h"

#include <QPointer>
#include <QTextTable>
#include <algorithm>
#include <memory>
#include <utility>

#include "ui/editor/letter_loader.h"
#include "ui/editor/table_grid.h"
#include "ui/editor/text_properties.h"

namespace tenora {
namespace {

constexpr int kPlainWidth = 9000;  // twips of a table where lines end at the window

void SetEdges(QTextTable* table, std::vector<int> edges) {
  QTextTableFormat format = table->format();
  QList<QTextLength> widths;
  for (std::size_t i = 0; i + 1 < edges.size(); ++i)
    widths.append(QTextLength(QTextLength::FixedLength, PixelsOfTwips(edges[i + 1] - edges[i])));
  format.setColumnWidthConstraints(widths);
  auto data = std::make_shared<TableData>();
  data->edges = std::move(edges);
  format.setProperty(kTableProperty,
                     QVariant::fromValue(std::shared_ptr<const TableData>(std::move(data))));
  table->setFormat(format);
}

std::vector<int> Edges(const QTextTable& table) {
  const auto data = SharedProperty<TableData>(table.format(), kTableProperty);
  if (data == nullptr || static_cast<int>(data->edges.size()) != table.columns() + 1) return {};
  return data->edges;
}

// Gives a new cell the looks and formats of the one it was made beside.
void MakeAlike(LetterEditor& editor, const QTextTableCell& from, QTextTableCell to) {
  const auto data = SharedProperty<CellData>(from.format(), kCellProperty);
  if (data == nullptr) return;
  CellData alike;
  if (!data->parts.empty()) {
    CellPart part = data->parts.front();
    for (auto& kept : part.kept) kept = {richtext::Paragraph()};
    alike.parts.push_back(std::move(part));
  }
  const QTextCursor model = from.firstCursorPosition();
  QTextCharFormat format = CellFormat(editor.formats(), alike);
  format.merge(editor.formats().Mark(editor.formats().CharOf(model.blockCharFormat())));
  to.setFormat(format);
  to.firstCursorPosition().setBlockFormat(model.blockFormat());
}

struct Selected {
  int first_row = 0, rows = 1, first_column = 0, columns = 1;
};

Selected SelectedCells(const QTextCursor& cursor, const QTextTable& table) {
  Selected selected;
  if (cursor.hasComplexSelection()) {
    cursor.selectedTableCells(&selected.first_row, &selected.rows, &selected.first_column,
                              &selected.columns);
    return selected;
  }
  const QTextTableCell cell = table.cellAt(cursor);
  return {cell.row(), cell.rowSpan(), cell.column(), cell.columnSpan()};
}

// Runs a change of the caret's table as one undo step.
template <class Change>
void ChangeTable(LetterEditor& editor, const Change& change) {
  editor.ShowBox();
  QTextCursor cursor = editor.textCursor();
  QTextTable* const table = cursor.currentTable();
  if (table == nullptr) return;
  const QPointer<QTextTable> kept(table);
  QTextCursor edit(editor.document());
  edit.beginEditBlock();
  edit.setPosition(table->firstPosition() - 1);
  const QTextBlockFormat before = edit.blockFormat();
  change(table, SelectedCells(cursor, *table));
  // Where the first cell goes, Qt gives an empty block before it the cell's format.
  if (kept) {
    edit.setPosition(kept->firstPosition() - 1);
    if (edit.blockFormat() != before) edit.setBlockFormat(before);
  }
  edit.endEditBlock();
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
    if (i >= table->rows() * columns) {
      // From the last cell into a new row.
      InsertTableRow(editor, Side::kAfter);
      if (i >= table->rows() * columns) return;
    }
    if (!is_stop(i / columns, i % columns)) continue;
    return editor.setTextCursor(table->cellAt(i / columns, i % columns).firstCursorPosition());
  }
}

void InsertTable(LetterEditor& editor, int rows, int columns) {
  const PaperLook& paper = editor.Paper();
  const int width = paper.wraps_at_page ? paper.width - paper.left - paper.right : kPlainWidth;
  const richtext::CharFormat format = editor.CharAtCaret();
  std::vector<richtext::Block> blocks;
  blocks.emplace_back(
      std::make_shared<richtext::Table>(NewTable(rows, columns, std::max(width, 1440), format)));
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
  ChangeTable(editor, [&](QTextTable* table, const Selected& cells) {
    const bool after = side == Side::kAfter;
    const int row = after ? cells.first_row + cells.rows : cells.first_row;
    const int model = after ? row - 1 : row + 1;
    table->insertRows(row, 1);
    for (int c = 0; c < table->columns(); ++c) {
      const QTextTableCell cell = table->cellAt(row, c);
      if (cell.row() != row || cell.column() != c) continue;
      const QTextTableCell from = table->cellAt(model, c);
      if (cell.columnSpan() == 1 && from.columnSpan() > 1 && from.column() == c)
        table->mergeCells(row, c, 1, from.columnSpan());
      MakeAlike(editor, from, table->cellAt(row, c));
    }
  });
}

void InsertTableColumn(LetterEditor& editor, Side side) {
  ChangeTable(editor, [&](QTextTable* table, const Selected& cells) {
    const bool after = side == Side::kAfter;
    const int column = after ? cells.first_column + cells.columns : cells.first_column;
    const int model = after ? column - 1 : column + 1;
    std::vector<int> edges = Edges(*table);
    table->insertColumns(column, 1);
    if (!edges.empty()) {
      // The table stays as wide as it is: all columns make room.
      const auto at = static_cast<std::size_t>(column);
      const auto beside = static_cast<std::size_t>(after ? column - 1 : column);
      const int left = edges.front(), width = edges.back() - left;
      const int added = edges[beside + 1] - edges[beside];
      std::vector<int> wider(edges.begin(), edges.begin() + column + 1);
      for (std::size_t i = at; i < edges.size(); ++i) wider.push_back(edges[i] + added);
      for (int& edge : wider)
        edge = left + static_cast<int>(std::int64_t{edge - left} * width / (width + added));
      SetEdges(table, std::move(wider));
    }
    for (int r = 0; r < table->rows(); ++r) {
      const QTextTableCell cell = table->cellAt(r, column);
      if (cell.row() == r && cell.column() == column)
        MakeAlike(editor, table->cellAt(r, model), cell);
    }
  });
}

void RemoveTableRows(LetterEditor& editor) {
  ChangeTable(editor, [](QTextTable* table, const Selected& cells) {
    table->removeRows(cells.first_row, cells.rows);
  });
}

void RemoveTableColumns(LetterEditor& editor) {
  ChangeTable(editor, [](QTextTable* table, const Selected& cells) {
    std::vector<int> edges = Edges(*table);
    const bool all = cells.columns >= table->columns();
    table->removeColumns(cells.first_column, cells.columns);
    if (all || edges.empty()) return;
    const auto first = edges.begin() + cells.first_column;
    const int removed = *(first + cells.columns) - *first;
    for (auto edge = first + cells.columns; edge != edges.end(); ++edge) *edge -= removed;
    edges.erase(first + 1, first + 1 + cells.columns);
    SetEdges(table, std::move(edges));
  });
}

}  // namespace tenora
