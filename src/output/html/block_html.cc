#include "output/html/block_html.h"

#include <algorithm>
#include <array>
#include <memory>

#include "output/html/table_html.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/list_mark.h"
#include "platform/richtext/neighbours.h"

namespace tenora::html {
namespace {

using richtext::Alignment;
using richtext::Bullet;
using richtext::Paragraph;
using richtext::ParagraphFormat;

constexpr int kRoomForMark = 360;  // the least indent in which a program draws a list's mark
constexpr int kSingleLine = 240;   // \sl of single spacing
// A line's natural height by the size of its font.
constexpr double kLineHeight = 1.15;
constexpr double kTwipsPerHalfPoint = 10;
constexpr Rgb kBlack = 0;
constexpr int kNarrowestBox = 600;  // twips

struct ListTag {
  bool ordered = false;
  std::string_view type;  // of CSS
};

// The HTML list whose marks are the same; nothing for marks that HTML has no list for, as "(a)" and
// "1.2".
std::optional<ListTag> TagOf(const Bullet& bullet) {
  using Kind = Bullet::Kind;
  if (bullet.kind != Kind::kBullet && (!bullet.before.empty() || bullet.after != "."))
    return std::nullopt;
  const auto is_one_of = [&](std::initializer_list<std::string_view> marks) {
    return std::ranges::find(marks, bullet.before) != marks.end();
  };
  switch (bullet.kind) {
    case Kind::kDecimal:
      return ListTag{true, "decimal"};
    case Kind::kLowerLetter:
      return ListTag{true, "lower-alpha"};
    case Kind::kUpperLetter:
      return ListTag{true, "upper-alpha"};
    case Kind::kLowerRoman:
      return ListTag{true, "lower-roman"};
    case Kind::kUpperRoman:
      return ListTag{true, "upper-roman"};
    case Kind::kBullet:
      if (is_one_of({"", "\u2022", "\u00B7", "\u25CF"})) return ListTag{false, "disc"};
      if (is_one_of({"o", "\u25CB", "\u25E6"})) return ListTag{false, "circle"};
      if (is_one_of({"\u25AA", "\u25A0"})) return ListTag{false, "square"};
      return std::nullopt;
    case Kind::kNone:
      break;
  }
  return std::nullopt;
}

// Where the text of a list's item begins.
int TextLeft(const ParagraphFormat& format) {
  return format.first_indent < 0 ? format.left_indent
                                 : format.left_indent + format.first_indent + format.bullet.indent;
}

// "margin:" with one to four lengths.
std::string Margins(int top, int right, int bottom, int left) {
  // Programs drop negative margins, some with the whole style.
  const std::array<int, 4> lengths{std::max(top, 0), std::max(right, 0), std::max(bottom, 0),
                                   std::max(left, 0)};
  const auto equal = [&](std::size_t one, std::size_t other) {
    return lengths[one] == lengths[other] ||
           TenthsOfPoint(lengths[one]) == TenthsOfPoint(lengths[other]);
  };
  std::size_t count = 4;
  if (equal(3, 1)) {
    count = 3;
    if (equal(2, 0)) count = equal(1, 0) ? 1 : 2;
  }
  std::string css = "margin:";
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) css += ' ';
    AppendPoints(css, lengths[i]);
  }
  css += ';';
  return css;
}

std::string LineHeight(const ParagraphFormat& format, int half_points) {
  const double spacing = format.line_spacing;
  if (spacing == 0) return {};
  if (format.line_spacing_multiple) {
    const double lines = std::clamp(std::abs(spacing) / kSingleLine, 0.1, 50.0);
    if (lines == 1) return {};
    return "line-height:" + std::to_string(static_cast<int>(lines * kLineHeight * 100)) + "%;";
  }
  const double natural = half_points * kTwipsPerHalfPoint * kLineHeight;
  const double set = std::min(std::abs(spacing), 1440.0);
  if (spacing > 0) return set > natural ? "line-height:" + Points(set) + ";" : std::string();
  return "mso-line-height-rule:exactly;line-height:" + Points(set) + ";";
}

bool HasFrame(const ParagraphFormat& format) {
  return format.top.present || format.bottom.present || format.left.present ||
         format.right.present || format.shading > 0;
}

const Paragraph* ParagraphIn(const richtext::Block* block) {
  return block == nullptr ? nullptr : std::get_if<Paragraph>(block);
}

// Whether the frame of a paragraph goes on in the next block.
bool GoesOn(const ParagraphFormat& format, const richtext::Block* next) {
  const Paragraph* const other = ParagraphIn(next);
  return other != nullptr && richtext::SameFrame(format, other->format) &&
         other->format.shading == format.shading && !TagOf(other->format.bullet);
}

int FrameLeft(const ParagraphFormat& format) {
  return std::max(format.left_indent + std::min(format.first_indent, 0), 0);
}

}  // namespace

std::string ParagraphStyle(const HtmlContext& context, const Paragraph& paragraph,
                           const ShownText& text, const Inherited& around, Inherited* inside) {
  const CarriedLook carried = CarriedBy(context.looks, text, paragraph);
  const ParagraphFormat& format = paragraph.format;
  std::string css;
  if (format.alignment == Alignment::kCentre) css += "text-align:center;";
  if (format.alignment == Alignment::kRight) css += "text-align:right;";
  if (format.alignment == Alignment::kLeft && format.right_to_left) css += "text-align:left;";
  if (richtext::IsJustified(format.alignment)) css += "text-align:justify;";
  css += LineHeight(format, carried.half_points);
  AppendFontStyle(css, context.looks, around, carried.font, carried.half_points);
  *inside = around;
  inside->half_points = carried.half_points;
  if (carried.font != TextLook::kNoFont) inside->font = carried.font;
  if (carried.colour && carried.colour != around.colour) {
    AppendBackgroundStyle(css, {}, carried.colour);
    inside->colour = carried.colour;
  }
  return css;
}

void BlockHtml::Write(std::span<const richtext::Block> blocks) {
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (const auto* paragraph = std::get_if<Paragraph>(&blocks[i])) {
      // RTF ends a cell with a paragraph, also behind a nested table.
      const bool closes_cell =
          depth_ > 0 && i > 0 && i + 1 == blocks.size() &&
          std::holds_alternative<std::shared_ptr<richtext::Table>>(blocks[i - 1]);
      if (!closes_cell || richtext::Shows(blocks[i]))
        Write(*paragraph, i + 1 < blocks.size() ? &blocks[i + 1] : nullptr);
      continue;
    }
    CloseLists(0);
    counter_.EndAll();
    space_below_ = 0;
    joins_above_ = false;
    if (depth_ < kDeepestTable)
      WriteTable(context_, *std::get<std::shared_ptr<richtext::Table>>(blocks[i]), around_, depth_);
  }
  CloseLists(0);
}

// `next` is the block that follows, or null.
void BlockHtml::Write(const Paragraph& paragraph, const richtext::Block* next) {
  const ParagraphFormat& format = paragraph.format;
  const int number = counter_.Next(format);
  if (TagOf(format.bullet)) return WriteItem(paragraph, number, next);
  CloseLists(0);
  const std::vector<TextBox> boxes = BoxesIn(context_.parts, paragraph);
  if (!boxes.empty()) {
    WriteBoxes(boxes, around_.inherited);
    // A paragraph that only holds them would be an empty line.
    const bool plain = format.bullet.kind == Bullet::Kind::kNone && !HasFrame(format);
    if (plain && ShownText(context_.parts, paragraph).pieces().empty()) return;
  }
  auto [above, below] = SpacesOf(format, next);
  if (HasFrame(format)) {
    // The spaces above and below a frame are outside it.
    if (!framed_) {
      context_.html.append("<div style=\"").append(Margins(above, 0, 0, 0));
      OpenFrame(format);
      above = 0;
    }
    if (!GoesOn(format, next)) below = 0;
  }
  const int left = format.left_indent - around_.left;
  std::string style = Margins(above, format.right_indent - around_.right, below, left);
  if (format.first_indent > 0) style += "text-indent:" + Points(format.first_indent) + ";";
  const int hanging = std::max(format.first_indent, -std::max(left, 0));
  if (hanging < 0) {
    const std::string indent = Points(hanging);
    // Gmail takes a negative indent only as a calculation, Outlook only as a length.
    style += "text-indent:" + indent + ";text-indent:calc(" + indent + ");";
  }
  WriteElement("p", paragraph, std::move(style), richtext::ListMark(format.bullet, number));
  if (framed_ && !GoesOn(format, next)) CloseFrame();
}

void BlockHtml::WriteItem(const Paragraph& paragraph, int number, const richtext::Block* next) {
  const ParagraphFormat& format = paragraph.format;
  OpenListFor(format, number);
  const auto [above, below] = SpacesOf(format, next);
  std::string style = Margins(above, format.right_indent - around_.right, below, 0);
  const auto paper = context_.looks.Paper(format.shading);
  AppendBackgroundStyle(style, paper, paper ? std::optional(kBlack) : std::nullopt);
  WriteElement("li", paragraph, std::move(style), {});
}

// Leaves a list's item open: lists inside it follow.
void BlockHtml::WriteElement(std::string_view tag, const Paragraph& paragraph, std::string style,
                             std::string_view mark) {
  const ShownText text(context_.parts, paragraph);
  Inherited inside;
  style += ParagraphStyle(context_, paragraph, text, around_.inherited, &inside);
  style.pop_back();
  std::string& html = context_.html;
  html.append("<").append(tag);
  if (paragraph.format.right_to_left) html += " dir=\"rtl\"";
  html.append(" style=\"").append(style).append("\">");
  if (tag == "li") WriteBoxes(BoxesIn(context_.parts, paragraph), inside);
  InlineHtml inline_html(context_, inside, around_.width);
  if (!mark.empty()) inline_html.SetMark(mark, TextLeft(paragraph.format));
  inline_html.Write(paragraph, text);
  if (tag != "li") html.append("</").append(tag).append(">").append(context_.line_end);
}

void BlockHtml::WriteBoxes(const std::vector<TextBox>& boxes, const Inherited& inherited) {
  if (boxes.empty()) return;
  Surroundings around = around_;
  around.inherited = inherited;
  BlockHtml outside(context_, around, depth_);
  for (const TextBox& box : boxes) outside.WriteBox(box);
}

void BlockHtml::WriteBox(const TextBox& box) {
  const richtext::Figure& figure = *box.figure;
  const int width = std::max(figure.right - figure.left, kNarrowestBox);
  const Alignment side = SideOf(box, context_.parts.document.page, around_.width);
  std::string style = side == Alignment::kLeft     ? "margin:0 0 6pt"
                      : side == Alignment::kCentre ? "margin:0 auto 6pt"
                                                   : "margin:0 0 6pt auto";
  style.append(";max-width:").append(std::to_string(Pixels(width))).append("px;");
  Surroundings inside;
  inside.inherited = around_.inherited;
  inside.width = width;
  if (figure.line) {
    style += "border:1px solid";
    if (const auto line = Looks::Ink(*figure.line)) style.append(" ").append(ColourText(*line));
    style += ';';
  }
  const auto paper = figure.fill ? Looks::Paper(*figure.fill) : std::nullopt;
  if (paper) {
    AppendBackgroundStyle(style, paper, kBlack);
    inside.inherited.colour.reset();
  }
  if (figure.line || paper) {
    const richtext::Padding& inset = figure.inset;
    style.append("padding:").append(Points(inset.top)).append(" ").append(Points(inset.right));
    style.append(" ").append(Points(inset.bottom)).append(" ").append(Points(inset.left)) += ';';
  }
  style.pop_back();
  context_.html.append("<div style=\"").append(style).append("\">").append(context_.line_end);
  BlockHtml(context_, inside, depth_).Write(WithoutEmptyEnds(figure.blocks));
  context_.html.append("</div>").append(context_.line_end);
}

// Closes and opens lists so that an item with this format can follow.
void BlockHtml::OpenListFor(const ParagraphFormat& format, int number) {
  const auto nested = std::ranges::find_if(
      lists_, [&](const OpenList& list) { return list.left_indent > format.left_indent; });
  CloseLists(static_cast<std::size_t>(nested - lists_.begin()));
  const ListTag tag = *TagOf(format.bullet);
  std::string& html = context_.html;
  if (!lists_.empty() && lists_.back().left_indent == format.left_indent) {
    OpenList& list = lists_.back();
    const bool follows = !list.ordered || number == list.number + 1;
    if (list.bullet == format.bullet && follows) {
      html.append("</li>").append(context_.line_end);
      list.number = number;
      return;
    }
    CloseLists(lists_.size() - 1);
  }
  const int outer = lists_.empty() ? around_.left : lists_.back().text_left;
  const int text_left = std::max(TextLeft(format), outer + kRoomForMark);
  if (!lists_.empty()) html += context_.line_end;
  html += tag.ordered ? "<ol" : "<ul";
  if (tag.ordered && number != 1) html.append(" start=\"" + std::to_string(number) + "\"");
  html.append(" style=\"" + Margins(0, 0, 0, text_left - outer) + "padding:0;list-style-type:");
  html.append(tag.type).append("\">").append(context_.line_end);
  lists_.push_back({format.bullet, format.left_indent, text_left, number, tag.ordered});
}

void BlockHtml::CloseLists(std::size_t kept) {
  while (lists_.size() > kept) {
    context_.html.append(lists_.back().ordered ? "</li></ol>" : "</li></ul>");
    context_.html.append(context_.line_end);
    lists_.pop_back();
  }
}

// Paragraphs in one frame share an element, which takes their indent and the space below.
void BlockHtml::OpenFrame(const ParagraphFormat& format) {
  const int left = std::max(FrameLeft(format) - around_.left, 0);
  std::string style;
  if (left > 0) style += "margin-left:" + Points(left) + ";";
  if (format.space_after > 0) style += "margin-bottom:" + Points(format.space_after) + ";";
  const Borders borders{format.top, format.right, format.bottom, format.left};
  if (borders.Any()) {
    AppendBorderStyle(style, context_.looks, borders);
    style += "padding:";
    for (const auto* side : {&format.top, &format.right, &format.bottom, &format.left})
      style += Points(side->present ? side->space : 0) + " ";
    style.back() = ';';
  }
  outside_frame_ = around_;
  const auto paper = context_.looks.Paper(format.shading);
  if (paper) {
    AppendBackgroundStyle(style, paper, kBlack);
    around_.inherited.colour.reset();
  }
  if (!style.empty()) style.pop_back();
  context_.html.append(style).append("\">").append(context_.line_end);
  around_.left += left;
  framed_ = true;
}

void BlockHtml::CloseFrame() {
  context_.html.append("</div>").append(context_.line_end);
  framed_ = false;
  around_ = outside_frame_;
}

// HTML keeps the larger of the spaces between two paragraphs, most letters add them.
BlockHtml::Spaces BlockHtml::SpacesOf(const ParagraphFormat& format, const richtext::Block* next) {
  const Paragraph* const below = ParagraphIn(next);
  const bool joins_below = below != nullptr && richtext::WithoutSpaceBetween(format, below->format);
  Spaces spaces;
  const int added = richtext::HasHtmlSpacing(context_.parts.document) ? 0 : space_below_;
  if (format.space_before > 0 && !joins_above_) spaces.above = format.space_before + added;
  if (!joins_below) spaces.below = format.space_after;
  space_below_ = spaces.below;
  joins_above_ = joins_below;
  return spaces;
}

}  // namespace tenora::html
