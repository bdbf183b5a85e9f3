#include "platform/printing/layout/table_layout.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/printing/document_length.h"
#include "platform/printing/layout/block_layout.h"
#include "platform/printing/layout/row_strip.h"
#include "platform/printing/layout/rule.h"

namespace tenora::printing {
namespace {

using richtext::Cell;
using richtext::Row;

constexpr double kNarrowestCell = 40;
// The most of a cell's width, or of a page's height, that one side's padding may take.
constexpr double kMostPaddingShare = 0.25;
// Of a page's height, that lines up or down the page make a row high.
constexpr double kMostLineShare = 0.25;

// Where a cell is, or several that are merged across.
struct CellPlace {
  std::size_t first = 0, end = 0;  // of the row's cells
  double x = 0, width = 0;
};

// The places of a row's cells, in the order of their text.
std::vector<CellPlace> PlacesOf(const Row& row, const LayoutContext& context,
                                const TablePlace& place) {
  std::vector<CellPlace> places;
  if (row.cells.empty()) return places;
  const double own_width = row.cells.back().right_edge - row.left_edge;
  // A row that would run off the paper, or out of its cell, is scaled to the text's width.
  const double most = place.depth == 0 ? context.area.reach() : place.width;
  const bool indented = row.alignment == richtext::Alignment::kLeft && row.left_edge > 0;
  const double indent = indented ? row.left_edge : 0;
  const double wanted = std::max(place.width - indent, kNarrowestCell);
  const double scale = own_width > std::max(most - indent, wanted) ? wanted / own_width : 1;

  double origin = row.left_edge + place.shift.value_or(0);
  if (!place.shift && row.alignment == richtext::Alignment::kCentre)
    origin = (place.width - scale * own_width) / 2;
  if (!place.shift && row.alignment == richtext::Alignment::kRight)
    origin = place.width - scale * own_width;
  double left = origin;
  for (std::size_t i = 0; i < row.cells.size();) {
    std::size_t next = i + 1;
    if (row.cells[i].horizontal_merge == Cell::Merge::kFirst) {
      while (next < row.cells.size() &&
             row.cells[next].horizontal_merge == Cell::Merge::kContinued) {
        ++next;
      }
    }
    const double right = origin + scale * (row.cells[next - 1].right_edge - row.left_edge);
    places.push_back({i, next, left, std::max(right - left, kNarrowestCell)});
    left = std::max(right, left + kNarrowestCell);
    i = next;
  }
  if (row.right_to_left) {
    for (CellPlace& cell : places) cell.x = origin + left - cell.x - cell.width;
  }
  return places;
}

bool KeepsWhole(const Row& row) {
  constexpr std::string_view kWord = "\\trkeep";
  const std::size_t at = row.definition.find(kWord);
  if (at == std::string::npos) return false;
  const std::size_t end = at + kWord.size();
  return end == row.definition.size() || row.definition[end] < 'a';
}

// The text of a cell laid out in lines of this length.
Strips LinesOf(LayoutContext& context, const Cell& cell, double length, int position, int depth) {
  return LayOutInside(context, cell.blocks, length, position, depth + 1);
}

class RowLayout {
 public:
  RowLayout(LayoutContext& context, const Row& row, const TablePlace& place, int position)
      : context_(context), row_(row), place_(place), position_(position) {}

  // Text up or down the page is left out: see SetVerticalText.
  std::shared_ptr<RowStrip> LayOut(std::vector<LineAbove> lines_above) {
    strip_ = std::make_shared<RowStrip>();
    strip_->begin = position_;
    strip_->page_height = context_.page_height;
    strip_->fixed_height = row_.height < 0;
    strip_->whole = KeepsWhole(row_);
    strip_->lines_above = std::move(lines_above);
    for (const CellPlace& place : PlacesOf(row_, context_, place_)) {
      strip_->cells.push_back(SetCell(place));
      for (std::size_t i = place.first; i < place.end; ++i) position_ += Length(row_.cells[i]);
    }
    AlignTops();
    for (const CellBox& cell : strip_->cells) {
      const bool first = &cell == &strip_->cells.front();
      strip_->ink_left = first ? cell.x : std::min(strip_->ink_left, cell.x);
      strip_->ink_right = std::max(first ? cell.x : strip_->ink_right, cell.x + cell.width);
    }
    strip_->end = position_;
    return strip_;
  }

  // To be called when the heights of the cells are known.
  void SetVerticalText() {
    for (const Vertical& vertical : vertical_) {
      CellBox& box = strip_->cells[vertical.box];
      const double length = box.height - box.pad_top - box.pad_bottom;
      box.strips = LinesOf(context_, *vertical.cell, std::max(length, kNarrowestCell),
                           vertical.position, place_.depth);
    }
  }

 private:
  struct Vertical {
    std::size_t box;  // of the strip's cells
    const Cell* cell;
    int position;
  };

  CellBox SetCell(const CellPlace& place) {
    const Cell& cell = row_.cells[place.first];
    const Cell& last = row_.cells[place.end - 1];
    CellBox box;
    box.x = place.x;
    box.width = place.width;
    box.align = cell.vertical_align;
    box.direction = cell.direction;
    if (cell.shading > 0) box.shading = context_.fonts->Colour(cell.shading);
    box.top = RuleOf(cell.top, *context_.fonts);
    box.bottom = RuleOf(cell.bottom, *context_.fonts);
    box.left = RuleOf(cell.left, *context_.fonts);
    box.right = RuleOf(last.right.present ? last.right : cell.right, *context_.fonts);
    box.covered = cell.vertical_merge == Cell::Merge::kContinued;
    if (box.covered) return box;
    Pad(cell.padding, &box);
    if (cell.direction == Cell::Direction::kAcross) {
      box.strips = LinesOf(context_, cell, box.width - box.pad_left - box.pad_right, position_,
                           place_.depth);
      return box;
    }
    vertical_.push_back({strip_->cells.size(), &cell, position_});
    // Without a height of its own the row is high enough for the text's lines.
    if (row_.height == 0) {
      const double most = context_.page_height * kMostLineShare;
      for (const auto& line : LinesOf(context_, cell, most, position_, place_.depth))
        box.line_length = std::max(box.line_length, std::ceil(line->ink_right));
    }
    return box;
  }

  void Pad(const richtext::Padding& padding, CellBox* box) const {
    const double gap = std::max(0, row_.half_gap);
    const double most_x = box->width * kMostPaddingShare;
    const double most_y = context_.page_height * kMostPaddingShare;
    box->pad_left = std::min(padding.left < 0 ? gap : padding.left, most_x);
    box->pad_right = std::min(padding.right < 0 ? gap : padding.right, most_x);
    box->pad_top = std::min<double>(std::max(padding.top, 0), most_y);
    box->pad_bottom = std::min<double>(std::max(padding.bottom, 0), most_y);
  }

  // All cells of a row begin their text at one height, below the thickest line above the row.
  void AlignTops() {
    double line = 0, padding = 0;
    for (const LineAbove& above : strip_->lines_above)
      line = std::max(line, above.rule.Thickness());
    for (const CellBox& cell : strip_->cells) {
      if (cell.covered) continue;
      line = std::max(line, cell.top.Thickness());
      padding = std::max(padding, cell.pad_top);
    }
    for (CellBox& cell : strip_->cells) cell.pad_top = line + padding;
  }

  LayoutContext& context_;
  const Row& row_;
  const TablePlace& place_;
  int position_;
  std::shared_ptr<RowStrip> strip_;
  std::vector<Vertical> vertical_;
};

const CellBox* CoveredAt(const RowStrip& row, double x) {
  const auto found = std::ranges::find_if(row.cells, [&](const CellBox& cell) {
    return cell.covered && std::abs(cell.x - x) < kNarrowestCell;
  });
  return found == row.cells.end() ? nullptr : &*found;
}

// The lines along the bottoms of a row's cells, but for cells that go on in the row below.
std::vector<LineAbove> LinesBelow(const Row& row, const Row& below, const LayoutContext& context,
                                  const TablePlace& place) {
  std::vector<LineAbove> lines;
  if (std::ranges::none_of(row.cells, [](const Cell& cell) { return cell.bottom.present; }))
    return lines;
  const std::vector<CellPlace> places_below = PlacesOf(below, context, place);
  for (const CellPlace& cell : PlacesOf(row, context, place)) {
    const bool goes_on = std::ranges::any_of(places_below, [&](const CellPlace& other) {
      return below.cells[other.first].vertical_merge == Cell::Merge::kContinued &&
             std::abs(other.x - cell.x) < kNarrowestCell;
    });
    const Rule rule = RuleOf(row.cells[cell.first].bottom, *context.fonts);
    if (rule.width > 0 && !goes_on) lines.push_back({cell.x, cell.width, rule});
  }
  return lines;
}

// The number of rows that a vertically merged cell covers from `first` on.
std::size_t RowsCovered(const std::vector<std::shared_ptr<RowStrip>>& rows, std::size_t first,
                        const CellBox& cell) {
  std::size_t last = first;
  while (last + 1 < rows.size() && CoveredAt(*rows[last + 1], cell.x) != nullptr) ++last;
  return last - first + 1;
}

void SetHeights(const richtext::Table& table, std::size_t first,
                const std::vector<std::shared_ptr<RowStrip>>& rows, double page_height) {
  struct Merged {
    std::size_t row, span;
    CellBox* cell;
  };
  std::vector<Merged> merged;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const int set = table.rows[first + i].height;
    double height = std::min<double>(std::abs(set), page_height);
    for (CellBox& cell : rows[i]->cells) {
      const std::size_t span = cell.covered ? 1 : RowsCovered(rows, i, cell);
      if (span > 1) merged.push_back({i, span, &cell});
      if (span == 1 && set >= 0) height = std::max(height, cell.ContentHeight());
    }
    rows[i]->height = height;
    for (CellBox& cell : rows[i]->cells) cell.height = height;
  }
  for (const Merged& merge : merged) {
    RowStrip& last = *rows[merge.row + merge.span - 1];
    double total = 0;
    for (std::size_t i = 0; i < merge.span; ++i) total += rows[merge.row + i]->height;
    const double missing = merge.cell->ContentHeight() - total;
    if (missing > 0) {
      for (CellBox& cell : last.cells) {
        if (cell.height == last.height) cell.height += missing;
      }
      last.height += missing;
      total += missing;
    }
    merge.cell->height = total;
    const Rule& bottom = CoveredAt(last, merge.cell->x)->bottom;
    if (bottom.width > 0) merge.cell->bottom = bottom;
  }
}

// Below the table's last row its bottom lines have room.
void EndTable(RowStrip* row) {
  for (const CellBox& cell : row->cells)
    row->line_below = std::max(row->line_below, cell.bottom.Thickness());
  row->height += row->line_below;
}

}  // namespace

std::size_t RowsTogether(const richtext::Table& table, std::size_t first) {
  std::size_t count = 1;
  while (first + count < table.rows.size()) {
    const auto& cells = table.rows[first + count].cells;
    const bool tied = std::any_of(cells.begin(), cells.end(), [](const Cell& cell) {
      return cell.vertical_merge == Cell::Merge::kContinued;
    });
    if (!tied) break;
    ++count;
  }
  return count;
}

BlockStrips LayOutRows(LayoutContext& context, const richtext::Table& table, std::size_t first,
                       std::size_t count, const TablePlace& place) {
  std::vector<RowLayout> layouts;
  std::vector<std::shared_ptr<RowStrip>> rows;
  int position = place.position;
  for (std::size_t i = first; i < first + count; ++i) {
    const Row& row = table.rows[i];
    std::vector<LineAbove> lines_above;
    if (i > 0) lines_above = LinesBelow(table.rows[i - 1], row, context, place);
    layouts.emplace_back(context, row, place, position);
    rows.push_back(layouts.back().LayOut(std::move(lines_above)));
    position += Length(row);
  }
  SetHeights(table, first, rows, context.page_height);
  for (RowLayout& layout : layouts) layout.SetVerticalText();
  if (first + count == table.rows.size()) EndTable(rows.back().get());
  BlockStrips block;
  block.keep_together = count > 1;
  block.strips.assign(rows.begin(), rows.end());
  return block;
}

}  // namespace tenora::printing
