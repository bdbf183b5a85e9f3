#include "platform/dialogs/page_ranges.h"

#include <algorithm>
#include <limits>
#include <string>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr int kLastPage = std::numeric_limits<int>::max();
constexpr std::size_t kMostDigits = 6;

// `missing` for an empty text; none for one that is no page's number.
std::optional<int> PageOf(std::string_view text, int missing) {
  if (text.empty()) return missing;
  if (text.size() > kMostDigits || !std::ranges::all_of(text, IsDigit)) return std::nullopt;
  const int page = std::stoi(std::string(text));
  return page == 0 ? std::nullopt : std::optional(page);
}

std::optional<PageRange> RangeOf(std::string_view text) {
  const std::size_t dash = text.find('-');
  if (text == "-" || text.empty()) return std::nullopt;
  const auto first = PageOf(TrimBlanks(text.substr(0, dash)), 1);
  const auto last =
      dash == std::string_view::npos ? first : PageOf(TrimBlanks(text.substr(dash + 1)), kLastPage);
  if (!first || !last || *first > *last) return std::nullopt;
  return PageRange{*first, *last};
}

}  // namespace

std::optional<std::vector<PageRange>> ParsePageRanges(std::string_view text) {
  std::vector<PageRange> ranges;
  // The dash that word processors make of a hyphen.
  for (const std::string& part : Split(ReplaceAll(std::string(text), "\u2013", "-"), ",")) {
    const auto range = RangeOf(TrimBlanks(part));
    if (!range) return std::nullopt;
    ranges.push_back(*range);
  }
  return ranges;
}

bool HoldsPage(const std::vector<PageRange>& ranges, int page) {
  return ranges.empty() || std::ranges::any_of(ranges, [page](const PageRange& range) {
           return range.first <= page && page <= range.last;
         });
}

}  // namespace tenora
