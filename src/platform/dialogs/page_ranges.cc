#include "platform/dialogs/page_ranges.h"

#include <algorithm>
#include <limits>
#include <string>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr int kLastPage = std::numeric_limits<int>::max();
constexpr std::size_t kMostDigits = 6;
constexpr std::string_view kHowToWrite = "Write pages such as 2-3, 5.";

// The numbers of a part between commas as they are written; blanks around them do not count.
struct WrittenRange {
  std::string_view first, last;
  bool is_range = false;
};

WrittenRange WrittenAs(std::string_view text) {
  const std::size_t dash = text.find('-');
  if (dash == std::string_view::npos) return {text, text, false};
  return {TrimBlanks(text.substr(0, dash)), TrimBlanks(text.substr(dash + 1)), true};
}

bool IsNumber(std::string_view text) {
  return !text.empty() && text.size() <= kMostDigits && std::ranges::all_of(text, IsDigit);
}

int NumberOf(std::string_view text, int missing) {
  return text.empty() ? missing : std::stoi(std::string(text));
}

std::string FaultOf(std::string_view part) {
  if (part.empty()) return std::string(kHowToWrite);
  const std::string quoted = "\"" + std::string(part) + "\"";
  const auto [first, last, is_range] = WrittenAs(part);
  for (const std::string_view number : {first, last}) {
    const bool left_out = is_range && number.empty() && part != "-";
    if (!left_out && !IsNumber(number)) return quoted + " is no page. " + std::string(kHowToWrite);
    if (!left_out && NumberOf(number, 1) == 0) return "There is no page 0: the first page is 1.";
  }
  if (NumberOf(first, 1) <= NumberOf(last, kLastPage)) return {};
  return quoted + " ends before it begins.";
}

// The dash that word processors make of a hyphen is one.
std::vector<std::string> PartsOf(std::string_view text) {
  std::vector<std::string> parts = Split(ReplaceAll(std::string(text), "\u2013", "-"), ",");
  for (std::string& part : parts) part = std::string(TrimBlanks(part));
  return parts;
}

}  // namespace

std::string PageRangesFault(std::string_view text) {
  for (const std::string& part : PartsOf(text)) {
    if (std::string fault = FaultOf(part); !fault.empty()) return fault;
  }
  return {};
}

std::optional<std::vector<PageRange>> ParsePageRanges(std::string_view text) {
  if (!PageRangesFault(text).empty()) return std::nullopt;
  std::vector<PageRange> ranges;
  for (const std::string& part : PartsOf(text)) {
    const WrittenRange written = WrittenAs(part);
    ranges.push_back({NumberOf(written.first, 1), NumberOf(written.last, kLastPage)});
  }
  return ranges;
}

std::string PageRangesText(const std::vector<PageRange>& ranges) {
  std::string text;
  for (const auto& [first, last] : ranges) {
    if (!text.empty()) text += ", ";
    text += std::to_string(first);
    if (last != first) text += "-";
    if (last != first && last != kLastPage) text += std::to_string(last);
  }
  return text;
}

bool HoldsPage(const std::vector<PageRange>& ranges, int page) {
  return ranges.empty() || std::ranges::any_of(ranges, [page](const PageRange& range) {
           return range.first <= page && page <= range.last;
         });
}

}  // namespace tenora
