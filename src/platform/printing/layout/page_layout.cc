#include "platform/printing/layout/page_layout.h"

#include "platform/printing/document_length.h"

namespace tenora::printing {
namespace {

constexpr double kSlack = 1;  // rounding of heights, twips
// A row up to this share of the page moves to the next page whole; a taller one is divided.
constexpr double kWholeRowShare = 0.5;
// Header rows that leave less than this share of the page are not repeated.
constexpr double kHeaderShare = 0.5;

// Scales down what is taller than a page and cannot be divided, so that all of it is visible.
void DrawSmaller(QPainter& painter, const Strip& strip, QPointF corner, double available_height) {
  std::vector<PlacedFloating> floating;
  strip.CollectFloating(corner, &floating);
  for (const PlacedFloating& one : floating) one.floating->content->Draw(painter, one.corner);
  painter.save();
  painter.translate(corner);
  const double scale = available_height / strip.height;
  painter.scale(scale, scale);
  strip.Draw(painter, QPointF());
  painter.restore();
}

}  // namespace

PageLayout::PageLayout(const richtext::Document& document, const PageArea& area,
                       SharedResources& resources)
    : area_(area),
      resources_(resources),
      context_(document, area, resources),
      headers_and_footers_(context_, area),
      length_(DocumentLength(document)) {
  context_.page_height = headers_and_footers_.LeastBodyHeight();
  Restart();
}

int PageLayout::DrawPage(QPainter& painter, int from, int to) {
  if (from != next_) StartAt(from);
  FillPage(&painter, to);
  return next_;
}

void PageLayout::FillPage(QPainter* painter, int to) {
  const HeadersAndFooters::Body body = headers_and_footers_.BodyOf(++page_);
  corner_ = QPointF(area_.left, body.top);
  height_ = body.height();
  if (painter != nullptr) {
    if (page_count_ == 0 && headers_and_footers_.ShowPageCount()) page_count_ = CountPages();
    headers_and_footers_.Draw(*painter, page_, page_count_);
  }
  double y = 0;
  bool page_empty = true;
  space_after_ = 0;
  taken_.Clear();
  if (Load(1)) y = DrawRepeatedHeader(painter);
  while (Load(1)) {
    const Strip& strip = *pending_.front().block.strips.front();
    if (to >= 0 && strip.begin >= to) break;
    if (!DrawNext(painter, y, page_empty)) break;
  }
  if (painter != nullptr) placed_.Draw(*painter);
  next_ = Load(1) ? pending_.front().block.strips.front()->begin : length_;
}

// Counting needs no page numbers in the headers: they do not change the headers' heights.
int PageLayout::CountPages() {
  PageLayout pages(context_.document, area_, resources_);
  pages.SkipTo(length_);
  return pages.page_;
}

void PageLayout::Restart() {
  pending_.clear();
  blocks_ = std::make_unique<BlockLayout>(context_, context_.document.blocks, area_.width(), 0, 0,
                                          BlockLayout::Ending::kVisible,
                                          QPointF(area_.left, headers_and_footers_.BodyOf(1).top));
  next_ = page_ = 0;
}

// Fills pages until one ends at the position or after it.
void PageLayout::SkipTo(int position) {
  for (int begin = -1; next_ < std::min(position, length_) && next_ > begin;) {
    begin = next_;
    FillPage(nullptr, -1);
  }
}

void PageLayout::StartAt(int position) {
  Restart();
  SkipTo(position);
  if (next_ == position) return;
  // No page begins at the position.
  const int pages = page_ - 1;
  Restart();
  while (Load(1) && pending_.front().block.strips.front()->end <= position) DropStrip();
  next_ = position;
  page_ = std::max(pages, 0);
}

bool PageLayout::Load(std::size_t count) {
  while (pending_.size() < count) {
    auto block = blocks_->Next();
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

// Whether the next block, with those it must stay with, fits on the next page but not on this one.
bool PageLayout::WantsNextPage(double available_height) {
  const double next_height = headers_and_footers_.BodyOf(page_ + 1).height();
  double needed = space_after_;
  for (std::size_t i = 0; Load(i + 1); ++i) {
    const BlockStrips& block = pending_[i].block;
    const bool whole = block.keep_together || block.keep_with_next;
    for (const auto& strip : block.strips) {
      if (strip != block.strips.front() && strip->page_break_before) break;
      needed += strip->space_before + strip->height;
      if (!whole || needed > next_height) break;
      needed += strip->space_after;
    }
    if (!block.keep_with_next || needed > next_height) break;
  }
  return needed > available_height + kSlack && needed <= next_height;
}

double PageLayout::DrawRepeatedHeader(QPainter* painter) {
  const Pending& front = pending_.front();
  if (!front.block.header) return 0;
  const Strips& header = *front.block.header;
  if (next_ < header.back()->end || next_ == 0) return 0;
  double total = 0;
  for (const auto& strip : header) total += strip->height;
  if (total > height_ * kHeaderShare) return 0;
  double y = 0;
  for (const auto& strip : header) {
    if (painter != nullptr) placed_.Add(strip, corner_ + QPointF(0, y));
    y += strip->height;
  }
  return y;
}

bool PageLayout::DrawNext(QPainter* painter, double& y, bool& page_empty) {
  Pending& front = pending_.front();
  const std::shared_ptr<Strip> strip = front.block.strips.front();
  const bool breaks = std::exchange(strip->page_break_before, false);
  if (breaks && !page_empty) return false;
  const bool together = front.block.keep_together || front.block.keep_with_next;
  if (!page_empty && together && !front.started && WantsNextPage(height_ - y)) return false;

  double top = page_empty ? y : y + space_after_ + strip->space_before;
  const double unmoved = top;
  for (const Floating& one : strip->floating) taken_.Add(one, corner_ + QPointF(0, top));
  const double free = taken_.FreeBelow(*strip, corner_ + QPointF(0, top)) - corner_.y();
  // Where no page has room below what floats in the strip itself, it stays over or under that.
  if (!page_empty || free + strip->height <= height_ + kSlack) {
    strip->MoveBelowFloating(free - top);
    top = free;
  }
  const double available_height = height_ - top;
  if (strip->height <= available_height + kSlack) {
    if (painter != nullptr) placed_.Add(strip, corner_ + QPointF(0, top));
    y = top + strip->height;
    space_after_ = strip->space_after;
    page_empty = false;
    DropStrip();
    return true;
  }
  if (page_empty || strip->height > height_ * kWholeRowShare) {
    pending_.front().started = true;
    if (const auto part = strip->TakeTop(available_height)) {
      if (painter != nullptr) placed_.Add(part, corner_ + QPointF(0, top));
      return false;
    }
  }
  if (!page_empty) {
    strip->MoveBelowFloating(unmoved - top);
    return false;
  }
  if (painter != nullptr)
    DrawSmaller(*painter, *strip, corner_ + QPointF(0, top), available_height);
  DropStrip();
  return false;
}

}  // namespace tenora::printing
