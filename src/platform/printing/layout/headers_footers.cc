#include "platform/printing/layout/headers_footers.h"

#include <algorithm>

#include "platform/printing/layout/block_layout.h"
#include "platform/printing/layout/placed_strips.h"
#include "platform/printing/layout/taken_areas.h"

namespace tenora::printing {
namespace {

using richtext::PageSide;

constexpr int kUsualDistance = 720;  // of headers and footers from the paper's edge
// The share of the paper's height that a header or a footer may take, its distance from the edge
// included; taller ones are scaled down.
constexpr double kMostShare = 0.4;
constexpr double kLeastBody =
    720;  // the least height left for text; a taller header overlaps the text

std::size_t Index(PageSide side) { return static_cast<std::size_t>(side); }

}  // namespace

HeadersAndFooters::HeadersAndFooters(const LayoutContext& context, const PageArea& area)
    : context_(context), area_(area), which_(richtext::PageHeadsOf(context.document)) {
  context_.page_height = kMostShare * area.paper_height;
  const double most = context_.page_height;
  const auto distance = [&](std::string_view word) {
    const int set = richtext::PageWord(context.document.page, word).value_or(kUsualDistance);
    return std::clamp<double>(set, 0, most / 2);
  };
  header_top_ = distance("headery");
  footer_bottom_ = distance("footery");
  headers_ = LayOutAll(false);
  footers_ = LayOutAll(true);
}

HeadersAndFooters::Heads HeadersAndFooters::LayOutAll(bool footers) {
  Heads heads;
  const auto& sources = footers ? which_.footers : which_.headers;
  for (std::size_t side = 0; side < heads.size(); ++side) {
    if (sources[side] == nullptr) continue;
    // Not emplace() without a value: clang finds no default constructor of a nested class.
    Head& added = heads[side].emplace(Head{});
    added.footer = footers;
    added.blocks = sources[side];
    added.fields = richtext::PageFieldsIn(*added.blocks);
    LayOut(&added, {});
  }
  return heads;
}

void HeadersAndFooters::LayOut(Head* head, const richtext::PageNumbers& numbers) {
  const bool fields = head->fields.number || head->fields.count;
  if (fields) head->filled = richtext::WithPageNumbers(*head->blocks, numbers);
  head->strips.clear();
  head->height = 0;
  BlockLayout layout(context_, fields ? head->filled : *head->blocks, area_.width(), 0, 0,
                     BlockLayout::Ending::kWhole);
  while (auto block = layout.Next()) {
    for (auto& strip : block->strips) head->strips.push_back(std::move(strip));
  }
  MakeRoom(&head->strips);
  for (const auto& strip : head->strips)
    head->height += strip->space_before + strip->height + strip->space_after;
}

HeadersAndFooters::Body HeadersAndFooters::BodyWith(PageSide side) const {
  const richtext::PageSetup& page = context_.document.page;
  const double most = kMostShare * area_.paper_height;
  Body body{area_.top, area_.bottom};
  // Below a header, text starts at the letter's own margin, as it did for the author.
  if (const auto& header = headers_[Index(side)]) {
    const double end = std::max<double>(header_top_ + header->height, page.top);
    body.top = std::max(body.top, std::min(end, most));
  }
  if (const auto& footer = footers_[Index(side)]) {
    const double end = std::max<double>(footer_bottom_ + footer->height, page.bottom);
    body.bottom = std::min(body.bottom, area_.paper_height - std::min(end, most));
  }
  return body.height() < kLeastBody ? Body{area_.top, area_.bottom} : body;
}

HeadersAndFooters::Body HeadersAndFooters::BodyOf(int page) const { return BodyWith(SideOf(page)); }

double HeadersAndFooters::LeastBodyHeight() const {
  double least = BodyWith(PageSide::kCommon).height();
  if (which_.first_differs) least = std::min(least, BodyWith(PageSide::kFirst).height());
  if (which_.even_differs) least = std::min(least, BodyWith(PageSide::kEven).height());
  return least;
}

bool HeadersAndFooters::ShowPageCount() const {
  const auto counts = [](const std::optional<Head>& head) { return head && head->fields.count; };
  return std::any_of(headers_.begin(), headers_.end(), counts) ||
         std::any_of(footers_.begin(), footers_.end(), counts);
}

void HeadersAndFooters::Draw(QPainter& painter, int page, int page_count) {
  const std::size_t side = Index(SideOf(page));
  for (Heads* heads : {&headers_, &footers_}) {
    std::optional<Head>& head = (*heads)[side];
    if (!head) continue;
    if (head->fields.number || head->fields.count) LayOut(&*head, {NumberOf(page), page_count});
    Draw(painter, *head);
  }
}

void HeadersAndFooters::Draw(QPainter& painter, const Head& head) const {
  const double edge = head.footer ? footer_bottom_ : header_top_;
  const double most = kMostShare * area_.paper_height - edge;
  const double scale = head.height > most ? most / head.height : 1;
  const double top =
      head.footer ? area_.paper_height - footer_bottom_ - head.height * scale : header_top_;
  painter.save();
  painter.translate(area_.left * (1 - scale), top * (1 - scale));
  painter.scale(scale, scale);
  double y = top;
  PlacedStrips strips;
  for (const auto& strip : head.strips) {
    y += strip->space_before;
    strips.Add(strip, QPointF(area_.left, y));
    y += strip->height + strip->space_after;
  }
  strips.Draw(painter);
  painter.restore();
}

}  // namespace tenora::printing
