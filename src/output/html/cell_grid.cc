#include "output/html/cell_grid.h"

#include <algorithm>
#include <cstdint>

namespace tenora::html {
namespace {

using richtext::Cell;

constexpr int kNarrowestCell = 40;  // twips
// Word processors move the rows of one table by as much; less than the narrowest cell, so that
// every cell keeps a column.
constexpr int kOneEdge = 30;
constexpr int kFarthest = 31'680;  // no paper is wider; bounds the number of columns

struct PlacedCell {
  const Cell* cell;
  int left, right;
};

// A row's cells with the parts of a horizontally merged one joined.
std::vector<PlacedCell> PlacedCells(const richtext::Row& row) {
  std::vector<PlacedCell> placed;
  int left = std::clamp(row.left_edge, -kFarthest, kFarthest);
  for (const Cell& cell : row.cells) {
    const int right = std::max(std::min(cell.right_edge, kFarthest), left + kNarrowestCell);
    const bool joins = cell.horizontal_merge == Cell::Merge::kContinued && !placed.empty() &&
                       placed.back().cell->horizontal_merge == Cell::Merge::kFirst;
    if (joins) {
      placed.back().right = right;
    } else {
      placed.push_back({&cell, left, right});
    }
    left = right;
  }
  return placed;
}

// The first of each group of edges that count as one.
std::vector<int> OneOfEach(std::vector<int> edges) {
  std::ranges::sort(edges);
  std::vector<int> kept;
  for (const int edge : edges) {
    if (kept.empty() || edge > kept.back() + kOneEdge) kept.push_back(edge);
  }
  return kept;
}

std::size_t EdgeNumber(const std::vector<int>& edges, int edge) {
  return static_cast<std::size_t>(std::ranges::upper_bound(edges, edge) - edges.begin()) - 1;
}

bool Continues(const GridCell& cell) {
  return cell.cell != nullptr && cell.cell->vertical_merge == Cell::Merge::kContinued;
}

// Cells that are merged downwards span the rows whose cells continue them.
void SpanRows(std::vector<std::vector<GridCell>>* rows) {
  for (std::size_t i = 0; i < rows->size(); ++i) {
    for (GridCell& cell : (*rows)[i]) {
      if (cell.covered || cell.cell == nullptr || cell.cell->vertical_merge != Cell::Merge::kFirst)
        continue;
      for (std::size_t below = i + 1; below < rows->size(); ++below, ++cell.rows) {
        std::vector<GridCell>& cells = (*rows)[below];
        const auto found = std::ranges::lower_bound(cells, cell.column, {}, &GridCell::column);
        if (found == cells.end() || found->column != cell.column || !Continues(*found) ||
            found->columns != cell.columns)
          break;
        found->covered = true;
      }
    }
  }
}

}  // namespace

CellGrid GridOf(const richtext::Table& table) {
  std::vector<std::vector<PlacedCell>> placed;
  std::vector<int> edges;
  for (const richtext::Row& row : table.rows) {
    placed.push_back(PlacedCells(row));
    for (const PlacedCell& cell : placed.back()) {
      edges.push_back(cell.left);
      edges.push_back(cell.right);
    }
  }
  if (edges.empty()) edges = {0, kNarrowestCell};
  CellGrid grid;
  grid.edges = OneOfEach(std::move(edges));
  for (const std::vector<PlacedCell>& row : placed) {
    std::vector<GridCell>& cells = grid.rows.emplace_back();
    for (const PlacedCell& cell : row) {
      const std::size_t left = EdgeNumber(grid.edges, cell.left);
      const std::size_t right = EdgeNumber(grid.edges, cell.right);
      if (cells.empty() && left > 0) cells.push_back({nullptr, 0, left});
      cells.push_back({cell.cell, left, right - left});
    }
  }
  SpanRows(&grid.rows);
  return grid;
}

}  // namespace tenora::html
