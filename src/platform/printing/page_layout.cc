#include "platform/printing/page_layout.h"

#include "platform/printing/printing.h"

namespace tenora::printing {
namespace {

constexpr double kSlack = 1;  // rounding of heights, twips
// A row up to this share of the page moves to the next one whole; a taller one is divided.
constexpr double kWholeRowShare = 0.5;
// Header rows that leave less than this share of the page are not repeated.
constexpr double kHeaderShare = 0.5;

}  // namespace

PageLayout::PageLayout(const richtext::Document& document, double width, double height,
                       double reach, Resources& resources)
    : typesetting_(document, height, reach, resources),
      width_(width),
      height_(height),
      length_(DocumentLength(document)) {
  StartAt(0);
}

int PageLayout::DrawPage(QPainter& painter, QPointF corner, int from, int to) {
  if (from != next_) StartAt(from);
  double y = 0;
  bool page_empty = true;
  space_after_ = 0;
  if (Load(1)) y = DrawRepeatedHeader(painter, corner);
  while (Load(1)) {
    const Strip& strip = *pending_.front().block.strips.front();
    if (to >= 0 && strip.begin >= to) break;
    if (!DrawNext(painter, corner, y, page_empty)) break;
  }
  next_ = Load(1) ? pending_.front().block.strips.front()->begin : length_;
  return next_;
}

void PageLayout::StartAt(int position) {
  pending_.clear();
  flow_ = std::make_unique<Flow>(typesetting_, typesetting_.document.blocks, width_, 0, 0);
  while (Load(1) && pending_.front().block.strips.front()->end <= position) DropStrip();
  next_ = position;
}

bool PageLayout::Load(std::size_t count) {
  while (pending_.size() < count) {
    auto block = flow_->Next();
    if (!block) return false;
    if (!block->strips.empty()) pending_.push_back({std::move(*block), false});
  }
  return true;
}

void PageLayout::DropStrip() {
  Pending& front = pending_.front();
  front.started = true;
  front.block.strips.pop_front();
  if (front.block.strips.empty()) pending_.pop_front();
}

// Whether the next block, with those it must stay with, fits the next page but not this one.
bool PageLayout::WantsNextPage(double room) {
  double needed = space_after_;
  for (std::size_t i = 0; Load(i + 1); ++i) {
    const BlockStrips& block = pending_[i].block;
    const bool whole = block.keep_together || block.keep_with_next;
    for (const auto& strip : block.strips) {
      if (strip != block.strips.front() && strip->page_break_before) break;
      needed += strip->space_before + strip->height;
      if (!whole || needed > height_) break;
      needed += strip->space_after;
    }
    if (!block.keep_with_next || needed > height_) break;
  }
  return needed > room + kSlack && needed <= height_;
}

double PageLayout::DrawRepeatedHeader(QPainter& painter, QPointF corner) const {
  const Pending& front = pending_.front();
  if (!front.block.header) return 0;
  const Strips& header = *front.block.header;
  if (next_ < header.back()->end || next_ == 0) return 0;
  double total = 0;
  for (const auto& strip : header) total += strip->height;
  if (total > height_ * kHeaderShare) return 0;
  double y = 0;
  for (const auto& strip : header) {
    strip->Draw(painter, corner + QPointF(0, y));
    y += strip->height;
  }
  return y;
}

bool PageLayout::DrawNext(QPainter& painter, QPointF corner, double& y, bool& page_empty) {
  Pending& front = pending_.front();
  const std::shared_ptr<Strip> strip = front.block.strips.front();
  const bool breaks = std::exchange(strip->page_break_before, false);
  if (breaks && !page_empty) return false;
  const bool together = front.block.keep_together || front.block.keep_with_next;
  if (!page_empty && together && !front.started && WantsNextPage(height_ - y)) return false;

  const double top = page_empty ? y : y + space_after_ + strip->space_before;
  const double room = height_ - top;
  if (strip->height <= room + kSlack) {
    strip->Draw(painter, corner + QPointF(0, top));
    y = top + strip->height;
    space_after_ = strip->space_after;
    page_empty = false;
    DropStrip();
    return true;
  }
  if (page_empty || strip->height > height_ * kWholeRowShare) {
    pending_.front().started = true;
    if (const auto part = strip->TakeTop(room)) {
      part->Draw(painter, corner + QPointF(0, top));
      return false;
    }
  }
  if (!page_empty) return false;
  // Taller than a page and in one piece: made smaller, so that all of it is seen.
  painter.save();
  painter.translate(corner + QPointF(0, top));
  const double scale = room / strip->height;
  painter.scale(scale, scale);
  strip->Draw(painter, QPointF());
  painter.restore();
  DropStrip();
  return false;
}

}  // namespace tenora::printing
