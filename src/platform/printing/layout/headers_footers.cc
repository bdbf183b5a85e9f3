#include "platform/printing/layout/headers_footers.h"

#include <algorithm>

#include "platform/printing/layout/block_layout.h"
#include "platform/printing/layout/placed_strips.h"
#include "platform/printing/layout/taken_areas.h"
#include "platform/richtext/document_text.h"

namespace tenora::printing {
namespace {

using richtext::PageSide;

constexpr int kUsualDistance = 720;  // of headers and footers from the paper's edge
// The least height left for text, twips. Headers and footers that leave less are scaled down.
constexpr double kLeastBody = 1440;

std::size_t Index(PageSide side) { return static_cast<std::size_t>(side); }

}  // namespace

HeadersAndFooters::HeadersAndFooters(const LayoutContext& context,
                                     const richtext::DocumentSection& section)
    : context_(context),
      area_(context.area),
      page_(*section.page),
      which_(richtext::PageHeadsOf(context.document, section)) {
  context_.page_height = std::max(area_.paper_height - kLeastBody, kLeastBody);
  const auto distance = [&](std::string_view word) {
    const int set = richtext::PageWord(page_, word).value_or(kUsualDistance);
    return std::clamp<double>(set, 0, area_.paper_height / 5);
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
    added.shows = richtext::Shows(*sources[side]);
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

// The distance of its end from the paper's edge where it stands.
double HeadersAndFooters::EndOf(const Head& head) const {
  return (head.footer ? footer_bottom_ : header_top_) + head.height;
}

// How far from the paper's edge the text begins below a header, or ends above a footer: at the
// letter's own margin, as it did for the author. An empty one takes its room only in letters whose
// own margin holds.
double HeadersAndFooters::TextEdge(const Head& head) const {
  const double own = head.footer ? page_.bottom : page_.top;
  const double set = head.footer ? area_.paper_height - area_.bottom : area_.top;
  if (!head.shows && own != set) return 0;
  return std::max(EndOf(head), own);
}

// Between the paper's edge and the end of a header, or of a footer.
double HeadersAndFooters::MostOn(PageSide side) const {
  double both = 0;
  for (const auto* const head : {&headers_[Index(side)], &footers_[Index(side)]})
    both += *head ? EndOf(**head) : 0;
  const double room = std::max(area_.paper_height - kLeastBody, 0.0);
  return both > room ? room / 2 : room;
}

HeadersAndFooters::Body HeadersAndFooters::BodyWith(PageSide side) const {
  const double most = MostOn(side);
  Body body{area_.top, area_.bottom};
  if (const auto& header = headers_[Index(side)])
    body.top = std::max(body.top, std::min(TextEdge(*header), most));
  if (const auto& footer = footers_[Index(side)])
    body.bottom = std::min(body.bottom, area_.paper_height - std::min(TextEdge(*footer), most));
  return body.height() < std::min(kLeastBody, area_.height()) / 2 ? Body{area_.top, area_.bottom}
                                                                  : body;
}

HeadersAndFooters::Body HeadersAndFooters::BodyOf(int page, int number) const {
  return BodyWith(which_.SideOf(page, number));
}

HeadersAndFooters::Body HeadersAndFooters::WithHeads(int page, int number, bool header,
                                                     bool footer) const {
  const PageSide side = which_.SideOf(page, number);
  Body body = BodyWith(side);
  const auto shows = [&](const Heads& heads) {
    return heads[Index(side)] && heads[Index(side)]->shows;
  };
  if (header && shows(headers_)) body.top = header_top_;
  if (footer && shows(footers_)) body.bottom = area_.paper_height - footer_bottom_;
  return body;
}

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

void HeadersAndFooters::Draw(QPainter& painter, int page, richtext::PageNumbers numbers,
                             double shift) {
  const PageSide side = which_.SideOf(page, numbers.page);
  numbers.style = which_.number_style;
  for (Heads* heads : {&headers_, &footers_}) {
    std::optional<Head>& head = (*heads)[Index(side)];
    if (!head) continue;
    if (head->fields.number || head->fields.count) LayOut(&*head, numbers);
    Draw(painter, *head, MostOn(side), area_.left + shift);
  }
}

void HeadersAndFooters::Draw(QPainter& painter, const Head& head, double most, double left) const {
  most -= head.footer ? footer_bottom_ : header_top_;
  const double scale = head.height > most ? most / head.height : 1;
  const double top =
      head.footer ? area_.paper_height - footer_bottom_ - head.height * scale : header_top_;
  painter.save();
  painter.translate(left * (1 - scale), top * (1 - scale));
  painter.scale(scale, scale);
  double y = top;
  PlacedStrips strips;
  for (const auto& strip : head.strips) {
    y += strip->space_before;
    strips.Add(strip, QPointF(left, y));
    y += strip->height + strip->space_after;
  }
  strips.Draw(painter);
  painter.restore();
}

}  // namespace tenora::printing
