#include "output/html/table_html.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "output/html/block_html.h"
#include "output/html/cell_grid.h"
#include "output/html/inline_html.h"

namespace tenora::html {
namespace {

using richtext::Alignment;
using richtext::Cell;
using richtext::Paragraph;
using richtext::Row;

constexpr Rgb kBlack = 0;
constexpr int kNarrowestText = 100;  // twips
constexpr double kFullWidth = 0.9;   // a table this wide, as a share of the text, fills it
constexpr int kLowestRow = 300;      // twips; text makes a row as high by itself
constexpr int kHighestRow = 15'000;

std::string Attribute(const char* name, std::size_t value) {
  return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
}

// The padding in CSS's order. Cells without their own have the row's half gap at the sides.
std::string PaddingStyle(const Row& row, const richtext::Padding& padding) {
  const int gap = std::max(row.half_gap, 0);
  const auto side = [](int own, int usual) { return Points(own < 0 ? usual : own); };
  const std::string top = side(padding.top, 0), right = side(padding.right, gap);
  const std::string bottom = side(padding.bottom, 0), left = side(padding.left, gap);
  if (top == bottom && right == left && top == right) return "padding:" + top + ";";
  if (top == bottom && right == left) return "padding:" + top + " " + right + ";";
  return "padding:" + top + " " + right + " " + bottom + " " + left + ";";
}

// The only paragraph of a cell whose style the cell itself can have; null for other cells.
const Paragraph* OnlyParagraph(const Cell& cell) {
  if (cell.blocks.size() != 1) return nullptr;
  const auto* paragraph = std::get_if<Paragraph>(&cell.blocks.front());
  if (paragraph == nullptr) return nullptr;
  const richtext::ParagraphFormat& format = paragraph->format;
  const bool plain = format.bullet.kind == richtext::Bullet::Kind::kNone &&
                     format.left_indent <= 0 && format.right_indent <= 0 &&
                     format.first_indent == 0 && format.space_before == 0 &&
                     TextBoxesOf(*paragraph).empty() && format.space_after == 0 &&
                     format.shading <= 0 && !format.top.present && !format.bottom.present &&
                     !format.left.present && !format.right.present;
  return plain ? paragraph : nullptr;
}

class TableWriter {
 public:
  TableWriter(HtmlContext& context, const richtext::Table& table, const Surroundings& around,
              int depth)
      : context_(context),
        table_(table),
        around_(around),
        depth_(depth),
        grid_(GridOf(table)),
        width_(std::max(grid_.width(), 1)) {}

  void Write() {
    std::string& html = context_.html;
    html += "<table cellspacing=\"0\" cellpadding=\"0\" border=\"0\"";
    WriteTableWidth();
    html.append(">").append(context_.line_end);
    for (std::size_t i = 0; i < grid_.rows.size(); ++i) {
      html.append("<tr valign=\"top\">").append(context_.line_end);
      bool first = true;
      for (const GridCell& cell : grid_.rows[i]) {
        if (cell.covered) continue;
        WriteCell(table_.rows[i], cell, StatesWidths(i), first);
        first = false;
      }
      if (first) html += "<td></td>";
      html.append("</tr>").append(context_.line_end);
    }
    html.append("</table>").append(context_.line_end);
  }

 private:
  void WriteTableWidth() {
    std::string& html = context_.html;
    std::string style = "border-collapse:collapse";
    const int room = around_.width - around_.left - around_.right;
    const bool full = width_ >= kFullWidth * room;
    if (full) {
      html += " width=\"100%\"";
    } else {
      html += Attribute("width", static_cast<std::size_t>(Pixels(width_)));
      style += ";max-width:100%";
    }
    const Alignment alignment =
        table_.rows.empty() ? Alignment::kLeft : table_.rows.front().alignment;
    // Word processors move a table so that its text, not its edge, is in line with the rest.
    const int gap = table_.rows.empty() ? 0 : std::max(table_.rows.front().half_gap, 0);
    const int left = grid_.edges.front() + gap - around_.left;
    if (alignment == Alignment::kCentre) {
      html += " align=\"center\"";
    } else if (alignment == Alignment::kRight) {
      style += ";margin-left:auto";
    } else if (left > gap && !full) {
      style += ";margin-left:" + Points(left - gap);
    }
    html.append(" style=\"").append(style).append("\"");
  }

  // Widths are stated by the first row and where the cells' edges change.
  bool StatesWidths(std::size_t row) const {
    if (row == 0) return true;
    const auto& cells = grid_.rows[row];
    const auto& above = grid_.rows[row - 1];
    return !std::ranges::equal(cells, above, [](const GridCell& one, const GridCell& other) {
      return one.column == other.column && one.columns == other.columns;
    });
  }

  void WriteCell(const Row& row, const GridCell& place, bool states_width, bool first) {
    std::string& html = context_.html;
    html += "<td";
    if (states_width) {
      const std::int64_t share = std::int64_t{100} * grid_.Width(place) / width_;
      html.append(" width=\"").append(std::to_string(share)).append("%\"");
    }
    if (place.columns > 1) html += Attribute("colspan", place.columns);
    if (place.rows > 1) html += Attribute("rowspan", place.rows);
    const int height = std::min(std::abs(std::max(row.height, -kHighestRow)), kHighestRow);
    if (first && height > kLowestRow)
      html += Attribute("height", static_cast<std::size_t>(Pixels(height)));
    if (place.cell == nullptr) {
      html.append("></td>").append(context_.line_end);
      return;
    }
    const Cell& cell = *place.cell;
    if (cell.vertical_align == Cell::VerticalAlign::kCentre) html += " valign=\"middle\"";
    if (cell.vertical_align == Cell::VerticalAlign::kBottom) html += " valign=\"bottom\"";
    WriteContent(row, cell, grid_.Width(place));
    html.append("</td>").append(context_.line_end);
  }

  // The rest of the opening tag, and the text. A cell states its font anew: neither all programs
  // nor all of their modes let tables inherit it.
  void WriteContent(const Row& row, const Cell& cell, int width) {
    std::string& html = context_.html;
    std::string style = PaddingStyle(row, cell.padding);
    const Borders borders{cell.top, cell.right, cell.bottom, cell.left};
    if (borders.Any()) AppendBorderStyle(style, context_.looks, borders);
    const auto paper = context_.looks.Paper(cell.shading);
    Surroundings inside;
    const int gaps = (cell.padding.left < 0 ? row.half_gap : cell.padding.left) +
                     (cell.padding.right < 0 ? row.half_gap : cell.padding.right);
    inside.width = std::max(width - gaps, kNarrowestText);
    const Paragraph* const only = OnlyParagraph(cell);
    const auto* first =
        cell.blocks.empty() ? nullptr : std::get_if<Paragraph>(&cell.blocks.front());
    if (only != nullptr) {
      const ShownText text(context_.parts, *only);
      Inherited inherited;
      std::string text_style = ParagraphStyle(context_, *only, text, {}, &inherited);
      AppendBackgroundStyle(style, paper,
                            paper && !inherited.colour ? std::optional(kBlack) : std::nullopt);
      style += text_style;
      style.pop_back();
      html.append(only->format.right_to_left ? " dir=\"rtl\"" : "");
      html.append(" style=\"").append(style).append("\">");
      InlineHtml(context_, inherited, inside.width).Write(*only, text);
      return;
    }
    AppendBackgroundStyle(style, paper, paper ? std::optional(kBlack) : std::nullopt);
    if (first != nullptr) {
      const ShownText text(context_.parts, *first);
      const CarriedLook carried = CarriedBy(context_.looks, text, *first);
      AppendFontStyle(style, context_.looks, {}, carried.font, carried.half_points);
      inside.inherited.font = carried.font;
      inside.inherited.half_points = carried.half_points;
    }
    style.pop_back();
    html.append(" style=\"").append(style).append("\">").append(context_.line_end);
    BlockHtml(context_, inside, depth_ + 1).Write(cell.blocks);
  }

  HtmlContext& context_;
  const richtext::Table& table_;
  const Surroundings& around_;
  int depth_;
  CellGrid grid_;
  int width_;  // twips
};

}  // namespace

void WriteTable(HtmlContext& context, const richtext::Table& table, const Surroundings& around,
                int depth) {
  TableWriter(context, table, around, depth).Write();
}

}  // namespace tenora::html
