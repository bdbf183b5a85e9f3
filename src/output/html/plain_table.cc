#include "output/html/plain_table.h"

#include <algorithm>
#include <utility>

#include "output/html/cell_grid.h"
#include "output/html/plain_lines.h"

namespace tenora::html {
namespace {

using richtext::Paragraph;

constexpr std::size_t kUsualWidth = 78;  // characters that every mail program shows in a line
constexpr std::size_t kGap = 2;          // between columns
constexpr std::size_t kNarrowest = 6;    // that a column is broken to

std::size_t WidthOf(const std::vector<std::string>& lines) {
  std::size_t width = 0;
  for (const std::string& line : lines) width = std::max(width, CharactersIn(line));
  return width;
}

bool IsRightAligned(const richtext::Cell& cell) {
  const auto* first = cell.blocks.empty() ? nullptr : std::get_if<Paragraph>(&cell.blocks.front());
  return first != nullptr && first->format.alignment == richtext::Alignment::kRight;
}

class PlainTableWriter {
 public:
  PlainTableWriter(PlainContext& context, const richtext::Table& table, std::size_t width)
      : context_(context), grid_(GridOf(table)), widths_(grid_.columns()) {
    FitColumns();
    Narrow(width == 0 ? kUsualWidth : width);
  }

  std::vector<std::string> Write() const {
    std::vector<std::string> lines;
    for (const std::vector<GridCell>& row : grid_.rows) {
      for (std::string& line : RowLines(row)) {
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(std::move(line));
      }
    }
    return lines;
  }

 private:
  std::vector<std::string> TextOf(const GridCell& cell, std::size_t width) const {
    if (cell.cell == nullptr || cell.covered) return {};
    auto found = context_.cells.find(cell.cell);
    if (found == context_.cells.end()) {
      std::vector<std::string> lines = PlainLines(context_, cell.cell->blocks, kUsualWidth);
      found = context_.cells.emplace(cell.cell, std::move(lines)).first;
    }
    if (WidthOf(found->second) <= width) return found->second;
    return PlainLines(context_, cell.cell->blocks, width);
  }

  // Columns as wide as their text. What a cell over several columns needs beyond them goes to the
  // last of them.
  void FitColumns() {
    for (const bool spanning : {false, true}) {
      for (const std::vector<GridCell>& row : grid_.rows) {
        for (const GridCell& cell : row) {
          if ((cell.columns > 1) != spanning) continue;
          const std::size_t needed = WidthOf(TextOf(cell, kUsualWidth)), has = SpanWidth(cell);
          if (needed > has) widths_[cell.column + cell.columns - 1] += needed - has;
        }
      }
    }
  }

  // Takes from the widest columns what the line has no room for.
  void Narrow(std::size_t most) {
    const auto shown = static_cast<std::size_t>(
        std::ranges::count_if(widths_, [](std::size_t width) { return width > 0; }));
    const std::size_t gaps = shown == 0 ? 0 : (shown - 1) * kGap;
    std::size_t total = 0;
    for (const std::size_t width : widths_) total += width;
    if (total + gaps <= most) return;
    const std::size_t room = most > gaps ? most - gaps : 0;
    // The columns that need no more than an equal share keep their width; the others share.
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < widths_.size(); ++i) {
      if (widths_[i] > 0) order.push_back(i);
    }
    std::ranges::sort(order, {}, [this](std::size_t i) { return widths_[i]; });
    std::size_t left = room;
    for (std::size_t i = 0; i < order.size(); ++i) {
      const std::size_t share = std::max(left / (order.size() - i), kNarrowest);
      widths_[order[i]] = std::min(widths_[order[i]], share);
      left -= std::min(left, widths_[order[i]]);
    }
  }

  // Columns without text take no room.
  std::size_t SpanWidth(const GridCell& cell) const {
    std::size_t width = 0;
    for (std::size_t i = cell.column; i < cell.column + cell.columns; ++i) {
      if (widths_[i] == 0) continue;
      width += widths_[i] + (width > 0 ? kGap : 0);
    }
    return width;
  }

  std::vector<std::string> RowLines(const std::vector<GridCell>& row) const {
    std::vector<std::string> lines;
    std::size_t left = 0;
    for (const GridCell& cell : row) {
      const std::size_t width = SpanWidth(cell);
      if (width == 0) continue;
      const std::vector<std::string> text = TextOf(cell, width);
      if (lines.size() < text.size()) lines.resize(text.size());
      for (std::size_t i = 0; i < text.size(); ++i) {
        std::size_t begin = left;
        if (IsRightAligned(*cell.cell)) begin += width - std::min(width, CharactersIn(text[i]));
        // A word that is longer than its column moves the next one.
        const std::size_t at = CharactersIn(lines[i]);
        const std::size_t gap = begin > at ? begin - at : at > 0 ? 1 : 0;
        if (!text[i].empty()) lines[i].append(gap, ' ').append(text[i]);
      }
      left += width + kGap;
    }
    return lines;
  }

  PlainContext& context_;
  CellGrid grid_;
  std::vector<std::size_t> widths_;  // characters, of the grid's columns
};

}  // namespace

std::vector<std::string> PlainTable(PlainContext& context, const richtext::Table& table,
                                    std::size_t width) {
  return PlainTableWriter(context, table, width).Write();
}

}  // namespace tenora::html
