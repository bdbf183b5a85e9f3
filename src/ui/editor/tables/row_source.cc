#include "ui/editor/tables/row_source.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/richtext/border_kinds.h"

namespace tenora {
namespace {

using richtext::Cell;
using richtext::Row;
using richtext::Table;

constexpr int kNewCellGap = 108;  // twips
constexpr int kNewBorder = 10;    // twips

void BorderSource(std::string_view edge, const richtext::Border& border, std::string* out) {
  if (!border.present) return;
  out->append("\\").append(edge).append("\\").append(richtext::BorderKindWord(border.kind));
  out->append("\\brdrw").append(std::to_string(border.width));
  if (border.colour != 0) out->append("\\brdrcf").append(std::to_string(border.colour));
}

void PaddingSource(const Row& row, const richtext::Padding& padding, std::string* out) {
  // Deliberate: word processors write \clpadl for a cell's top and \clpadt for its left, and all
  // read them that way round.
  const std::pair<char, int> sides[] = {
      {'l', padding.top}, {'t', padding.left}, {'b', padding.bottom}, {'r', padding.right}};
  for (const auto& [side, length] : sides) {
    if (length < 0 || length == row.half_gap) continue;
    out->append("\\clpadf").append(1, side).append("3\\clpad").append(1, side);
    out->append(std::to_string(length));
  }
}

void CellSource(const Row& row, const Cell& cell, std::string* out) {
  out->append(CellMergeWords(cell));
  if (cell.direction == Cell::Direction::kUp) out->append("\\cltxbtlr");
  if (cell.direction == Cell::Direction::kDown) out->append("\\cltxtbrl");
  if (cell.vertical_align == Cell::VerticalAlign::kCentre) out->append("\\clvertalc");
  if (cell.vertical_align == Cell::VerticalAlign::kBottom) out->append("\\clvertalb");
  BorderSource("clbrdrt", cell.top, out);
  BorderSource("clbrdrl", cell.left, out);
  BorderSource("clbrdrb", cell.bottom, out);
  BorderSource("clbrdrr", cell.right, out);
  if (cell.shading != 0) out->append("\\clcbpat").append(std::to_string(cell.shading));
  PaddingSource(row, cell.padding, out);
  out->append("\\cellx").append(std::to_string(cell.right_edge));
}

}  // namespace

std::string CellMergeWords(const Cell& cell) {
  std::string source;
  if (cell.vertical_merge == Cell::Merge::kFirst) source.append("\\clvmgf");
  if (cell.vertical_merge == Cell::Merge::kContinued) source.append("\\clvmrg");
  if (cell.horizontal_merge == Cell::Merge::kFirst) source.append("\\clmgf");
  if (cell.horizontal_merge == Cell::Merge::kContinued) source.append("\\clmrg");
  return source;
}

std::string RowSource(const Row& row) {
  std::string source = "\\trowd";
  if (row.half_gap != 0) source.append("\\trgaph").append(std::to_string(row.half_gap));
  if (row.left_edge != 0) source.append("\\trleft").append(std::to_string(row.left_edge));
  if (row.height != 0) source.append("\\trrh").append(std::to_string(row.height));
  if (row.header) source.append("\\trhdr");
  if (row.right_to_left) source.append("\\rtlrow");
  if (row.alignment == richtext::Alignment::kCentre) source.append("\\trqc");
  if (row.alignment == richtext::Alignment::kRight) source.append("\\trqr");
  for (const Cell& cell : row.cells) CellSource(row, cell, &source);
  return source;
}

Table NewTable(int rows, int columns, int width, const richtext::CharFormat& format) {
  Row row;
  row.half_gap = kNewCellGap;
  for (int c = 1; c <= columns; ++c) {
    Cell cell;
    cell.right_edge = width * c / columns;
    for (richtext::Border* border : {&cell.top, &cell.bottom, &cell.left, &cell.right})
      *border = {.present = true, .width = kNewBorder};
    richtext::Paragraph empty;
    empty.mark = format;
    cell.blocks.emplace_back(std::move(empty));
    row.cells.push_back(std::move(cell));
  }
  row.definition = RowSource(row);
  Table table;
  table.rows.assign(static_cast<std::size_t>(rows), row);
  return table;
}

}  // namespace tenora
