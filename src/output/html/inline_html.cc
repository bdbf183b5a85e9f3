#include "output/html/inline_html.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>

#include "output/html/html_characters.h"
#include "output/html/tab_stops.h"
#include "output/html/text_lengths.h"

namespace tenora::html {
namespace {

using Kind = ShownPiece::Kind;
using richtext::TabStop;
using richtext::Underline;

constexpr const char* kBlank = "&nbsp;";
constexpr const char* kUnalignedTab = "&nbsp;&nbsp;&nbsp; ";
constexpr double kSureShare = 0.97;
constexpr std::size_t kManyBlanks = 40;  // in a row, that might fill a line
constexpr int kNarrowWindow = 4500;      // twips, of a telephone
constexpr int kMostFilling = 200;        // characters for one tab

std::string_view UnderlineTag(Underline kind) {
  switch (kind) {
    case Underline::kNone:
      return {};
    case Underline::kDouble:
      return "<u style=\"text-decoration-style:double\">";
    case Underline::kDotted:
      return "<u style=\"text-decoration-style:dotted\">";
    case Underline::kDash:
      return "<u style=\"text-decoration-style:dashed\">";
    case Underline::kWave:
      return "<u style=\"text-decoration-style:wavy\">";
    case Underline::kThick:
      return "<u style=\"text-decoration-thickness:2px\">";
    case Underline::kSingle:
    case Underline::kWords:
      break;
  }
  return "<u>";
}

// The text with no more blanks in a row. On paper those that have no room hang over the line's end,
// as behind a rule made of underlined blanks; in HTML they would begin further lines.
std::string WithBlanksUpTo(std::string_view text, std::size_t most) {
  std::string kept;
  std::size_t blanks = 0;
  for (const char c : text) {
    blanks = c == ' ' ? blanks + 1 : 0;
    if (blanks <= most) kept += c;
  }
  return kept;
}

bool IsText(const ShownPiece& piece) {
  return piece.kind == Kind::kText || piece.kind == Kind::kNoteMark;
}

// What stands for a picture that cannot be shown.
const char* Caption(richtext::Picture::Kind kind) {
  if (kind == richtext::Picture::Kind::kWmf) return "[WMF picture]";
  return kind == richtext::Picture::Kind::kEmf ? "[EMF picture]" : "[Picture]";
}

}  // namespace

CarriedLook CarriedBy(const Looks& looks, const ShownText& text,
                      const richtext::Paragraph& source) {
  CarriedLook carried;
  TextLengths lengths;
  bool first = true;
  for (const ShownPiece& piece : text.pieces()) {
    if (!IsText(piece) && piece.kind != Kind::kTab) continue;
    const TextLook look = looks.Of(*piece.format);
    lengths.Add({look.font, look.half_points}, piece.text.size() + 1);
    if (first) carried.colour = look.colour;
    if (look.colour != carried.colour || look.background) carried.colour.reset();
    first = false;
  }
  if (lengths.empty()) {
    const TextLook look = looks.Of(source.mark);
    carried.font = look.font;
    carried.half_points = look.half_points;
    return carried;
  }
  std::tie(carried.font, carried.half_points) = lengths.Most();
  return carried;
}

void InlineHtml::Write(const richtext::Paragraph& paragraph, const ShownText& text) {
  const std::vector<ShownPiece>& pieces = text.pieces();
  format_ = &paragraph.format;
  measure_ = !mark_.empty() || text.HasTabs();
  x_ = format_->left_indent + format_->first_indent;
  if (!mark_.empty()) WriteMark(pieces.empty() ? paragraph.mark : *pieces.front().format);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (pieces[i].kind == Kind::kTab) {
      WriteTab(pieces, i);
    } else {
      Write(pieces[i]);
    }
  }
  CloseTags(0);
  // A break at the end begins one more line, unless it is that of a page.
  if (at_line_start_ && (pieces.empty() || pieces.back().kind != Kind::kPageBreak))
    context_.html += kBlank;
}

void InlineHtml::WriteMark(const richtext::CharFormat& format) {
  ShowAs(context_.looks.Of(format), {});
  WriteEscaped(mark_);
  x_ += WidthOf(mark_, format);
  WriteFilling(mark_target_ - x_, '\0', format);
  x_ = std::max(x_, mark_target_);
}

void InlineHtml::Write(const ShownPiece& piece) {
  switch (piece.kind) {
    case Kind::kText:
    case Kind::kNoteMark:
      WriteText(piece);
      break;
    case Kind::kPicture:
      ShowAs(context_.looks.Of(*piece.format), piece.link);
      WritePicture(piece);
      at_line_start_ = behind_blank_ = false;
      break;
    case Kind::kPageBreak:
      // An e-mail has no pages; the text goes on in a new line.
      if (at_line_start_) break;
      [[fallthrough]];
    case Kind::kLineBreak:
      if (at_line_start_) context_.html += kBlank;
      context_.html.append("<br>").append(context_.line_end);
      at_line_start_ = true;
      behind_blank_ = false;
      x_ = format_->left_indent;
      break;
    case Kind::kTab:
      break;
  }
}

void InlineHtml::WriteText(const ShownPiece& piece) {
  TextLook look = context_.looks.Of(*piece.format);
  if (measure_) Advance(piece);
  if (look.underline == Underline::kWords) return WriteWords(piece.text, look, piece.link);
  ShowAs(look, piece.link);
  if (piece.text.find(std::string(kManyBlanks, ' ')) == std::string_view::npos)
    return WriteEscaped(piece.text);
  const double room = std::max(width_ - format_->left_indent - format_->right_indent, 1);
  WriteEscaped(
      WithBlanksUpTo(piece.text, static_cast<std::size_t>(room / WidthOf(" ", *piece.format))));
}

// Moves on by the width of a text, which may go on in further lines; blanks at a line's end take no
// room.
void InlineHtml::Advance(const ShownPiece& piece) {
  const double right = std::max(width_ - format_->right_indent, format_->left_indent + 1);
  const double line = right - format_->left_indent;
  const std::string_view seen = piece.text.substr(0, piece.text.find_last_not_of(' ') + 1);
  const double end = x_ + WidthOf(seen, *piece.format);
  if (end <= right) {
    x_ = std::min(x_ + WidthOf(piece.text, *piece.format), right);
  } else {
    x_ = format_->left_indent + std::fmod(end - right, line);
  }
}

// Underlines the words and not the blanks between them.
void InlineHtml::WriteWords(std::string_view text, const TextLook& look, std::string_view link) {
  TextLook blank = look;
  blank.underline = Underline::kNone;
  while (!text.empty()) {
    const bool word = text.front() != ' ';
    const std::size_t end =
        std::min(word ? text.find(' ') : text.find_first_not_of(' '), text.size());
    ShowAs(word ? look : blank, link);
    WriteEscaped(text.substr(0, end));
    text.remove_prefix(end);
  }
}

void InlineHtml::WriteTab(const std::vector<ShownPiece>& pieces, std::size_t index) {
  const richtext::CharFormat& format = *pieces[index].format;
  ShowAs(context_.looks.Of(format), pieces[index].link);
  const bool aligned =
      format_->alignment == richtext::Alignment::kLeft || richtext::IsJustified(format_->alignment);
  if (!aligned || format_->right_to_left) {
    context_.html += at_line_start_ ? "&nbsp;&nbsp;&nbsp;&nbsp;" : kUnalignedTab;
    behind_blank_ = !at_line_start_;
    at_line_start_ = false;
    return;
  }
  TabTarget target = NextTab(*format_, context_.parts.document.default_tab, x_);
  const double right = std::max(width_ - format_->right_indent, 1);
  target.position = std::min(target.position, right);
  // The text up to the next tab or break is aligned at the stop.
  for (std::size_t i = index + 1; i < pieces.size() && target.kind != TabStop::Kind::kLeft; ++i) {
    if (!IsText(pieces[i])) break;
    std::string_view text = pieces[i].text;
    const bool decimal = target.kind == TabStop::Kind::kDecimal;
    if (decimal) text = AheadOfDecimalPoint(text);
    const double width = WidthOf(text, *pieces[i].format);
    target.position -= target.kind == TabStop::Kind::kCentre ? width / 2 : width;
    if (decimal && text.size() < pieces[i].text.size()) break;
  }
  // Text that ends at the right edge must not be pushed over it by what is only an estimate.
  const double share = target.kind == TabStop::Kind::kLeft ? 1 : kSureShare;
  WriteFilling(share * (target.position - x_), LeaderCharacter(target.leader), format);
  x_ = std::max(x_, target.position);
}

void InlineHtml::WriteFilling(double width, char leader, const richtext::CharFormat& format) {
  const std::string_view character =
      leader == '\0' ? std::string_view(" ") : std::string_view(&leader, 1);
  const double one = std::max(WidthOf(character, format), 1.0);
  const int count =
      static_cast<int>(std::clamp(std::round(width / one), 1.0, double(kMostFilling)));
  if (leader != '\0') {
    context_.html.append(static_cast<std::size_t>(count), leader);
    behind_blank_ = false;
  } else {
    // Blanks of both kinds in turn are all shown, and a narrow window can break the line at them.
    for (int i = 0; i < count; ++i) {
      const bool breaks = !at_line_start_ && !behind_blank_;
      context_.html += breaks ? " " : kBlank;
      behind_blank_ = breaks;
      at_line_start_ = false;
    }
  }
  at_line_start_ = false;
}

void InlineHtml::WritePicture(const ShownPiece& piece) {
  const std::string source = context_.pictures ? context_.pictures(*piece.picture) : std::string();
  if (source.empty()) return WriteEscaped(Caption(piece.picture->kind));
  context_.html.append("<img src=\"");
  AppendEscaped(context_.html, source);
  context_.html.append("\" alt=\"\"");
  if (piece.width > 0 && piece.height > 0) {
    // As on paper, a picture is not wider than the text.
    const double scale = std::min(1.0, double(std::max(width_, 1)) / piece.width);
    const std::string width = std::to_string(Pixels(piece.width * scale));
    const std::string height = std::to_string(Pixels(piece.height * scale));
    // Some programs heed the attributes only, others the style only. Where a narrow window makes a
    // wide picture smaller, its height follows.
    const bool shrinks = scale * piece.width > kNarrowWindow;
    context_.html.append(
        " width=\"" + width + "\" height=\"" + height + "\" style=\"width:" + width + "px;" +
        (shrinks ? "max-width:100%;height:auto" : "height:" + height + "px") + "\"");
  }
  context_.html += '>';
}

// Of blanks in a row, and of those at a line's start, HTML shows none but the first.
void InlineHtml::WriteEscaped(std::string_view text) {
  std::size_t written = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != ' ') {
      at_line_start_ = behind_blank_ = false;
    } else if (!at_line_start_ && !behind_blank_) {
      behind_blank_ = true;
    } else {
      AppendEscaped(context_.html, text.substr(written, i - written));
      context_.html += kBlank;
      written = i + 1;
      at_line_start_ = behind_blank_ = false;
    }
  }
  AppendEscaped(context_.html, text.substr(written));
}

void InlineHtml::ShowAs(const TextLook& look, std::string_view link) {
  if (look == look_ && link == link_) return;
  std::vector<Tag> tags = TagsOf(look, link);
  const auto [kept, wanted] = std::ranges::mismatch(open_, tags);
  CloseTags(static_cast<std::size_t>(kept - open_.begin()));
  for (auto tag = wanted; tag != tags.end(); ++tag) {
    context_.html += tag->opening;
    open_.push_back(std::move(*tag));
  }
  look_ = look;
  link_ = link;
}

std::vector<InlineHtml::Tag> InlineHtml::TagsOf(const TextLook& look, std::string_view link) const {
  std::vector<Tag> tags;
  if (!link.empty()) {
    std::string opening = "<a href=\"";
    AppendEscaped(opening, link);
    tags.push_back({opening + "\">", "</a>"});
  }
  constexpr std::string_view kSpan = "<span style=\"";
  std::string span(kSpan);
  AppendStyle(span, look);
  if (span.size() > kSpan.size()) {
    span.back() = '"';  // in place of the last semicolon
    tags.push_back({std::move(span += '>'), "</span>"});
  }
  if (look.bold) tags.push_back({"<b>", "</b>"});
  if (look.italic) tags.push_back({"<i>", "</i>"});
  if (look.underline != Underline::kNone)
    tags.push_back({std::string(UnderlineTag(look.underline)), "</u>"});
  if (look.strike) tags.push_back({"<s>", "</s>"});
  if (look.script == richtext::Script::kSuper) tags.push_back({"<sup>", "</sup>"});
  if (look.script == richtext::Script::kSub) tags.push_back({"<sub>", "</sub>"});
  return tags;
}

// Declarations, each ended by a semicolon.
void InlineHtml::AppendStyle(std::string& css, const TextLook& look) const {
  AppendFontStyle(css, context_.looks, inherited_, look.font, look.half_points);
  if (look.background || look.colour != inherited_.colour)
    AppendBackgroundStyle(css, look.background, look.colour);
  if (look.all_caps) css += "text-transform:uppercase;";
  if (look.small_caps) css += "font-variant:small-caps;";
  if (look.raise_half_points != 0)
    css += "vertical-align:" + Points(look.raise_half_points * 10) + ";";
}

void InlineHtml::CloseTags(std::size_t kept) {
  while (open_.size() > kept) {
    context_.html += open_.back().closing;
    open_.pop_back();
  }
}

double InlineHtml::WidthOf(std::string_view text, const richtext::CharFormat& format) const {
  const auto font = static_cast<std::size_t>(std::max(format.font, 0));
  static const richtext::Font kNone;
  return TextWidth(
      text, format,
      font < context_.parts.document.fonts.size() ? context_.parts.document.fonts[font] : kNone);
}

}  // namespace tenora::html
