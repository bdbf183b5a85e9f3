#include "ui/editor/tables/table_grid.h"

#include <algorithm>
#include <utility>

namespace tenora {
namespace {

using richtext::Cell;
using richtext::Row;
using richtext::Table;

constexpr int kSameEdge = 20;  // twips; edges closer than this are the same

// The cells of a row as groups that are merged across.
std::vector<GridCell> Groups(const Row& row) {
  std::vector<GridCell> groups;
  for (std::size_t i = 0; i < row.cells.size();) {
    std::size_t next = i + 1;
    if (row.cells[i].horizontal_merge == Cell::Merge::kFirst) {
      while (next < row.cells.size() && row.cells[next].horizontal_merge == Cell::Merge::kContinued)
        ++next;
    }
    GridCell group;
    group.first = static_cast<int>(i);
    group.count = static_cast<int>(next - i);
    group.covered = row.cells[i].vertical_merge == Cell::Merge::kContinued;
    groups.push_back(group);
    i = next;
  }
  return groups;
}

int RightEdge(const Row& row, const GridCell& group) {
  return row.cells[static_cast<std::size_t>(group.first + group.count - 1)].right_edge;
}

int ColumnAt(const std::vector<int>& edges, int position) {
  const auto found = std::lower_bound(edges.begin(), edges.end(), position - kSameEdge);
  return static_cast<int>(std::min(found, edges.end() - 1) - edges.begin());
}

std::vector<int> DistinctEdges(const Table& table) {
  std::vector<int> all;
  for (const Row& row : table.rows) {
    all.push_back(row.left_edge);
    for (const GridCell& group : Groups(row)) all.push_back(RightEdge(row, group));
  }
  std::sort(all.begin(), all.end());
  std::vector<int> edges;
  for (const int edge : all) {
    if (edges.empty() || edge - edges.back() > kSameEdge) edges.push_back(edge);
  }
  return edges;
}

// Assigns the row's cells to columns; false where a cell would span none.
bool Place(const Row& row, const std::vector<int>& edges, std::vector<GridCell>* cells) {
  const int columns = static_cast<int>(edges.size()) - 1;
  int column = ColumnAt(edges, row.left_edge);
  if (column > 0) cells->push_back({.column = 0, .span = column, .absent = true});
  for (GridCell group : Groups(row)) {
    const int end = ColumnAt(edges, RightEdge(row, group));
    if (end <= column) return false;
    group.column = column;
    group.span = end - column;
    cells->push_back(group);
    column = end;
  }
  if (column < columns)
    cells->push_back({.column = column, .span = columns - column, .absent = true});
  return true;
}

// A cell merged downwards covers the continued cells below it that span the same columns.
void CoverRows(const Table& table, TableGrid* grid) {
  const auto below = [&](std::size_t row, const GridCell& cell) -> GridCell* {
    for (GridCell& other : grid->rows[row]) {
      if (other.covered && other.column == cell.column && other.span == cell.span) return &other;
    }
    return nullptr;
  };
  std::vector<std::pair<std::size_t, GridCell*>> truly_covered;
  for (std::size_t row = 0; row < grid->rows.size(); ++row) {
    for (GridCell& cell : grid->rows[row]) {
      if (cell.absent || cell.covered) continue;
      const Row& source = table.rows[grid->first_row + row];
      if (source.cells[static_cast<std::size_t>(cell.first)].vertical_merge != Cell::Merge::kFirst)
        continue;
      while (row + static_cast<std::size_t>(cell.rows) < grid->rows.size()) {
        GridCell* other = below(row + static_cast<std::size_t>(cell.rows), cell);
        if (other == nullptr) break;
        truly_covered.emplace_back(row, other);
        ++cell.rows;
      }
    }
  }
  for (auto& cells : grid->rows) {
    for (GridCell& cell : cells) cell.covered = false;
  }
  for (const auto& [row, cell] : truly_covered) cell->covered = true;
}

// One grid for each group of rows with the same number of cells, in columns of equal width.
std::vector<TableGrid> GridsByCount(const Table& table) {
  std::vector<TableGrid> grids;
  for (std::size_t i = 0; i < table.rows.size(); ++i) {
    const Row& row = table.rows[i];
    std::vector<GridCell> groups = Groups(row);
    for (std::size_t g = 0; g < groups.size(); ++g) {
      groups[g].column = static_cast<int>(g);
      groups[g].covered = false;
    }
    const int columns = static_cast<int>(groups.size());
    if (grids.empty() || grids.back().columns() != columns) {
      TableGrid grid;
      grid.first_row = i;
      const int width =
          std::max(row.cells.back().right_edge - row.left_edge, columns * kSameEdge * 2);
      for (int c = 0; c <= columns; ++c) grid.edges.push_back(row.left_edge + width * c / columns);
      grids.push_back(std::move(grid));
    }
    grids.back().rows.push_back(std::move(groups));
  }
  return grids;
}

}  // namespace

std::vector<TableGrid> MakeGrids(const Table& table) {
  TableGrid grid;
  grid.edges = DistinctEdges(table);
  std::size_t cells = 0, merges = 0;
  bool placed = grid.edges.size() >= 2;
  for (const Row& row : table.rows) {
    cells += row.cells.size();
    grid.rows.emplace_back();
    placed = placed && Place(row, grid.edges, &grid.rows.back());
    for (const GridCell& cell : grid.rows.back()) merges += cell.span > 1;
  }
  // Qt creates every cell of the grid, and each merge takes time in proportion to their number.
  constexpr std::size_t kMostSlack = 4096, kMostWork = 100'000'000;
  const std::size_t places = grid.rows.size() * grid.edges.size();
  if (!placed || places > 6 * cells + kMostSlack || merges * places > kMostWork)
    return GridsByCount(table);
  CoverRows(table, &grid);
  std::vector<TableGrid> grids;
  grids.push_back(std::move(grid));
  return grids;
}

}  // namespace tenora
