#include "platform/printing/layout/block_layout.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/printing/document_length.h"
#include "platform/printing/layout/placed_strips.h"
#include "platform/printing/layout/shape_layout.h"
#include "platform/printing/layout/table_layout.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/neighbours.h"

namespace tenora::printing {
namespace {

// A table so near to its own place in the text stands in that, twips.
constexpr int kNearText = 240;

class Anchor : public Strip {
 public:
  void Draw(QPainter& /*painter*/, QPointF /*corner*/) const override {}
};

// A paragraph whose mark is hidden too has no line.
bool IsHidden(const richtext::Paragraph& paragraph) {
  return paragraph.mark.hidden && std::ranges::all_of(paragraph.runs, [](const richtext::Run& run) {
           return run.format.hidden;
         });
}

class FrameContent : public FloatContent {
 public:
  void Draw(QPainter& painter, QPointF corner) const override {
    PlacedStrips placed;
    double y = corner.y();
    for (const auto& strip : strips) {
      y += strip->space_before;
      placed.Add(strip, QPointF(corner.x() - left, y));
      y += strip->height + strip->space_after;
    }
    placed.Draw(painter);
  }

  Strips strips;
  double left = 0;  // where the frame begins in the strips
};

richtext::ShapeBox BoxOf(const richtext::FramePlace& frame) {
  using Wrap = richtext::ShapeBox::Wrap;
  richtext::ShapeBox box;
  box.left = frame.x;
  box.top = frame.y;
  box.x_from = frame.x_from;
  box.y_from = frame.y_from;
  box.x_align = frame.x_align;
  box.y_align = frame.y_align;
  box.wrap = frame.text_beside ? Wrap::kAround : Wrap::kAboveAndBelow;
  return box;
}

// Null for a table in the text, and for paragraphs.
const richtext::Table* FloatingTable(const richtext::Block& block) {
  const auto* const table = std::get_if<std::shared_ptr<richtext::Table>>(&block);
  if (table == nullptr || (*table)->rows.empty() || !(*table)->rows.front().place) return nullptr;
  return table->get();
}

double WidthOf(const richtext::Row& row) {
  return row.cells.empty() ? 0 : row.cells.back().right_edge - row.left_edge;
}

// A table that floats where it would stand anyway, and has no text beside it, goes on on the next
// page as others do.
bool StandsInText(const richtext::Table& table, double width) {
  const richtext::FramePlace& place = *table.rows.front().place;
  if (place.y_from != richtext::ShapeBox::From::kText || std::abs(place.y) > kNearText)
    return false;
  double widest = 0;
  for (const richtext::Row& row : table.rows) widest = std::max(widest, WidthOf(row));
  return !TakenAreas::RoomBeside(widest + place.gap_x, width);
}

// How far to the right of its own place in the text it is then.
double ShiftInText(const LayoutContext& context, const richtext::Row& row,
                   const richtext::FramePlace& place, double width) {
  const Floating placed = PlaceFloating(context, BoxOf(place), QSizeF(WidthOf(row), 0), width);
  const double x = placed.x_on_paper ? placed.x - context.area.left : placed.x;
  return place.x_align == richtext::ShapeBox::Align::kAsSet ? x : x - row.left_edge;
}

}  // namespace

BlockLayout::BlockLayout(LayoutContext& context, const std::vector<richtext::Block>& blocks,
                         double width, int position, int depth, Ending ending,
                         std::optional<QPointF> origin)
    : context_(context),
      blocks_(blocks),
      width_(width),
      position_(position),
      depth_(depth),
      visible_blocks_(blocks.size()),
      taken_(origin),
      letter_(depth == 0 && ending == Ending::kVisible) {
  if (ending == Ending::kWhole) return;
  while (visible_blocks_ > 0 && !richtext::Shows(blocks_[visible_blocks_ - 1])) --visible_blocks_;
}

void BlockLayout::BeginSection(double width, std::optional<QPointF> origin) {
  width_ = width;
  if (!origin) return;
  taken_ = TakenAreas(origin);
  y_ = 0;
}

std::optional<BlockStrips> BlockLayout::Next() {
  while (block_ < visible_blocks_) {
    const richtext::Block& block = blocks_[block_];
    const richtext::FramePlace* const frame = block_ < in_text_until_ ? nullptr : FrameOf(block_);
    if (frame != nullptr) {
      if (auto strips = NextFrame(*frame)) return strips;
    }
    if (const auto* paragraph = std::get_if<richtext::Paragraph>(&block)) {
      const bool last = block_ + 1 == blocks_.size();
      if (!last && IsHidden(*paragraph)) {
        position_ += Length(*paragraph);
        ++block_;
        continue;
      }
      return NextParagraph(*paragraph);
    }
    numbers_.EndAll();
    if (auto rows = NextRows(*std::get<std::shared_ptr<richtext::Table>>(block))) return rows;
  }
  return std::nullopt;
}

// Null in tables and text boxes: frames stand in the letter and its headers only. A table has its
// own, or that of its first paragraph.
const richtext::FramePlace* BlockLayout::FrameOf(std::size_t block) const {
  if (depth_ > 0) return nullptr;
  const richtext::Block* at = &blocks_[block];
  if (const auto* const table = std::get_if<std::shared_ptr<richtext::Table>>(at)) {
    if ((*table)->rows.empty() || (*table)->rows.front().cells.empty()) return nullptr;
    const richtext::Row& first = (*table)->rows.front();
    if (first.place) return &*first.place;
    at = &first.cells.front().blocks.front();
  }
  const auto* const paragraph = std::get_if<richtext::Paragraph>(at);
  return paragraph != nullptr && paragraph->format.frame ? &*paragraph->format.frame : nullptr;
}

// The blocks from here on that share the frame.
std::size_t BlockLayout::EndOfFrame(const richtext::FramePlace& frame) const {
  std::size_t end = block_;
  while (end < visible_blocks_) {
    const richtext::FramePlace* const next = FrameOf(end);
    if (next == nullptr || *next != frame) break;
    ++end;
  }
  return end;
}

// A strip without height, in which the frame floats; none where it stands in the text.
std::optional<BlockStrips> BlockLayout::NextFrame(const richtext::FramePlace& frame) {
  const std::size_t end = EndOfFrame(frame);
  const richtext::Table* const table = FloatingTable(blocks_[block_]);
  const double most = table != nullptr  ? context_.area.paper_width
                      : frame.width > 0 ? frame.width
                                        : width_;
  BlockLayout inside(context_, blocks_, most, position_, depth_ + 1, Ending::kWhole);
  inside.block_ = block_;
  inside.visible_blocks_ = end;
  auto content = std::make_shared<FrameContent>();
  if (table == nullptr || !StandsInText(*table, width_)) content->strips = inside.TakeAll();
  QSizeF size(most, 0);
  double left = most, right = 0;
  for (const auto& strip : content->strips) {
    size.rheight() += strip->space_before + strip->height + strip->space_after;
    if (strip->ink_right <= strip->ink_left) continue;
    left = std::min(left, strip->ink_left);
    right = std::max(right, strip->ink_right);
  }
  if (content->strips.empty() || size.height() > context_.page_height) {
    in_text_until_ = end;
    return std::nullopt;
  }
  if (frame.width == 0 && right > left) {
    content->left = left;
    size.setWidth(right - left);
  } else if (frame.width == 0) {
    size.setWidth(0);
  }
  size.setHeight(std::max<double>(size.height(), std::abs(frame.height)) + frame.gap_y);
  auto anchor = std::make_shared<Anchor>();
  anchor->begin = position_;
  for (; block_ < end; ++block_) position_ += Length(blocks_[block_]);
  anchor->end = position_;
  anchor->page_break_before = content->strips.front()->page_break_before;
  Floating placed = PlaceFloating(context_, BoxOf(frame), size, width_);
  if (table != nullptr) {
    placed.gap = frame.gap_x;
    if (frame.x_align == richtext::ShapeBox::Align::kAsSet) placed.x += left;
  }
  placed.content = std::move(content);
  if (placed.y_on_paper) {
    const double lowest = context_.area.paper_height - placed.height + frame.gap_y;
    placed.y = std::max(std::min(placed.y, lowest), 0.0);
  }
  const bool ends_page = !placed.y_on_paper && y_ + placed.y + placed.height > context_.page_height;
  if (anchor->page_break_before || ends_page) StartPage();
  taken_.Add(placed, QPointF(0, y_));
  anchor->floating.push_back(std::move(placed));
  BlockStrips strips;
  strips.keep_with_next = true;
  strips.strips.push_back(std::move(anchor));
  return strips;
}

// All strips of the blocks that are left.
Strips BlockLayout::TakeAll() {
  Strips strips;
  while (auto block = Next()) {
    for (auto& strip : block->strips) strips.push_back(std::move(strip));
  }
  MakeRoom(&strips);
  return strips;
}

BlockStrips BlockLayout::NextParagraph(const richtext::Paragraph& paragraph) {
  ParagraphPlace place;
  place.width = width_;
  place.position = position_;
  place.in_cell = depth_ > 0;
  place.number = numbers_.Next(paragraph.format);
  place.space_above = SpaceAbove(block_);
  place.space_below = SpaceBelow(block_);
  place.framed_above = block_ > 0 && FrameGoesOn(block_ - 1);
  place.framed_below = FrameGoesOn(block_);
  if (place.framed_below) place.frame_below = place.space_below + SpaceAbove(block_ + 1);
  place.ends_page = paragraph.next_section != nullptr &&
                    paragraph.next_section->begin == richtext::Section::Begin::kPage;
  place.last_visible = depth_ == 0 && block_ + 1 == visible_blocks_;
  place.begins_letter = letter_ && block_ == 0;
  position_ += Length(paragraph);
  ++block_;
  if (paragraph.format.page_break_before) StartPage();
  place.y = y_ + place.space_above;
  place.taken = &taken_;
  BlockStrips lines = LayOutParagraph(context_, paragraph, place);
  if (EndsCellBehindTable(block_ - 1)) {
    for (const auto& strip : lines.strips)
      strip->height = strip->space_before = strip->space_after = 0;
  }
  Pass(lines.strips);
  return lines;
}

// A cell that ends with a table has an empty paragraph behind it, which takes no room.
bool BlockLayout::EndsCellBehindTable(std::size_t block) const {
  if (depth_ == 0 || block == 0 || block + 1 != blocks_.size()) return false;
  const auto* const paragraph = std::get_if<richtext::Paragraph>(&blocks_[block]);
  return paragraph != nullptr && paragraph->runs.empty() &&
         paragraph->format.bullet.kind == richtext::Bullet::Kind::kNone &&
         FormatOf(block - 1) == nullptr;
}

// What floated on the page before is not on this one.
void BlockLayout::StartPage() {
  taken_.Clear();
  y_ = 0;
}

// Goes on below the strips.
void BlockLayout::Pass(const Strips& strips) {
  for (const auto& strip : strips) {
    if (strip->BreaksBefore()) StartPage();
    const QPointF corner(0, y_ + strip->space_before);
    y_ = taken_.FreeBelow(*strip, corner) + strip->height + strip->space_after;
    if (y_ > context_.page_height) StartPage();
  }
}

std::optional<BlockStrips> BlockLayout::NextRows(const richtext::Table& table) {
  if (row_ == 0) {
    header_ = std::make_shared<Strips>();
    header_open_ = true;
  }
  if (row_ >= table.rows.size() || depth_ >= kDeepestTable) {
    for (; row_ < table.rows.size(); ++row_) position_ += Length(table.rows[row_]);
    row_ = 0;
    ++block_;
    return std::nullopt;
  }
  const std::size_t count = RowsTogether(table, row_);
  const richtext::Row& first = table.rows.front();
  std::optional<double> shift;
  if (depth_ == 0 && first.place) shift = ShiftInText(context_, first, *first.place, width_);
  BlockStrips rows = LayOutRows(context_, table, row_, count, {width_, position_, depth_, shift});
  for (std::size_t i = 0; i < count; ++i, ++row_) {
    header_open_ = header_open_ && table.rows[row_].header;
    if (header_open_) header_->push_back(rows.strips[i]);
    position_ += Length(table.rows[row_]);
  }
  Pass(rows.strips);
  if (!header_open_ && !header_->empty()) rows.header = header_;
  // Nothing stands below a table's header that is alone at the foot of a page.
  rows.keep_with_next = header_open_ && row_ < table.rows.size();
  return rows;
}

// Null for a table, and beyond both ends.
const richtext::ParagraphFormat* BlockLayout::FormatOf(std::size_t block) const {
  if (block >= blocks_.size()) return nullptr;
  const auto* paragraph = std::get_if<richtext::Paragraph>(&blocks_[block]);
  return paragraph == nullptr ? nullptr : &paragraph->format;
}

// Automatic space is between paragraphs only: a letter has none at its top, a cell none at either
// end.
double BlockLayout::SpaceAbove(std::size_t block) const {
  const richtext::ParagraphFormat& format = *FormatOf(block);
  const bool html = context_.html_spacing;
  if (block == 0 && html && format.automatic_before) return 0;
  return richtext::SpaceAbove(format, FormatOf(block - 1), html);
}

double BlockLayout::SpaceBelow(std::size_t block) const {
  const richtext::ParagraphFormat& format = *FormatOf(block);
  const bool last = depth_ > 0 && block + 1 == blocks_.size();
  if (last && context_.html_spacing && format.automatic_after) return 0;
  return richtext::SpaceBelow(format, FormatOf(block + 1));
}

// Whether a paragraph, if it is one, shares its frame with the next one.
bool BlockLayout::FrameGoesOn(std::size_t block) const {
  if (block + 1 >= visible_blocks_ || FormatOf(block) == nullptr || FormatOf(block + 1) == nullptr)
    return false;
  const auto& upper = std::get<richtext::Paragraph>(blocks_[block]);
  const auto& lower = std::get<richtext::Paragraph>(blocks_[block + 1]);
  if (upper.next_section != nullptr || lower.format.page_break_before) return false;
  return SameFrame(upper.format, lower.format);
}

Strips LayOutInside(LayoutContext& context, const std::vector<richtext::Block>& blocks,
                    double width, int position, int depth) {
  Strips strips;
  BlockLayout layout(context, blocks, width, position, depth, BlockLayout::Ending::kWhole);
  while (auto block = layout.Next()) {
    for (auto& strip : block->strips) {
      strip->ForgetBreaks();
      strips.push_back(std::move(strip));
    }
  }
  MakeRoom(&strips);
  return strips;
}

}  // namespace tenora::printing
