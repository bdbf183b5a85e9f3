#include "platform/printing/layout/headers_footers.h"

#include <algorithm>
#include <charconv>

#include "platform/printing/layout/block_layout.h"

namespace tenora::printing {
namespace {

constexpr std::string_view kHeader = "header", kFooter = "footer";  // followed by the side
constexpr int kUsualDistance = 720;  // of headers and footers from the paper's edge
// The share of the paper's height that a header or a footer may take, its distance from the edge
// included; taller ones are scaled down.
constexpr double kMostShare = 0.4;
constexpr double kLeastBody =
    720;  // the least height left for text; a taller header overlaps the text

// The parameter of a control word of the page set-up, 1 where it has none; nothing without the
// word.
std::optional<int> PageWord(const richtext::PageSetup& page, std::string_view word) {
  std::string_view words = page.other_words;
  while (!words.empty()) {
    words.remove_prefix(1);
    const std::string_view one = words.substr(0, words.find('\\'));
    words.remove_prefix(one.size());
    if (!one.starts_with(word)) continue;
    int number = 1;
    const char* const end = one.data() + one.size();
    const char* const digits = one.data() + word.size();
    if (digits == end || std::from_chars(digits, end, number).ptr == end) return number;
  }
  return std::nullopt;
}

int FirstNumber(const richtext::PageSetup& page) {
  const bool restarts = PageWord(page, "pgnrestart").value_or(0) != 0;
  const auto number = restarts ? PageWord(page, "pgnstarts") : PageWord(page, "pgnstart");
  return std::clamp(number.value_or(1), 0, 100'000);
}

}  // namespace

HeadersAndFooters::HeadersAndFooters(const LayoutContext& context, const PageArea& area)
    : context_(context),
      area_(area),
      first_differs_(PageWord(context.document.page, "titlepg").value_or(0) != 0),
      even_differs_(PageWord(context.document.page, "facingp").value_or(0) != 0),
      first_number_(FirstNumber(context.document.page)) {
  context_.in_header = true;
  context_.page_height = kMostShare * area.paper_height;
  const double most = context_.page_height;
  const auto distance = [&](std::string_view word) {
    const int set = PageWord(context.document.page, word).value_or(kUsualDistance);
    return std::clamp<double>(set, 0, most / 2);
  };
  header_top_ = distance("headery");
  footer_bottom_ = distance("footery");
  if (first_differs_) Load("f", kFirst);
  if (even_differs_) {
    Load("l", kEven);
    Load("r", kCommon);
    Load("", kEven);
  }
  Load("", kCommon);
  Load("r", kCommon);
}

// Uses the document's header and footer for this side on these pages, unless they have one already.
void HeadersAndFooters::Load(std::string_view side, Which which) {
  for (const richtext::HeadGroup& group : context_.document.head_groups) {
    const std::string_view word = group.word;
    if (word.size() < kHeader.size() || word.substr(kHeader.size()) != side) continue;
    const bool footer = word.starts_with(kFooter);
    std::optional<Head>& head = (footer ? footers_ : headers_)[which];
    if (head || !Shows(group.blocks)) continue;
    // Not emplace() without a value: clang finds no default constructor of a nested class.
    Head& added = head.emplace(Head{});
    added.footer = footer;
    added.blocks = &group.blocks;
    added.fields = PageFieldsIn(group.blocks);
    LayOut(&added, {});
  }
}

void HeadersAndFooters::LayOut(Head* head, const PageNumbers& numbers) {
  const bool fields = head->fields.number || head->fields.count;
  if (fields) head->filled = WithPageNumbers(*head->blocks, numbers);
  head->strips.clear();
  head->height = 0;
  BlockLayout layout(context_, fields ? head->filled : *head->blocks, area_.width(), 0, 0,
                     BlockLayout::Ending::kWhole);
  while (auto block = layout.Next()) {
    for (auto& strip : block->strips) {
      head->height += strip->space_before + strip->height + strip->space_after;
      head->strips.push_back(std::move(strip));
    }
  }
}

HeadersAndFooters::Which HeadersAndFooters::WhichOf(int page) const {
  if (page == 1 && first_differs_) return kFirst;
  return even_differs_ && NumberOf(page) % 2 == 0 ? kEven : kCommon;
}

HeadersAndFooters::Body HeadersAndFooters::BodyWith(Which which) const {
  const richtext::PageSetup& page = context_.document.page;
  const double most = kMostShare * area_.paper_height;
  Body body{area_.top, area_.bottom};
  // Below a header, text starts at the letter's own margin, as it did for the author.
  if (const auto& header = headers_[which]) {
    const double end = std::max<double>(header_top_ + header->height, page.top);
    body.top = std::max(body.top, std::min(end, most));
  }
  if (const auto& footer = footers_[which]) {
    const double end = std::max<double>(footer_bottom_ + footer->height, page.bottom);
    body.bottom = std::min(body.bottom, area_.paper_height - std::min(end, most));
  }
  return body.height() < kLeastBody ? Body{area_.top, area_.bottom} : body;
}

HeadersAndFooters::Body HeadersAndFooters::BodyOf(int page) const {
  return BodyWith(WhichOf(page));
}

double HeadersAndFooters::LeastBodyHeight() const {
  double least = BodyWith(kCommon).height();
  if (first_differs_) least = std::min(least, BodyWith(kFirst).height());
  if (even_differs_) least = std::min(least, BodyWith(kEven).height());
  return least;
}

bool HeadersAndFooters::ShowPageCount() const {
  const auto counts = [](const std::optional<Head>& head) { return head && head->fields.count; };
  return std::any_of(headers_.begin(), headers_.end(), counts) ||
         std::any_of(footers_.begin(), footers_.end(), counts);
}

void HeadersAndFooters::Draw(QPainter& painter, int page, int page_count) {
  const Which which = WhichOf(page);
  for (Heads* heads : {&headers_, &footers_}) {
    std::optional<Head>& head = (*heads)[which];
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
  for (const auto& strip : head.strips) {
    y += strip->space_before;
    strip->Draw(painter, QPointF(area_.left, y));
    y += strip->height + strip->space_after;
  }
  painter.restore();
}

}  // namespace tenora::printing
