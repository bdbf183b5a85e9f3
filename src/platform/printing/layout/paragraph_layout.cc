#include "platform/printing/layout/paragraph_layout.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>

#include "platform/printing/document_length.h"
#include "platform/printing/layout/paragraph_items.h"
#include "platform/printing/layout/text_line.h"

namespace tenora::printing {
namespace {

using richtext::Alignment;
using richtext::TabStop;

constexpr double kUnbroken = 1e7;   // wider than any text
constexpr double kSlack = 1;        // rounding in the width of a line, twips
constexpr double kOverhang = 4;     // twips; glyphs that end this little beyond the edge still fit
constexpr double kNarrowest = 100;  // text width where the indents cross

// The decimal point of a number: the last point or comma that is not a separator of thousands.
qsizetype DecimalPoint(const QString& text) {
  const qsizetype point =
      std::max(text.lastIndexOf(QLatin1Char('.')), text.lastIndexOf(QLatin1Char(',')));
  if (point < 0) return text.size();
  qsizetype digits = 0;
  while (point + 1 + digits < text.size() && text[point + 1 + digits].isDigit()) ++digits;
  return digits == 3 && text[point] == QLatin1Char(',') ? text.size() : point;
}

// Trailing blanks do not count when a line is centred or right-aligned.
double WidthWithoutBlanks(const QString& text, const QTextLine& line) {
  const int start = line.textStart(), full = start + line.textLength();
  int end = full;
  while (end > start && text[end - 1] == QLatin1Char(' ')) --end;
  if (end == full) return line.naturalTextWidth();
  return std::abs(line.cursorToX(end) - line.cursorToX(start));
}

class ParagraphLayout {
 public:
  ParagraphLayout(LayoutContext& context, const richtext::Paragraph& paragraph,
                  const ParagraphPlace& place)
      : context_(context),
        paragraph_(paragraph),
        format_(paragraph.format),
        place_(place),
        widest_left_(format_.left_indent),
        widest_right_(std::max(place.width - format_.right_indent, widest_left_ + kNarrowest)),
        left_(widest_left_),
        right_(widest_right_),
        y_(place.y) {}

  BlockStrips LayOut();

 private:
  bool StartsAtDecimalTab(const std::vector<ParagraphItem>& items) const;
  void CloseFrame();
  void TakeAreas();
  Strip& AnchorLine();
  void StartLine();
  void EndLine(int end);
  void Place(TextItem& item);
  void Place(const TabItem& item, std::size_t index);
  void Place(PictureItem& item);
  void Place(const BreakItem& item, bool last);
  void Put(double width, decltype(Piece::content) content);
  void Grow(double ascent, double descent, double leading);
  void GrowByRaised(const ShapedText& text, const QTextLine& line);
  void Align();
  void Mirror();
  double LineHeight(double natural) const;
  struct Stop {
    double position;
    TabStop::Kind kind;
    std::string leader;
  };
  Stop NextStop(double x) const;
  double WidthToAlign(std::size_t index, TabStop::Kind kind);
  void AlignListMark();
  std::shared_ptr<const Frame> MakeFrame() const;

  LayoutContext& context_;
  const richtext::Paragraph& paragraph_;
  const richtext::ParagraphFormat& format_;
  const ParagraphPlace& place_;
  double widest_left_, widest_right_;
  double left_, right_;  // of the line
  double y_;             // its top

  std::vector<ParagraphItem> items_;
  int position_ = 0;

  Strips lines_;
  std::size_t page_start_ = 0;  // the first line on the last line's page or column
  std::shared_ptr<TextLine> line_;
  double x_ = 0, content_end_ = 0;
  double ascent_ = 0, descent_ = 0, leading_ = 0;  // of the line's text
  double picture_height_ = 0;                      // of the highest picture in it
  bool has_picture_ = false, justified_ = false, page_break_ = false, column_break_ = false;
  std::vector<double> widths_;  // of the line's pieces
  std::shared_ptr<const Frame> frame_;
};

BlockStrips ParagraphLayout::LayOut() {
  std::vector<ParagraphItem> items = CollectItems(
      context_, paragraph_, {place_.position, place_.number, left_, right_, place_.width});
  if (StartsAtDecimalTab(items))
    items_.emplace_back(TabItem{&paragraph_.runs.front().format, place_.position, {}});
  std::ranges::move(items, std::back_inserter(items_));
  TakeAreas();
  frame_ = MakeFrame();
  page_break_ = format_.page_break_before;
  position_ = place_.position;
  StartLine();
  AlignListMark();
  for (std::size_t i = 0; i < items_.size(); ++i) {
    ParagraphItem& item = items_[i];
    if (auto* text = std::get_if<TextItem>(&item)) {
      Place(*text);
    } else if (const auto* tab = std::get_if<TabItem>(&item)) {
      Place(*tab, i);
    } else if (auto* picture = std::get_if<PictureItem>(&item)) {
      Place(*picture);
    } else if (auto* floating = std::get_if<FloatItem>(&item)) {
      if (!line_) StartLine();
      AnchorLine().floating.push_back(std::move(floating->floating));
    } else {
      Place(std::get<BreakItem>(item), i + 1 == items_.size());
    }
  }
  const int end = place_.position + Length(paragraph_);
  if (line_) EndLine(end);
  BlockStrips block;
  if (!lines_.empty()) {
    lines_.front()->space_before = place_.space_above;
    lines_.back()->space_after = place_.space_below;
    lines_.back()->end = end;
    CloseFrame();
  }
  block.strips = std::move(lines_);
  block.keep_together = format_.keep_together;
  block.keep_with_next = format_.keep_with_next;
  block.widow_control = format_.widow_control;
  return block;
}

// In a cell, text without a tab of its own is aligned at the paragraph's first stop if that is for
// decimals: how word processors set columns of amounts.
bool ParagraphLayout::StartsAtDecimalTab(const std::vector<ParagraphItem>& items) const {
  if (!place_.in_cell || paragraph_.runs.empty() || format_.alignment != Alignment::kLeft)
    return false;
  if (std::ranges::none_of(format_.tabs,
                           [](const TabStop& tab) { return tab.kind == TabStop::Kind::kDecimal; }))
    return false;
  const bool text_only = std::ranges::all_of(
      items, [](const ParagraphItem& item) { return std::holds_alternative<TextItem>(item); });
  return text_only && NextStop(left_ + format_.first_indent).kind == TabStop::Kind::kDecimal;
}

// Closes the frame above the first line and below the last, or joins it to the neighbours'. What is
// above a line between paragraphs keeps the distance from it that it has from the frame's end.
void ParagraphLayout::CloseFrame() {
  if (!frame_) return;
  auto& first = static_cast<TextLine&>(*lines_.front());
  auto& last = static_cast<TextLine&>(*lines_.back());
  const bool parted = frame_->between.rule.width > 0;
  first.closed_above = !place_.framed_above;
  first.parted_above = place_.framed_above && parted;
  last.closed_below = !place_.framed_below;
  last.frame_below = place_.frame_below;
  double above = 0, below = 0;
  if (first.closed_above) above = frame_->top_edge.Room();
  if (first.parted_above) above = frame_->between.Room();
  if (last.closed_below) below = frame_->bottom_edge.Room();
  if (!last.closed_below && parted) below = frame_->bottom_edge.space;
  first.height += above;
  first.baseline += above;
  last.height += below;
}

// Lines stand beside what floats in the paragraph even if that is anchored further down in it.
void ParagraphLayout::TakeAreas() {
  if (place_.taken == nullptr) return;
  for (const ParagraphItem& item : items_) {
    const auto* const one = std::get_if<FloatItem>(&item);
    if (one != nullptr) place_.taken->Add(one->floating, QPointF(0, y_));
  }
}

// The first line of the paragraph on its page: what is anchored in the paragraph counts from there.
Strip& ParagraphLayout::AnchorLine() {
  if (line_->BreaksBefore() || lines_.empty()) return *line_;
  return *lines_[page_start_];
}

void ParagraphLayout::StartLine() {
  line_ = std::make_shared<TextLine>(context_.fonts);
  line_->begin = position_;
  line_->page_break_before = page_break_;
  line_->frame = frame_;
  line_->column_break_before = column_break_;
  page_break_ = column_break_ = false;
  has_picture_ = justified_ = false;
  if (place_.taken != nullptr) {
    const FontUse& use = context_.fonts->Use(paragraph_.mark);
    const double height = LineHeight(use.ascent + use.descent + use.leading);
    std::tie(left_, right_) = place_.taken->Beside(widest_left_, widest_right_, y_, height);
  }
  x_ = left_ + (lines_.empty() ? format_.first_indent : 0);
  content_end_ = x_;
  ascent_ = descent_ = leading_ = picture_height_ = 0;
  widths_.clear();
}

// `end` is the position after the line's last character.
void ParagraphLayout::EndLine(int end) {
  if (ascent_ + descent_ + picture_height_ <= 0) {
    const FontUse& use = context_.fonts->Use(paragraph_.mark);
    Grow(use.ascent, use.descent, use.leading);
  }
  const double ascent = std::max(ascent_, picture_height_);
  const double natural = ascent + descent_ + leading_;
  // A multiple is one of the text's height; a picture is no further from its neighbours for it.
  line_->height = has_picture_ && format_.line_spacing_multiple
                      ? std::max(natural, LineHeight(ascent_ + descent_ + leading_))
                      : LineHeight(natural);
  // A fixed height adds space above the text, a multiple below it.
  const double extra = line_->height - natural;
  line_->baseline = ascent + (format_.line_spacing_multiple ? std::min(extra, 0.0) : extra);
  for (const TabStop& tab : format_.tabs) {
    if (tab.kind == TabStop::Kind::kBar) line_->bars.push_back(tab.position);
  }
  const double unaligned_start = line_->pieces.empty() ? 0 : line_->pieces.front().x;
  if (!justified_) Align();
  if (format_.right_to_left) Mirror();
  if (!line_->pieces.empty()) {
    const double first = line_->pieces.front().x;
    const bool whole = justified_ || format_.right_to_left;
    line_->ink_left = whole ? left_ : first;
    line_->ink_right = whole ? right_ : first + content_end_ - unaligned_start;
  }
  if (frame_) {
    line_->ink_left = frame_->left;
    line_->ink_right = frame_->right;
  }
  if (place_.taken != nullptr) y_ = place_.taken->FreeBelow(*line_, QPointF(0, y_)) + line_->height;
  line_->end = end;
  position_ = end;
  if (line_->BreaksBefore()) page_start_ = lines_.size();
  lines_.push_back(std::move(line_));
  line_.reset();
}

double ParagraphLayout::LineHeight(double natural) const {
  const double spacing = format_.line_spacing;
  if (spacing == 0) return natural;
  if (format_.line_spacing_multiple)
    return natural * std::clamp(std::abs(spacing) / 240, 0.1, 50.0);
  const double set = std::min(std::abs(spacing), context_.page_height);
  if (spacing < 0 && !has_picture_) return set;
  return std::max(set, natural);
}

void ParagraphLayout::Place(TextItem& item) {
  ShapedText& text = *item.text;
  QTextLayout& layout = text.layout;
  const int size = static_cast<int>(layout.text().size());
  QTextOption option = layout.textOption();
  layout.beginLayout();
  for (;;) {
    QTextLine line = layout.createLine();
    if (!line.isValid()) break;
    if (!line_) StartLine();
    const bool line_empty = line_->pieces.empty();
    option.setWrapMode(line_empty ? QTextOption::WrapAtWordBoundaryOrAnywhere
                                  : QTextOption::WordWrap);
    layout.setTextOption(option);
    line.setLineWidth(std::max(right_ - x_ + kOverhang, 1.0));
    if (!line_empty && line.naturalTextWidth() > right_ - x_ + kOverhang) {
      EndLine(text.PositionAt(line.textStart()));
      StartLine();
      option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
      layout.setTextOption(option);
      line.setLineWidth(std::max(right_ - x_ + kOverhang, 1.0));
    }
    const int end = line.textStart() + line.textLength();
    const double shown = line.naturalTextWidth();
    Grow(line.ascent(), line.descent(), std::max(0.0, line.leading()));
    GrowByRaised(text, line);
    line.setPosition(QPointF(x_, 0));
    content_end_ = x_ + WidthWithoutBlanks(layout.text(), line);
    const double with_blanks = std::abs(line.cursorToX(end) - line.cursorToX(line.textStart()));
    widths_.push_back(shown);
    line_->pieces.push_back({x_, PlacedText{item.text, line}});
    x_ += std::max(shown, end == size ? with_blanks : 0.0);
    if (end < size) {
      justified_ = format_.alignment == Alignment::kJustified;
      EndLine(text.PositionAt(end));
    }
  }
  layout.endLayout();
}

void ParagraphLayout::Place(const TabItem& item, std::size_t index) {
  if (!line_) StartLine();
  // A list's mark that is wider than its place ends at the next stop.
  const bool fits = item.target && *item.target > x_ + kSlack;
  Stop stop{item.target.value_or(0), TabStop::Kind::kLeft, {}};
  if (!fits) stop = NextStop(x_);
  // A right tab made for a wider page aligns at this page's right edge.
  if (stop.kind == TabStop::Kind::kRight) stop.position = std::min(stop.position, right_);
  if (stop.position > right_ + kSlack && !line_->pieces.empty() && !item.target) {
    EndLine(item.position);
    StartLine();
    stop = NextStop(x_);
  }
  double target = std::min(stop.position, right_);
  if (stop.kind != TabStop::Kind::kLeft) {
    const double width = WidthToAlign(index, stop.kind);
    target -= stop.kind == TabStop::Kind::kCentre ? width / 2 : width;
  }
  const FontUse& use = context_.fonts->Use(*item.format);
  Grow(use.ascent, use.descent, use.leading);
  Put(std::max(target - x_, 0.0), PlacedTab{std::max(target - x_, 0.0), stop.leader, item.format});
}

void ParagraphLayout::Place(PictureItem& item) {
  if (!line_) StartLine();
  if (!line_->pieces.empty() && x_ + item.picture.width > right_ + kSlack) {
    EndLine(item.position);
    StartLine();
  }
  if (item.across) {
    const FontUse& use = context_.fonts->Use(paragraph_.mark);
    Grow(use.ascent, use.descent, use.leading);
  } else {
    has_picture_ = true;
    picture_height_ = std::max(picture_height_, item.picture.height);
  }
  Put(item.picture.width, std::move(item.picture));
}

void ParagraphLayout::Place(const BreakItem& item, bool last) {
  const int end = item.position + 1;
  const bool line_empty = !line_ || (line_->pieces.empty() && line_->floating.empty());
  const bool in_text = item.kind == BreakItem::Kind::kLine;
  const bool empty_page = item.kind == BreakItem::Kind::kPage && place_.begins_letter;
  const bool nothing_above = !in_text && line_empty && lines_.empty() && !empty_page;
  if (nothing_above) {
    line_.reset();
  } else {
    if (!line_) StartLine();
    if (line_->pieces.empty()) {
      const FontUse& use = context_.fonts->Use(*item.format);
      Grow(use.ascent, use.descent, use.leading);
    }
    EndLine(end);
  }
  position_ = end;
  page_break_ = item.kind == BreakItem::Kind::kPage;
  column_break_ = item.kind == BreakItem::Kind::kColumn;
  if (!in_text && last && place_.last_visible && !lines_.empty()) return;
  // One page break is enough.
  if (page_break_ && last && place_.ends_page) return;
  StartLine();
}

void ParagraphLayout::Put(double width, decltype(Piece::content) content) {
  widths_.push_back(width);
  line_->pieces.push_back({x_, std::move(content)});
  x_ += width;
  content_end_ = x_;
}

void ParagraphLayout::Grow(double ascent, double descent, double leading) {
  ascent_ = std::max(ascent_, ascent);
  descent_ = std::max(descent_, descent);
  leading_ = std::max(leading_, leading);
}

// Raised and lowered letters can make the line higher.
void ParagraphLayout::GrowByRaised(const ShapedText& text, const QTextLine& line) {
  const int from = line.textStart(), to = from + line.textLength();
  for (const Fragment& fragment : text.FragmentsIn(from, to)) {
    const double raise = fragment.format->raise_half_points * kTwipsPerHalfPoint;
    if (raise == 0) continue;
    const FontUse& use = context_.fonts->Use(*fragment.format);
    Grow(use.ascent + raise, use.descent - raise, 0);
  }
}

// Aligns a line in the middle or where lines end, or sets apart the words of a distributed one.
// Lines of right-to-left paragraphs end at the left, once they are mirrored.
void ParagraphLayout::Align() {
  const bool distributed = format_.alignment == Alignment::kDistributed;
  const Alignment at_end = format_.right_to_left ? Alignment::kLeft : Alignment::kRight;
  double spare = right_ - content_end_;
  if (format_.alignment == Alignment::kCentre) {
    spare /= 2;
  } else if (format_.alignment != at_end && !distributed) {
    return;
  }
  if (spare <= 0) return;
  const double gaps = std::max<double>(double(line_->pieces.size()) - 1, 1);
  for (std::size_t i = 0; i < line_->pieces.size(); ++i) {
    Piece& piece = line_->pieces[i];
    piece.x += distributed ? spare * double(i) / gaps : spare;
    if (auto* text = std::get_if<PlacedText>(&piece.content)) {
      text->line.setPosition(QPointF(piece.x, 0));
    }
  }
}

// Lines are laid out from the left; in right-to-left paragraphs they start at the right.
void ParagraphLayout::Mirror() {
  for (std::size_t i = 0; i < line_->pieces.size(); ++i) {
    Piece& piece = line_->pieces[i];
    auto* text = std::get_if<PlacedText>(&piece.content);
    // In a justified paragraph the text ends at the right of its room, in the last line too.
    const bool fills = text != nullptr && format_.alignment == Alignment::kJustified;
    const double width = fills ? text->line.width() : widths_[i];
    piece.x = left_ + right_ - piece.x - width;
    if (text != nullptr) text->line.setPosition(QPointF(piece.x, 0));
  }
}

ParagraphLayout::Stop ParagraphLayout::NextStop(double x) const {
  const TabStop* next = nullptr;
  for (const TabStop& tab : format_.tabs) {
    if (tab.kind == TabStop::Kind::kBar || tab.position <= x + kSlack) continue;
    if (next == nullptr || tab.position < next->position) next = &tab;
  }
  // A hanging indent is a tab stop of its own.
  if (format_.first_indent < 0 && left_ > x + kSlack &&
      (next == nullptr || left_ < next->position)) {
    return {left_, TabStop::Kind::kLeft, {}};
  }
  if (next != nullptr) return {double(next->position), next->kind, next->leader};
  const double step = context_.document.default_tab > 0 ? context_.document.default_tab : 720;
  return {(std::floor((x + kSlack) / step) + 1) * step, TabStop::Kind::kLeft, {}};
}

// Width of what follows the tab at `index` and is aligned at its stop.
double ParagraphLayout::WidthToAlign(std::size_t index, TabStop::Kind kind) {
  double width = 0;
  for (std::size_t i = index + 1; i < items_.size(); ++i) {
    if (const auto* picture = std::get_if<PictureItem>(&items_[i])) {
      width += picture->picture.width;
      continue;
    }
    if (std::holds_alternative<FloatItem>(items_[i])) continue;
    const auto* item = std::get_if<TextItem>(&items_[i]);
    if (item == nullptr) break;
    QTextLayout& layout = item->text->layout;
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(kUnbroken);
    const QString text = layout.text();
    const qsizetype point = kind == TabStop::Kind::kDecimal ? DecimalPoint(text) : text.size();
    const double part = point < text.size()
                            ? std::abs(line.cursorToX(int(point)) - line.cursorToX(0))
                            : line.naturalTextWidth();
    layout.endLayout();
    width += part;
    if (point < text.size()) break;
  }
  return width;
}

// A mark can end or be centred where the first line begins.
void ParagraphLayout::AlignListMark() {
  const richtext::Bullet& bullet = format_.bullet;
  if (bullet.kind == richtext::Bullet::Kind::kNone || bullet.alignment == Alignment::kLeft) return;
  const auto* const mark = std::get_if<TextItem>(&items_.front());
  if (mark == nullptr) return;
  QTextLayout& layout = mark->text->layout;
  layout.beginLayout();
  QTextLine line = layout.createLine();
  line.setLineWidth(kUnbroken);
  const double width = WidthWithoutBlanks(layout.text(), line);
  layout.endLayout();
  x_ -= bullet.alignment == Alignment::kCentre ? width / 2 : width;
  content_end_ = x_;
}

std::shared_ptr<const Frame> ParagraphLayout::MakeFrame() const {
  const bool edges = format_.top.present || format_.bottom.present || format_.left.present ||
                     format_.right.present || format_.between.present;
  if (!edges && format_.shading <= 0) return nullptr;
  const auto edge = [&](const richtext::Border& border) {
    return border.present ? Frame::Edge{RuleOf(border, *context_.fonts), double(border.space)}
                          : Frame::Edge{};
  };
  auto frame = std::make_shared<Frame>();
  frame->left = left_ + std::min(0, format_.first_indent);
  frame->right = right_;
  if (format_.shading > 0) frame->shading = context_.fonts->Colour(format_.shading);
  frame->left_edge = edge(format_.left);
  frame->right_edge = edge(format_.right);
  frame->top_edge = edge(format_.top);
  frame->bottom_edge = edge(format_.bottom);
  frame->between = edge(format_.between);
  return frame;
}

}  // namespace

BlockStrips LayOutParagraph(LayoutContext& context, const richtext::Paragraph& paragraph,
                            const ParagraphPlace& place) {
  return ParagraphLayout(context, paragraph, place).LayOut();
}

}  // namespace tenora::printing
