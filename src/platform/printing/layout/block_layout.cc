#include "platform/printing/layout/block_layout.h"

#include "platform/printing/document_length.h"
#include "platform/printing/layout/table_layout.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/neighbours.h"

namespace tenora::printing {
BlockLayout::BlockLayout(LayoutContext& context, const std::vector<richtext::Block>& blocks,
                         double width, int position, int depth, Ending ending,
                         std::optional<QPointF> origin)
    : context_(context),
      blocks_(blocks),
      width_(width),
      position_(position),
      depth_(depth),
      visible_blocks_(blocks.size()),
      taken_(origin) {
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
    if (const auto* paragraph = std::get_if<richtext::Paragraph>(&block)) {
      return NextParagraph(*paragraph);
    }
    numbers_.EndAll();
    if (auto rows = NextRows(*std::get<std::shared_ptr<richtext::Table>>(block))) return rows;
  }
  return std::nullopt;
}

BlockStrips BlockLayout::NextParagraph(const richtext::Paragraph& paragraph) {
  ParagraphPlace place;
  place.width = width_;
  place.position = position_;
  place.in_cell = depth_ > 0;
  place.number = numbers_.Next(paragraph.format);
  if (const richtext::ParagraphFormat* above = FormatOf(block_ - 1))
    place.joins_above = WithoutSpaceBetween(paragraph.format, *above);
  if (const richtext::ParagraphFormat* below = FormatOf(block_ + 1))
    place.joins_below = WithoutSpaceBetween(paragraph.format, *below);
  place.framed_above = FramedWith(paragraph, block_ - 1);
  place.framed_below = FramedWith(paragraph, block_ + 1);
  if (place.framed_below && !place.joins_below)
    place.space_below = paragraph.format.space_after + FormatOf(block_ + 1)->space_before;
  place.last_visible = depth_ == 0 && block_ + 1 == visible_blocks_;
  position_ += Length(paragraph);
  ++block_;
  if (paragraph.format.page_break_before) StartPage();
  place.y = y_ + (place.joins_above ? 0 : paragraph.format.space_before);
  place.taken = &taken_;
  BlockStrips lines = LayOutParagraph(context_, paragraph, place);
  Pass(lines.strips);
  return lines;
}

// What floated on the page before is not on this one.
void BlockLayout::StartPage() {
  taken_.Clear();
  y_ = 0;
}

// Goes on below the strips.
void BlockLayout::Pass(const Strips& strips) {
  for (const auto& strip : strips) {
    if (strip->page_break_before) StartPage();
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
  BlockStrips rows = LayOutRows(context_, table, row_, count, {width_, position_, depth_});
  for (std::size_t i = 0; i < count; ++i, ++row_) {
    header_open_ = header_open_ && table.rows[row_].header;
    if (header_open_) header_->push_back(rows.strips[i]);
    position_ += Length(table.rows[row_]);
  }
  Pass(rows.strips);
  if (!header_open_ && !header_->empty()) rows.header = header_;
  return rows;
}

// Null for a table, and beyond both ends.
const richtext::ParagraphFormat* BlockLayout::FormatOf(std::size_t block) const {
  if (block >= blocks_.size()) return nullptr;
  const auto* paragraph = std::get_if<richtext::Paragraph>(&blocks_[block]);
  return paragraph == nullptr ? nullptr : &paragraph->format;
}

bool BlockLayout::FramedWith(const richtext::Paragraph& paragraph, std::size_t neighbour) const {
  const richtext::ParagraphFormat* other = FormatOf(neighbour);
  return other != nullptr && SameFrame(paragraph.format, *other);
}

}  // namespace tenora::printing
