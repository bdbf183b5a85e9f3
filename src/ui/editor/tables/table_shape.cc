#include "ui/editor/tables/table_shape.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/printing/document_length.h"
#include "ui/editor/tables/row_source.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Cell;
using richtext::Paragraph;
using richtext::Row;

constexpr int kNarrowestHalf = 60;  // twips

// The control words of a row's definition, those of the row and those of each cell.
struct DefinitionWords {
  std::string row;
  std::vector<std::string> cells;
};

// Words that are written anew, and widths that are no longer valid.
bool IsReplaced(std::string_view name) {
  for (const std::string_view known : {"trowd", "trleft", "trwWidth", "trftsWidth", "clmgf",
                                       "clmrg", "clvmgf", "clvmrg", "clwWidth", "clftsWidth"}) {
    if (name == known) return true;
  }
  return false;
}

DefinitionWords WordsOf(std::string_view definition) {
  DefinitionWords words;
  std::string cell;
  bool cell_border = false;
  for (std::size_t at = definition.find('\\'); at != std::string_view::npos;) {
    const std::size_t next = definition.find('\\', at + 1);
    const std::string_view word = definition.substr(at, next - at);
    const std::string_view name = word.substr(1, word.find_first_of("-0123456789 ", 1) - 1);
    at = next;
    if (name == "cellx") {
      words.cells.push_back(std::exchange(cell, {}));
      cell_border = false;
      continue;
    }
    const bool border = name.starts_with("brdr") || name == "brsp";
    if (!border) cell_border = name.starts_with("cl") && name != "cloverride";
    if (!IsReplaced(name)) (cell_border ? cell : words.row).append(word);
  }
  return words;
}

bool IsEmpty(const std::vector<Block>& blocks) {
  if (blocks.size() != 1) return false;
  const auto* paragraph = std::get_if<Paragraph>(&blocks.front());
  return paragraph != nullptr && paragraph->runs.empty() && paragraph->marks.empty();
}

// What is left in a cell when its text is moved elsewhere: an empty paragraph of its format.
std::vector<Block> Emptied(const std::vector<Block>& blocks) {
  Paragraph empty;
  if (const auto* first = std::get_if<Paragraph>(&blocks.front())) {
    empty.format = first->format;
    empty.mark = first->runs.empty() ? first->mark : first->runs.front().format;
    empty.mark.hidden = empty.mark.protect = false;
  }
  return {std::move(empty)};
}

}  // namespace

bool TableShape::Piece::Covers(int at_row, int at_column) const {
  return at_row >= row && at_row < row + rows && at_column >= column &&
         at_column < column + columns;
}

TableShape::TableShape(const richtext::Table& table, const TableGrid& grid) : edges_(grid.edges) {
  std::vector<DefinitionWords> words;
  for (std::size_t r = 0; r < grid.rows.size(); ++r) {
    const Row& row = table.rows[grid.first_row + r];
    words.push_back(WordsOf(row.definition));
    words.back().cells.resize(row.cells.size());
    RowHead head{row, words.back().row};
    head.row.cells.clear();
    rows_.push_back(std::move(head));
  }
  const auto cells_at = [&](std::size_t r, const GridCell& cell) {
    std::vector<DefinedCell> cells;
    for (int i = cell.first; i < cell.first + cell.count; ++i) {
      const auto index = static_cast<std::size_t>(i);
      cells.push_back({table.rows[grid.first_row + r].cells[index], words[r].cells[index]});
    }
    return cells;
  };
  for (std::size_t r = 0; r < grid.rows.size(); ++r) {
    for (const GridCell& cell : grid.rows[r]) {
      if (cell.absent || cell.covered) continue;
      Piece piece{static_cast<int>(r), cell.rows, cell.column, cell.span, {}};
      for (std::size_t below = r; below < r + static_cast<std::size_t>(cell.rows); ++below) {
        const auto& cells = grid.rows[below];
        const auto part = std::find_if(cells.begin(), cells.end(), [&](const GridCell& other) {
          return other.column == cell.column;
        });
        piece.parts.push_back(cells_at(below, part == cells.end() ? cell : *part));
      }
      pieces_.push_back(std::move(piece));
    }
  }
}

const TableShape::Piece* TableShape::At(int row, int column) const {
  for (const Piece& piece : pieces_) {
    if (piece.Covers(row, column)) return &piece;
  }
  return nullptr;
}

std::vector<const TableShape::Piece*> TableShape::InRow(int row) const {
  std::vector<const Piece*> pieces;
  for (const Piece& piece : pieces_) {
    if (row >= piece.row && row < piece.row + piece.rows) pieces.push_back(&piece);
  }
  std::sort(pieces.begin(), pieces.end(),
            [](const Piece* a, const Piece* b) { return a->column < b->column; });
  return pieces;
}

void TableShape::TouchRows(int first, int count) {
  for (int r = first; r < first + count; ++r) rows_[static_cast<std::size_t>(r)].changed = true;
}

void TableShape::InsertRow(const CellRange& range, Side side) {
  const bool after = side == Side::kAfter;
  const int row = after ? range.row + range.rows : range.row;
  const int model = after ? row - 1 : row;
  RowHead head = rows_[static_cast<std::size_t>(model)];
  std::vector<Piece> added;
  for (Piece& piece : pieces_) {
    const bool from_model = model >= piece.row && model < piece.row + piece.rows;
    std::vector<DefinedCell> part;
    if (from_model) {
      part = piece.parts[static_cast<std::size_t>(model - piece.row)];
      for (DefinedCell& cell : part) cell.cell.blocks = Emptied(cell.cell.blocks);
    }
    if (piece.row < row && piece.row + piece.rows > row) {
      piece.parts.insert(piece.parts.begin() + (row - piece.row), std::move(part));
      ++piece.rows;
      head.changed = true;
      continue;
    }
    if (from_model) added.push_back({row, 1, piece.column, piece.columns, {std::move(part)}});
    if (from_model && piece.rows > 1) head.changed = true;
    if (piece.row >= row) ++piece.row;
  }
  // A row after the heading is not one of the rows that are repeated on each page.
  const bool heading = row < rows() && rows_[static_cast<std::size_t>(row)].row.header;
  constexpr std::string_view kHeading = "\\trhdr";
  const std::size_t word = head.words.find(kHeading);
  if (after && !heading && word != std::string::npos) {
    head.words.erase(word, kHeading.size());
    head.row.header = false;
    head.changed = true;
  }
  rows_.insert(rows_.begin() + row, std::move(head));
  pieces_.insert(pieces_.end(), std::make_move_iterator(added.begin()),
                 std::make_move_iterator(added.end()));
}

void TableShape::InsertEdge(int column, int position) {
  edges_.insert(edges_.begin() + column, position);
  for (Piece& piece : pieces_) {
    if (piece.column >= column)
      ++piece.column;
    else if (piece.column + piece.columns >= column)
      ++piece.columns;
  }
}

void TableShape::InsertColumn(const CellRange& range, Side side) {
  const bool after = side == Side::kAfter;
  const int column = after ? range.column + range.columns : range.column;
  const int model = after ? column - 1 : column;
  const auto beside = static_cast<std::size_t>(model);
  const int left = edges_.front(), width = edges_.back() - left;
  const int added_width = edges_[beside + 1] - edges_[beside];
  std::vector<Piece> added;
  for (Piece& piece : pieces_) {
    const bool across = piece.column < column && piece.column + piece.columns > column;
    const bool from_model = model >= piece.column && model < piece.column + piece.columns;
    if (from_model && !across) {
      for (int below = 0; below < piece.rows; ++below) {
        const auto& cells = piece.parts[static_cast<std::size_t>(below)];
        DefinedCell cell = after ? cells.back() : cells.front();
        cell.cell.blocks = Emptied(cell.cell.blocks);
        added.push_back({piece.row + below, 1, column, 1, {{std::move(cell)}}});
      }
    }
    if (piece.column >= column) ++piece.column;
    if (across) ++piece.columns;
  }
  pieces_.insert(pieces_.end(), std::make_move_iterator(added.begin()),
                 std::make_move_iterator(added.end()));
  std::vector<int> wider(edges_.begin(), edges_.begin() + column + 1);
  for (auto edge = edges_.begin() + column; edge != edges_.end(); ++edge)
    wider.push_back(*edge + added_width);
  // All columns become narrower by the same ratio, so that the table keeps its width.
  for (int& edge : wider)
    edge = left + static_cast<int>(std::int64_t{edge - left} * width / (width + added_width));
  edges_ = std::move(wider);
  TouchRows(0, rows());
}

void TableShape::RemoveRows(const CellRange& range) {
  const int end = range.row + range.rows;
  std::vector<Piece> left;
  for (Piece& piece : pieces_) {
    const int from = std::max(piece.row, range.row), to = std::min(piece.row + piece.rows, end);
    if (from < to) {
      if (to - from == piece.rows) continue;
      TouchRows(piece.row, piece.rows);
      std::vector<Block> text = std::move(piece.parts.front().front().cell.blocks);
      piece.parts.front().front().cell.blocks = Emptied(text);
      piece.parts.erase(piece.parts.begin() + (from - piece.row),
                        piece.parts.begin() + (to - piece.row));
      piece.parts.front().front().cell.blocks = std::move(text);
      piece.rows -= to - from;
    }
    if (piece.row >= range.row) piece.row = std::max(range.row, piece.row - range.rows);
    left.push_back(std::move(piece));
  }
  pieces_ = std::move(left);
  rows_.erase(rows_.begin() + range.row, rows_.begin() + end);
}

void TableShape::RemoveColumns(const CellRange& range) {
  const int end = range.column + range.columns;
  std::vector<Piece> left;
  for (Piece& piece : pieces_) {
    const int from = std::max(piece.column, range.column);
    const int to = std::min(piece.column + piece.columns, end);
    if (from < to) {
      if (to - from == piece.columns) continue;
      piece.columns -= to - from;
      for (auto& part : piece.parts) {
        const auto kept = static_cast<std::size_t>(piece.columns);
        if (part.size() > kept) part.erase(part.begin() + piece.columns, part.end());
      }
    }
    if (piece.column >= range.column)
      piece.column = std::max(range.column, piece.column - range.columns);
    left.push_back(std::move(piece));
  }
  pieces_ = std::move(left);
  const auto first = edges_.begin() + range.column;
  const int removed = *(first + range.columns) - *first;
  for (auto edge = first + range.columns; edge != edges_.end(); ++edge) *edge -= removed;
  edges_.erase(first + 1, first + 1 + range.columns);
  TouchRows(0, rows());
}

bool TableShape::GrowToWholeCells(CellRange* range) const {
  for (bool grew = true; grew;) {
    grew = false;
    for (int r = range->row; r < range->row + range->rows; ++r) {
      for (int c = range->column; c < range->column + range->columns; ++c) {
        const Piece* piece = At(r, c);
        if (piece == nullptr) return false;
        const int top = std::min(range->row, piece->row);
        const int left = std::min(range->column, piece->column);
        const int bottom = std::max(range->row + range->rows, piece->row + piece->rows);
        const int right = std::max(range->column + range->columns, piece->column + piece->columns);
        const CellRange grown{top, bottom - top, left, right - left};
        if (grown.rows == range->rows && grown.columns == range->columns) continue;
        *range = grown;
        grew = true;
      }
    }
  }
  return true;
}

bool TableShape::Merge(CellRange* range) {
  if (range->row + range->rows > rows() || range->column + range->columns > columns()) return false;
  if (!GrowToWholeCells(range)) return false;
  Piece merged{range->row, range->rows, range->column, range->columns, {}};
  std::vector<Block> text;
  int taken = 0;
  for (int r = range->row; r < range->row + range->rows; ++r) {
    merged.parts.emplace_back();
    for (const Piece* piece : InRow(r)) {
      if (piece->column < range->column || piece->column >= range->column + range->columns)
        continue;
      std::vector<DefinedCell> part = piece->parts[static_cast<std::size_t>(r - piece->row)];
      if (piece->row == r) {
        ++taken;
        std::vector<Block>& blocks = part.front().cell.blocks;
        if (!IsEmpty(blocks)) text.insert(text.end(), blocks.begin(), blocks.end());
        blocks = Emptied(blocks);
      }
      merged.parts.back().insert(merged.parts.back().end(), std::make_move_iterator(part.begin()),
                                 std::make_move_iterator(part.end()));
    }
  }
  if (taken < 2) return false;
  if (!text.empty()) merged.parts.front().front().cell.blocks = std::move(text);
  std::erase_if(pieces_,
                [&](const Piece& piece) { return merged.Covers(piece.row, piece.column); });
  TouchRows(range->row, range->rows);
  pieces_.push_back(std::move(merged));
  return true;
}

void TableShape::PartPiece(const Piece& piece, std::vector<Piece>* parts) const {
  for (int below = 0; below < piece.rows; ++below) {
    const auto& cells = piece.parts[static_cast<std::size_t>(below)];
    for (int c = 0; c < piece.columns; ++c) {
      const auto index = std::min(static_cast<std::size_t>(c), cells.size() - 1);
      DefinedCell cell = cells[index];
      if (static_cast<std::size_t>(c) >= cells.size()) cell.cell.blocks = Emptied(cell.cell.blocks);
      parts->push_back({piece.row + below, 1, piece.column + c, 1, {{std::move(cell)}}});
    }
  }
}

bool TableShape::Split(const CellRange& range) {
  const Piece* found = At(range.row, range.column);
  if (found == nullptr) return false;
  if (found->rows == 1 && found->columns == 1) {
    const auto column = static_cast<std::size_t>(found->column);
    const int width = edges_[column + 1] - edges_[column];
    if (width < 2 * kNarrowestHalf) return false;
    InsertEdge(found->column + 1, edges_[column] + width / 2);
    found = At(range.row, range.column);
  }
  const Piece piece = *found;
  pieces_.erase(pieces_.begin() + (found - pieces_.data()));
  PartPiece(piece, &pieces_);
  TouchRows(piece.row, piece.rows);
  return true;
}

Row TableShape::MakeRow(int row) const {
  const RowHead& head = rows_[static_cast<std::size_t>(row)];
  const std::vector<const Piece*> pieces = InRow(row);
  Row made = head.row;
  std::string cell_words;
  for (const Piece* piece : pieces) {
    const auto& part = piece->parts[static_cast<std::size_t>(row - piece->row)];
    const int left = edges_[static_cast<std::size_t>(piece->column)];
    const int width = edges_[static_cast<std::size_t>(piece->column + piece->columns)] - left;
    for (std::size_t i = 0; i < part.size(); ++i) {
      Cell cell = part[i].cell;
      if (head.changed) {
        // Each of the cells merged across gets a column of its own, where there are enough.
        const std::size_t behind = i + 1;
        cell.right_edge =
            static_cast<int>(part.size()) == piece->columns
                ? edges_[static_cast<std::size_t>(piece->column) + behind]
                : left + width * static_cast<int>(behind) / static_cast<int>(part.size());
        cell.horizontal_merge = part.size() == 1 ? Cell::Merge::kNone
                                : i == 0         ? Cell::Merge::kFirst
                                                 : Cell::Merge::kContinued;
        cell.vertical_merge = piece->rows == 1    ? Cell::Merge::kNone
                              : piece->row == row ? Cell::Merge::kFirst
                                                  : Cell::Merge::kContinued;
        cell_words.append(CellMergeWords(cell)).append(part[i].words);
        cell_words.append("\\cellx").append(std::to_string(cell.right_edge));
      }
      made.cells.push_back(std::move(cell));
    }
  }
  if (!head.changed || pieces.empty()) return made;
  made.left_edge = edges_[static_cast<std::size_t>(pieces.front()->column)];
  made.definition = "\\trowd" + head.words;
  if (made.left_edge != 0)
    made.definition.append("\\trleft").append(std::to_string(made.left_edge));
  made.definition.append(cell_words);
  return made;
}

std::vector<Row> TableShape::Rows() const {
  std::vector<Row> made;
  for (int r = 0; r < rows(); ++r) {
    Row row = MakeRow(r);
    if (!row.cells.empty()) made.push_back(std::move(row));
  }
  return made;
}

int TableShape::PositionOf(int row, int column) const {
  int position = 0;
  for (int r = 0; r <= row && r < rows(); ++r) {
    for (const Piece* piece : InRow(r)) {
      if (r == row && piece->column + piece->columns > column) return position;
      for (const DefinedCell& cell : piece->parts[static_cast<std::size_t>(r - piece->row)])
        position += printing::Length(cell.cell);
    }
  }
  return position;
}

}  // namespace tenora
