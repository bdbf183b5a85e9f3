#include "platform/dialogs/page_ranges.h"

#include <gtest/gtest.h>

#include <string>

namespace tenora {
namespace {

TEST(PageRanges, AreReadAsPeopleWriteThem) {
  const struct {
    const char* text;
    const char* pages;  // of the first seven; "-" where the text names none
  } cases[] = {
      {"2-3", "23"},      {" 2 - 3 , 5", "235"}, {"7", "7"},     {"4-", "4567"}, {"-2", "12"},
      {"5,1-2,2", "125"}, {"2\u20133", "23"},    {"999999", ""}, {"", "-"},      {"-", "-"},
      {"0", "-"},         {"3-2", "-"},          {"1,,2", "-"},  {"1,", "-"},    {"two", "-"},
      {"1-2-3", "-"},     {"99999999999", "-"},  {"+1", "-"},    {"1.5", "-"},
  };
  for (const auto& c : cases) {
    const auto ranges = ParsePageRanges(c.text);
    std::string pages = ranges ? "" : "-";
    for (int page = 1; ranges && page <= 7; ++page) {
      if (HoldsPage(*ranges, page)) pages += std::to_string(page);
    }
    EXPECT_EQ(pages, c.pages) << c.text;
  }
  EXPECT_TRUE(HoldsPage({}, 12));
  EXPECT_EQ(PageRangesText({{2, 3}, {5, 5}, *ParsePageRanges("7-")->begin()}), "2-3, 5, 7-");
  EXPECT_EQ(PageRangesFault("2-3, 5"), "");
  EXPECT_EQ(PageRangesFault("1, 3-2"), "\"3-2\" ends before it begins.");
  EXPECT_EQ(PageRangesFault("0"), "There is no page 0: the first page is 1.");
  EXPECT_EQ(PageRangesFault("1, a"), "\"a\" is no page. Write pages such as 2-3, 5.");
  EXPECT_EQ(PageRangesFault(" "), "Write pages such as 2-3, 5.");
}

}  // namespace
}  // namespace tenora
