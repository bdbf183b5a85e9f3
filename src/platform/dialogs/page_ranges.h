// The pages of a document that are to be printed, as people write them: "2-3, 5".
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tenora {

// Pages counted from 1, both ends included.
struct PageRange {
  int first = 1, last = 1;

  bool operator==(const PageRange&) const = default;
};

// The ranges between commas; "4-" goes to the end, "-2" begins with the first page. None for a text
// that is something else or names no page.
std::optional<std::vector<PageRange>> ParsePageRanges(std::string_view text);

// What is wrong with a text that ParsePageRanges does not take, for the person who typed it; empty
// for one that it takes.
std::string PageRangesFault(std::string_view text);

// The text that ParsePageRanges reads as these ranges.
std::string PageRangesText(const std::vector<PageRange>& ranges);

// True for every page where there is no range.
bool HoldsPage(const std::vector<PageRange>& ranges, int page);

}  // namespace tenora
