// Headers and footers on paper.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/printing/paper.h"
#include "platform/richtext/rtf_reader.h"

namespace tenora::test {
namespace {

using testing::ElementsAreArray;

// A letter whose head says this and whose text has so many pages of a word each.
Paper PrintWithHead(const std::string& head, int pages, const ScratchFolder& folder) {
  std::string rtf =
      "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Times New Roman;}}" + head + "\\pard\\plain ";
  for (int page = 1; page <= pages; ++page) rtf += page == 1 ? "text" : "\\page text";
  return Print(richtext::ReadRtf(rtf + "\\par}"), folder);
}

TEST(Headers, StandOnThePagesThatTheLetterNames) {
  const std::string common = "{\\header all\\par}", first = "{\\headerf first\\par}",
                    sides = "{\\headerl left\\par}{\\headerr right\\par}";
  const struct {
    std::string head;
    std::vector<std::string> pages;
  } cases[] = {
      {common, {"all text", "all text", "all text"}},
      {common + first, {"all text", "all text", "all text"}},
      {"\\titlepg" + common + first, {"first text", "all text", "all text"}},
      {"\\titlepg" + common, {"text", "all text", "all text"}},
      {"\\titlepg0" + common + first, {"all text", "all text", "all text"}},
      {sides, {"right text", "right text", "right text"}},
      {"\\facingp" + sides, {"right text", "left text", "right text"}},
      {"\\facingp\\pgnrestart\\pgnstarts4" + sides, {"left text", "right text", "left text"}},
      {"\\facingp" + common, {"all text", "all text", "all text"}},
      {common + "one\\sect\\sbknone{\\header later\\par}",
       {"all one text", "later text", "later text"}},
      {"{\\footer foot\\par}", {"text foot", "text foot", "text foot"}},
      {"{\\footer {\\chpgn}/{\\field{\\*\\fldinst{ NUMPAGES }}{\\fldrslt 9}}\\par}",
       {"text 1/3", "text 2/3", "text 3/3"}},
      {"\\pgnstart6{\\footer\\trowd\\cellx5000\\pard\\intbl {\\field{\\*\\fldinst{\\f0 page \\\\* "
       "roman \\\\* MERGEFORMAT}}{\\fldrslt{\\b 1}{\\i 2}}}\\cell\\row\\pard\\par}",
       {"text vi", "text vii", "text viii"}},
      {"{\\header{\\shp{\\*\\shpinst\\shpright3000\\shpbottom900{\\sp{\\sn shapeType}{\\sv 202}}"
       "{\\shptxt p{\\chpgn}\\par}}}\\par}",
       {"p1 text", "p2 text", "p3 text"}},
      {"{\\header\\pard\\posxr\\pvpara p{\\chpgn}\\par\\pard\\par}",
       {"p1 text", "p2 text", "p3 text"}},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    std::vector<std::string> pages(3);
    for (const Word& word : PrintWithHead(c.head, 3, folder).Words()) {
      std::string& page = pages.at(static_cast<std::size_t>(word.page - 1));
      page += (page.empty() ? "" : " ") + word.text;
    }
    EXPECT_THAT(pages, ElementsAreArray(c.pages)) << c.head;
  }
}

TEST(Headers, PushTheTextAndNeverOffThePage) {
  const std::string square =
      "{\\shp{\\*\\shpinst\\shpleft0\\shptop0\\shpright3000\\shpbottom3000\\shpwr2{\\sp{\\sn pib}"
      "{\\sv {\\pict\\dibitmap 2800000001000000010000000100180000000000"
      "0400000000000000000000000000000000000000ffffff00}}}}}";
  const auto tall = [](int twips) { return "\\pard\\sl-" + std::to_string(twips) + " head\\par}"; };
  const struct {
    std::string head;
    double pushed;  // twips below the margin of an inch, where the text stands without a header
  } cases[] = {
      {"{\\header" + tall(500), 0},
      {"{\\header" + tall(2000), 720 + 2000 - kInch},
      {"\\headery1300{\\header" + tall(500), 1300 + 500 - kInch},
      {"\\margt3000", 0},
      {"\\margt3000{\\header" + tall(500), 3000 - kInch},
      // An empty one pushes it where the letter's own margin, also of an inch, holds.
      {"\\margt3000{\\header\\pard\\par}", 0},
      {"\\margt1440\\headery1300{\\header\\pard\\sl-500\\par}", 1300 + 500 - kInch},
      {"{\\header" + square + tall(500), 0},
      {"{\\header" + tall(2000) + "{\\footer" + tall(3000), 720 + 2000 - kInch},
      {"{\\header" + tall(9000), 720 + 9000 - kInch},
      // Made smaller: they would leave no room.
      {"{\\header" + tall(9000) + "{\\footer" + tall(9000), (kPageHeight - kInch) / 2.0 - kInch},
  };
  const ScratchFolder folder;
  const double usual = PrintWithHead("", 1, folder).Find("text").top;
  for (const auto& c : cases) {
    const Paper paper = PrintWithHead(c.head, 1, folder);
    EXPECT_NEAR(paper.Find("text").top - usual, c.pushed, 15) << c.head;
    if (c.head.find("head\\par") == std::string::npos) continue;
    EXPECT_LT(paper.Find("head").bottom, paper.Find("text").bottom) << c.head;
  }
}

}  // namespace
}  // namespace tenora::test
