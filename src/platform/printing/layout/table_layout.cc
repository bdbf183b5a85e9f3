#include "platform/printing/layout/table_layout.h"

#include <algorithm>
#include <cmath>

#include "platform/printing/document_length.h"
#include "platform/printing/layout/block_layout.h"
#include "platform/printing/layout/rule.h"
#include "platform/printing/layout/taken_areas.h"

namespace tenora::printing {
namespace {

using richtext::Cell;

constexpr double kNarrowestCell = 40;
// The most of a cell's width, or of a page's height, that one side's padding may take.
constexpr double kMostPaddingShare = 0.25;

struct CellBox {
  double x = 0, width = 0;
  double height = 0;  // more than the row's for a vertically merged cell
  // Between the cell's edges and its text.
  double pad_top = 0, pad_left = 0, pad_bottom = 0, pad_right = 0;
  Cell::VerticalAlign align = Cell::VerticalAlign::kTop;
  QColor shading;  // invalid for none
  Rule top, bottom, left, right;
  bool covered = false;  // by the cell above
  Strips strips;

  double ContentHeight() const {
    double height_sum = pad_top + pad_bottom;
    for (const auto& strip : strips) {
      height_sum += strip->space_before + strip->height + strip->space_after;
    }
    return height_sum;
  }
};

void DrawEdges(QPainter& painter, const QRectF& area, const CellBox& cell) {
  const auto horizontal = [&](const Rule& edge, double y) {
    const double beyond = edge.Thickness() / 2;
    DrawHorizontal(painter, edge, area.left() - beyond, y, area.width() + 2 * beyond);
  };
  const auto vertical = [&](const Rule& edge, double x) {
    const double beyond = edge.Thickness() / 2;
    DrawVertical(painter, edge, x, area.top() - beyond, area.height() + 2 * beyond);
  };
  horizontal(cell.top, area.top());
  horizontal(cell.bottom, area.bottom());
  vertical(cell.left, area.left());
  vertical(cell.right, area.right());
}

class RowStrip : public Strip {
 public:
  void Draw(QPainter& painter, QPointF corner) const override {
    for (const CellBox& cell : cells) {
      const QRectF area(corner.x() + cell.x, corner.y(), cell.width, cell.height);
      if (!cell.covered && cell.shading.isValid()) painter.fillRect(area, cell.shading);
    }
    for (const CellBox& cell : cells) {
      if (cell.covered) continue;
      const QRectF area(corner.x() + cell.x, corner.y(), cell.width, cell.height);
      DrawContent(painter, area, cell);
      DrawEdges(painter, area, cell);
    }
  }

  void CollectFloating(QPointF corner, std::vector<PlacedFloating>* found) const override {
    for (const CellBox& cell : cells) {
      if (cell.covered) continue;
      ForEachStrip(cell, corner + QPointF(cell.x, 0),
                   [&](const Strip& strip, QPointF place) { strip.CollectFloating(place, found); });
    }
  }

  std::shared_ptr<Strip> TakeTop(double available_height) override;

  std::vector<CellBox> cells;
  bool fixed_height = false;
  bool whole = false;  // divided only if higher than a page
  double page_height = 0;

 private:
  void DrawContent(QPainter& painter, const QRectF& area, const CellBox& cell) const {
    if (fixed_height) {
      painter.save();
      painter.setClipRect(area, Qt::IntersectClip);
    }
    ForEachStrip(cell, area.topLeft(),
                 [&](const Strip& strip, QPointF corner) { strip.Draw(painter, corner); });
    if (fixed_height) painter.restore();
  }

  template <class Use>
  void ForEachStrip(const CellBox& cell, QPointF cell_corner, const Use& use) const {
    double y = cell_corner.y() + cell.pad_top;
    const double spare = std::max(0.0, cell.height - cell.ContentHeight());
    if (cell.align == Cell::VerticalAlign::kCentre) y += spare / 2;
    if (cell.align == Cell::VerticalAlign::kBottom) y += spare;
    for (const auto& strip : cell.strips) {
      y += strip->space_before;
      use(*strip, QPointF(cell_corner.x() + cell.pad_left, y));
      y += strip->height + strip->space_after;
    }
  }
};

// Moves strips that fit from one cell to its upper part. On an empty page the first always moves.
void MoveStrips(CellBox& from, CellBox& to, double available_height, bool whole_page) {
  available_height -= from.pad_top + from.pad_bottom;
  double used = 0;
  while (!from.strips.empty()) {
    Strip& next = *from.strips.front();
    if (to.strips.empty()) next.space_before = 0;
    const double left = available_height - used - next.space_before;
    if (next.height <= left ||
        (whole_page && to.strips.empty() && next.height > available_height)) {
      if (next.height > left) {
        if (auto part = next.TakeTop(left)) {
          to.strips.push_back(part);
          return;
        }
      }
      used += next.space_before + next.height + next.space_after;
      to.strips.push_back(std::move(from.strips.front()));
      from.strips.pop_front();
      continue;
    }
    if (auto part = next.TakeTop(left)) to.strips.push_back(part);
    return;
  }
}

std::shared_ptr<Strip> RowStrip::TakeTop(double available_height) {
  if (fixed_height || height <= available_height || available_height <= 0) return nullptr;
  if (whole && height <= page_height) return nullptr;
  auto top = std::make_shared<RowStrip>();
  top->page_height = page_height;
  top->begin = begin;
  top->space_before = space_before;
  bool moved = false, rest = false;
  double rest_height = 0;
  for (CellBox& cell : cells) {
    CellBox upper = cell;
    upper.strips.clear();
    upper.align = cell.align = Cell::VerticalAlign::kTop;
    MoveStrips(cell, upper, available_height, available_height >= page_height);
    moved = moved || !upper.strips.empty();
    rest = rest || !cell.strips.empty();
    top->height = std::max(top->height, std::min(upper.ContentHeight(), available_height));
    rest_height = std::max(rest_height, cell.ContentHeight());
    top->cells.push_back(std::move(upper));
  }
  if (!moved) return nullptr;
  // A row of set height with little text: the rest of it is empty.
  if (!rest) top->height = available_height;
  for (CellBox& cell : top->cells) cell.height = top->height;
  height = rest ? rest_height : std::max(height - available_height, 1.0);
  space_before = 0;
  bool first = true;
  for (CellBox& cell : cells) {
    cell.height = height;
    if (first && !cell.strips.empty()) {
      begin = cell.strips.front()->begin;
      first = false;
    }
  }
  if (first) begin = end - 1;
  top->end = begin;
  return top;
}

bool KeepsWhole(const richtext::Row& row) {
  constexpr std::string_view kWord = "\\trkeep";
  const std::size_t at = row.definition.find(kWord);
  if (at == std::string::npos) return false;
  const std::size_t end = at + kWord.size();
  return end == row.definition.size() || row.definition[end] < 'a';
}

class RowLayout {
 public:
  RowLayout(LayoutContext& context, const richtext::Row& row, const TablePlace& place, int position)
      : context_(context), row_(row), place_(place), position_(position) {}

  std::shared_ptr<RowStrip> LayOut() {
    auto strip = std::make_shared<RowStrip>();
    strip->begin = position_;
    strip->page_height = context_.page_height;
    strip->fixed_height = row_.height < 0;
    strip->whole = KeepsWhole(row_);
    double left = Left();
    for (std::size_t i = 0; i < row_.cells.size();) {
      std::size_t next = i + 1;
      if (row_.cells[i].horizontal_merge == Cell::Merge::kFirst) {
        while (next < row_.cells.size() &&
               row_.cells[next].horizontal_merge == Cell::Merge::kContinued) {
          ++next;
        }
      }
      const double right = Left() + Scale() * (row_.cells[next - 1].right_edge - row_.left_edge);
      strip->cells.push_back(SetCell(row_.cells[i], left, std::max(right - left, kNarrowestCell)));
      left = std::max(right, left + kNarrowestCell);
      for (; i < next; ++i) position_ += Length(row_.cells[i]);
    }
    if (!strip->cells.empty()) {
      strip->ink_left = strip->cells.front().x;
      strip->ink_right = strip->cells.back().x + strip->cells.back().width;
    }
    strip->end = position_;
    return strip;
  }

 private:
  // A row that would run off the paper, or out of its cell, is scaled to the text's width.
  double Scale() const {
    const double width = row_.cells.empty() ? 0 : row_.cells.back().right_edge - row_.left_edge;
    const double most = place_.depth == 0 ? context_.area.reach() : place_.width;
    const bool indented = row_.alignment == richtext::Alignment::kLeft && row_.left_edge > 0;
    const double indent = indented ? row_.left_edge : 0;
    const double wanted = std::max(place_.width - indent, kNarrowestCell);
    return width > std::max(most - indent, wanted) ? wanted / width : 1;
  }

  double Left() const {
    const double width =
        row_.cells.empty() ? 0 : Scale() * (row_.cells.back().right_edge - row_.left_edge);
    if (row_.alignment == richtext::Alignment::kCentre) return (place_.width - width) / 2;
    if (row_.alignment == richtext::Alignment::kRight) return place_.width - width;
    return row_.left_edge;
  }

  CellBox SetCell(const Cell& cell, double x, double width) {
    CellBox box;
    box.x = x;
    box.width = width;
    box.align = cell.vertical_align;
    if (cell.shading > 0) box.shading = context_.fonts->Colour(cell.shading);
    box.top = RuleOf(cell.top, *context_.fonts);
    box.bottom = RuleOf(cell.bottom, *context_.fonts);
    box.left = RuleOf(cell.left, *context_.fonts);
    box.right = RuleOf(cell.right, *context_.fonts);
    box.covered = cell.vertical_merge == Cell::Merge::kContinued;
    if (box.covered) return box;
    Pad(cell.padding, &box);
    const double text_width = width - box.pad_left - box.pad_right;
    BlockLayout layout(context_, cell.blocks, text_width, position_, place_.depth + 1,
                       BlockLayout::Ending::kWhole);
    while (auto block = layout.Next()) {
      for (auto& strip : block->strips) {
        strip->ForgetBreaks();
        box.strips.push_back(std::move(strip));
      }
    }
    MakeRoom(&box.strips);
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
    // A row is higher by the line above it.
    box->pad_top += box->top.Thickness();
  }

  LayoutContext& context_;
  const richtext::Row& row_;
  const TablePlace& place_;
  int position_;
};

// The number of rows that a vertically merged cell covers from `first` on.
std::size_t RowsCovered(const std::vector<std::shared_ptr<RowStrip>>& rows, std::size_t first,
                        const CellBox& cell) {
  std::size_t last = first;
  while (last + 1 < rows.size()) {
    const auto& below = rows[last + 1]->cells;
    const bool covered = std::any_of(below.begin(), below.end(), [&](const CellBox& other) {
      return other.covered && std::abs(other.x - cell.x) < kNarrowestCell;
    });
    if (!covered) break;
    ++last;
  }
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
    double total = 0;
    for (std::size_t i = 0; i < merge.span; ++i) total += rows[merge.row + i]->height;
    const double missing = merge.cell->ContentHeight() - total;
    if (missing > 0) {
      RowStrip& last = *rows[merge.row + merge.span - 1];
      for (CellBox& cell : last.cells) {
        if (cell.height == last.height) cell.height += missing;
      }
      last.height += missing;
      total += missing;
    }
    merge.cell->height = total;
  }
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
  std::vector<std::shared_ptr<RowStrip>> rows;
  int position = place.position;
  for (std::size_t i = 0; i < count; ++i) {
    const richtext::Row& row = table.rows[first + i];
    rows.push_back(RowLayout(context, row, place, position).LayOut());
    position += Length(row);
  }
  SetHeights(table, first, rows, context.page_height);
  BlockStrips block;
  block.keep_together = count > 1;
  block.strips.assign(rows.begin(), rows.end());
  return block;
}

}  // namespace tenora::printing
