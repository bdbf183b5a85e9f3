#include "platform/printing/layout/row_strip.h"

#include <algorithm>

namespace tenora::printing {
namespace {

using richtext::Cell;

double HeightOf(const Strips& strips) {
  double height = 0;
  for (const auto& strip : strips)
    height += strip->space_before + strip->height + strip->space_after;
  return height;
}

// Lines along the top and the bottom of a row lie below its edges, where the row or what follows
// the table has room for them; those at the sides of cells lie on the edges.
void DrawLineBelow(QPainter& painter, const Rule& rule, QPointF corner, double width) {
  DrawHorizontal(painter, rule, corner.x(), corner.y() + rule.Thickness() / 2, width);
}

void DrawEdges(QPainter& painter, const QRectF& area, const CellBox& cell) {
  const auto horizontal = [&](const Rule& edge, double y) {
    const double left = area.left() - cell.left.Thickness() / 2;
    const double right = area.right() + cell.right.Thickness() / 2;
    DrawLineBelow(painter, edge, {left, y}, right - left);
  };
  const auto vertical = [&](const Rule& edge, double x) {
    DrawVertical(painter, edge, x, area.top(), area.height() + cell.bottom.Thickness());
  };
  horizontal(cell.top, area.top());
  horizontal(cell.bottom, area.bottom());
  vertical(cell.left, area.left());
  vertical(cell.right, area.right());
}

// `corner` is that of the cell, or where its text begins if that runs up or down the page.
template <class Use>
void ForEachStrip(const CellBox& cell, QPointF corner, const Use& use) {
  double before = cell.pad_top, beside = cell.pad_left;
  double spare = cell.height - cell.pad_bottom;
  if (cell.direction == Cell::Direction::kUp) {
    before = cell.pad_left;
    beside = cell.pad_bottom;
    spare = cell.width - cell.pad_right;
  } else if (cell.direction == Cell::Direction::kDown) {
    before = cell.pad_right;
    beside = cell.pad_top;
    spare = cell.width - cell.pad_left;
  }
  spare = std::max(0.0, spare - before - HeightOf(cell.strips));
  double y = corner.y() + before;
  if (cell.align == Cell::VerticalAlign::kCentre) y += spare / 2;
  if (cell.align == Cell::VerticalAlign::kBottom) y += spare;
  for (const auto& strip : cell.strips) {
    y += strip->space_before;
    use(*strip, QPointF(corner.x() + beside, y));
    y += strip->height + strip->space_after;
  }
}

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

}  // namespace

double CellBox::ContentHeight() const {
  const double content = direction == Direction::kAcross ? HeightOf(strips) : line_length;
  return pad_top + content + pad_bottom;
}

void RowStrip::Draw(QPainter& painter, QPointF corner) const {
  for (const CellBox& cell : cells) {
    const QRectF area(corner.x() + cell.x, corner.y(), cell.width, cell.height);
    if (!cell.covered && cell.shading.isValid()) painter.fillRect(area, cell.shading);
  }
  for (const LineAbove& line : lines_above)
    DrawLineBelow(painter, line.rule, corner + QPointF(line.x, 0), line.width);
  for (const CellBox& cell : cells) {
    if (cell.covered) continue;
    const QRectF area(corner.x() + cell.x, corner.y(), cell.width, cell.height);
    DrawContent(painter, area, cell);
    DrawEdges(painter, area, cell);
  }
}

void RowStrip::DrawContent(QPainter& painter, const QRectF& area, const CellBox& cell) const {
  const bool across = cell.direction == Cell::Direction::kAcross;
  if (fixed_height || !across) painter.save();
  if (fixed_height) painter.setClipRect(area, Qt::IntersectClip);
  QPointF corner = area.topLeft();
  if (!across) {
    const bool up = cell.direction == Cell::Direction::kUp;
    painter.translate(up ? area.bottomLeft() : area.topRight());
    painter.rotate(up ? -90 : 90);
    corner = QPointF();
  }
  ForEachStrip(cell, corner,
               [&](const Strip& strip, QPointF place) { strip.Draw(painter, place); });
  if (fixed_height || !across) painter.restore();
}

// What is anchored in text up or down the page has no place of its own.
void RowStrip::CollectFloating(QPointF corner, std::vector<PlacedFloating>* found) const {
  for (const CellBox& cell : cells) {
    if (cell.covered || cell.direction != Cell::Direction::kAcross) continue;
    ForEachStrip(cell, corner + QPointF(cell.x, 0),
                 [&](const Strip& strip, QPointF place) { strip.CollectFloating(place, found); });
  }
}

// Of a row that goes on on the next page, each cell is divided elsewhere.
void RowStrip::CollectRanges(std::vector<TextRange>* found) const {
  for (const CellBox& cell : cells) {
    if (cell.covered) continue;
    for (const auto& strip : cell.strips) strip->CollectRanges(found);
  }
}

std::shared_ptr<Strip> RowStrip::TakeTop(double available_height) {
  if (fixed_height || height <= available_height || available_height <= 0) return nullptr;
  if (whole && height <= page_height) return nullptr;
  const auto across = [](const CellBox& cell) {
    return cell.direction == Cell::Direction::kAcross;
  };
  if (!std::all_of(cells.begin(), cells.end(), across)) return nullptr;
  auto top = std::make_shared<RowStrip>();
  top->page_height = page_height;
  top->begin = begin;
  top->space_before = space_before;
  top->lines_above = lines_above;
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
  height = rest ? rest_height + line_below : std::max(height - available_height, 1.0);
  space_before = 0;
  bool first = true;
  for (CellBox& cell : cells) {
    cell.height = std::max(height - line_below, 1.0);
    if (first && !cell.strips.empty()) {
      begin = cell.strips.front()->begin;
      first = false;
    }
  }
  if (first) begin = end - 1;
  top->end = begin;
  return top;
}

}  // namespace tenora::printing
