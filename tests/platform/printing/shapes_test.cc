#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>

#include "platform/printing/not_on_paper.h"
#include "platform/printing/paper.h"
#include "platform/richtext/rtf_reader.h"

namespace tenora::test {
namespace {

using testing::HasSubstr;

// A text box of 3000 by 1000 twips.
std::string Box(const std::string& place, const std::string& text = "boxed") {
  return "{\\shp{\\*\\shpinst" + place + "{\\sp{\\sn shapeType}{\\sv 202}}{\\shptxt " + text +
         "\\par}}{\\shprslt{\\*\\do\\dptxbx{\\dptxbxtext " + text + "\\par}}}}";
}

constexpr const char* kAtColumn =
    "\\shpleft0\\shptop0\\shpright3000\\shpbottom1000\\shpbxcolumn"
    "\\shpbypara";
constexpr const char* kAtPage =
    "\\shpleft5000\\shptop6000\\shpright8000\\shpbottom7000\\shpbxpage"
    "\\shpbypage";

Paper PrintSource(const std::string& text, const ScratchFolder& folder) {
  return Print(richtext::ReadRtf(
                   "{\\rtf1{\\fonttbl{\\f0 Arial;}}\\paperw11906\\paperh16838\\fs20 " + text + "}"),
               folder);
}

TEST(Shapes, StandInTheirPlace) {
  const std::string centred = "{\\sp{\\sn posh}{\\sv 2}}{\\sp{\\sn posrelh}{\\sv 1}}";
  const struct {
    std::string source;
    double left, top;  // of the box's text, from the paper's edges
  } cases[] = {
      {Box(std::string(kAtColumn) + "\\shpwr3") + "text\\par", kInch + 144, kInch + 72},
      {Box(std::string(kAtPage) + "\\shpwr3") + "text\\par", 5144, 6072},
      {Box(std::string(kAtPage) + "{\\sp{\\sn txflTextFlow}{\\sv 1}}") + "text\\par",
       8000 - 144 - 276, 6072},
      {Box(std::string(kAtPage) + "{\\sp{\\sn txflTextFlow}{\\sv 2}}") + "text\\par", 5144,
       7000 - 72 - 600},
      {Box(kAtPage + centred) + "text\\par", (kPageWidth - 3000) / 2 + 144, 6072},
      {"above\\par below" + Box(std::string(kAtColumn) + "\\shpwr3") + "\\par", kInch + 144,
       kInch + 72 + 230},
      {"{\\header " + Box(std::string(kAtPage) + "\\shpwr3") + "\\par}text\\par", 5144, 6072},
      {"\\trowd\\cellx2000\\cellx8000\\pard\\intbl a\\cell b" +
           Box(std::string(kAtColumn) + "\\shpwr3") + "\\cell\\row\\pard text\\par",
       kInch + 2000 + 144, kInch + 72},
      {"text{\\*\\do\\dobxpage\\dobypage\\dptxbx\\dptxbxmar50{\\dptxbxtext boxed\\par}\\dpx5000"
       "\\dpy6000\\dpxsize3000\\dpysize1000}\\par",
       5050, 6050},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    const Paper paper = PrintSource(c.source, folder);
    int count = 0;
    for (const Word& word : paper.Words()) count += word.text == "boxed" ? 1 : 0;
    EXPECT_EQ(count, 1) << c.source;
    EXPECT_NEAR(paper.Find("boxed").left, c.left, 30) << c.source;
    EXPECT_NEAR(paper.Find("boxed").top, c.top, 60) << c.source;
  }
}

TEST(Shapes, LeaveTheTextRoom) {
  const std::string right =
      "\\shpleft6000\\shptop0\\shpright9000\\shpbottom1000\\shpbxcolumn"
      "\\shpbypara\\shpwr2";
  const std::string narrow =
      "\\shpleft1000\\shptop0\\shpright8500\\shpbottom1000\\shpbxcolumn"
      "\\shpbypara\\shpwr2";
  std::string grown = "1";
  for (int i = 2; i <= 10; ++i) grown += "\\par " + std::to_string(i);
  const struct {
    std::string source;
    double top, left;  // of the word "text", from the margins
  } cases[] = {
      {Box(std::string(kAtColumn) + "\\shpwr3") + "text\\par", 0, 0},
      {Box(std::string(kAtColumn) + "\\shpwr1") + "text\\par", 1000, 0},
      {Box(std::string(kAtColumn) + "\\shpwr1", grown) + "text\\par", 10 * 276 + 144, 0},
      {Box(std::string(kAtColumn) + "\\shpwr1{\\sp{\\sn fFitShapeToText}{\\sv 1}}") + "text\\par",
       276 + 144, 0},
      {Box(std::string(kAtColumn) +
           "\\shpwr1{\\sp{\\sn pctVert}{\\sv 200}}{\\sp{\\sn sizerelv}{\\sv 0}}") +
           "text\\par",
       kTextHeight * 0.2, 0},
      {Box(std::string(kAtColumn) + "\\shpwr2{\\sp{\\sn pctHoriz}{\\sv 400}}") + "text\\par", 0,
       kPageWidth * 0.4 + 115},
      {Box(std::string(kAtColumn) + "\\shpwr2") + "text\\par", 0, 3115},
      {Box(std::string(kAtColumn) + "\\shpwr2") + "\\par\\par text\\par", 460, 3115},
      {Box(right) + "text\\par", 0, 0},
      {Box(narrow) + "longer than an inch: text\\par", 1000, 1600},
      {"\\trowd\\cellx8000\\pard\\intbl " + Box(std::string(kAtColumn) + "\\shpwr1") +
           "text\\cell\\row\\pard\\par",
       1000, 0},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    const Word word = PrintSource(c.source, folder).Find("text");
    EXPECT_NEAR(word.top - kInch, c.top, 60) << c.source;
    EXPECT_NEAR(word.left - kInch, c.left, 250) << c.source;
  }
}

struct Rule {
  double left = 0, right = 0, top = 0, height = 0;  // twips
};

// The longest line across the first page.
Rule FindRule(const Paper& paper) {
  constexpr double kTwipsPerPixel = 10;
  const std::string image = Poppler({"pdftoppm", "-r", "144", "-gray", paper.file.string()});
  std::istringstream head(image);
  std::string kind;
  std::size_t width = 0, height = 0, white = 0;
  head >> kind >> width >> height >> white;
  const std::size_t start = image.size() - width * height;
  Rule rule;
  for (std::size_t y = 0; y < height; ++y) {
    const std::string_view row = std::string_view(image).substr(start + y * width, width);
    const auto is_ink = [](char grey) { return static_cast<unsigned char>(grey) < 128; };
    const auto first = std::ranges::find_if(row, is_ink);
    const auto end = std::ranges::find_if_not(first, row.end(), is_ink);
    const double left = double(first - row.begin()) * kTwipsPerPixel;
    const double right = double(end - row.begin()) * kTwipsPerPixel;
    if (right - left > rule.right - rule.left) rule = {left, right, double(y) * kTwipsPerPixel, 0};
    if (right - left == rule.right - rule.left) rule.height += kTwipsPerPixel;
  }
  return rule;
}

// Whatever width the picture had when it was saved.
TEST(Rules, StandInALineOfTextAsWideAsTheyAreSet) {
  const auto rule = [](const std::string& properties) {
    return "text\\par{\\pict{\\*\\picprop" + properties +
           "}\\picwgoal3000\\pichgoal40\\dibitmap 2800000001000000010000000100180000000000"
           "040000000000000000000000000000000000000000000000}\\par below\\par";
  };
  const std::string across = "{\\sp{\\sn fHorizRule}{\\sv 1}}";
  const struct {
    std::string properties;
    double left, width, middle;  // from the margins
    double below;                // the text that follows
  } cases[] = {
      {"", 0, 3000, 250, 270},
      {across, 0, kTextWidth, 345, 460},
      {across + "{\\sp{\\sn pctHR}{\\sv 500}}", kTextWidth / 4.0, kTextWidth / 2.0, 345, 460},
      {across + "{\\sp{\\sn pctHR}{\\sv 0}}{\\sp{\\sn alignHR}{\\sv 2}}", kTextWidth - 3000.0, 3000,
       345, 460},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    const Paper paper = PrintSource(rule(c.properties), folder);
    const Rule found = FindRule(paper);
    EXPECT_NEAR(found.left - kInch, c.left, 20) << c.properties;
    EXPECT_NEAR(found.right - found.left, c.width, 20) << c.properties;
    EXPECT_NEAR(found.top + found.height / 2 - kInch, c.middle, 20) << c.properties;
    EXPECT_NEAR(paper.Find("below").top - kInch, c.below, 20) << c.properties;
  }
}

TEST(Frames, StandInTheirPlaceAndLeaveTheTextRoom) {
  const std::string window = "\\pard\\absw4000\\absh1800\\phpg\\posx6000\\pvpg\\posy2000 ";
  const struct {
    std::string source;
    double left, top;            // of the word "framed", from the paper's edges
    double text_left, text_top;  // of the word "text"
  } cases[] = {
      {window + "A\\par framed\\par\\pard text\\par", 6000, 2230, kInch, kInch},
      {window + "\\nowrap framed\\par\\pard text\\par\\par\\par text2\\par", 6000, 2000, kInch,
       kInch},
      {"\\pard\\absw4000\\pvpara\\phmrg framed\\par\\pard text\\par", kInch, kInch, kInch + 4115,
       kInch},
      {"\\pard\\absw4000\\pvpara\\phmrg\\nowrap framed\\par\\pard text\\par", kInch, kInch, kInch,
       kInch + 230},
      {"\\pard\\phpg\\pvpg framed\\par\\pard text\\par", kInch, kInch, kInch, kInch + 230},
      {"\\pard\\posxr\\pvpara framed\\par\\pard text\\par", kPageWidth - kInch - 650, kInch, kInch,
       kInch},
      {"{\\header\\pard\\absw3000\\pvpg\\phpg\\posx7000\\posy3000\\fs20 framed\\par}text\\par",
       7000, 3000, kInch, kInch},
      {"\\trowd\\cellx3000\\pard\\intbl\\absw3000\\pvpg\\phpg\\posx7000\\posy3000 framed\\cell"
       "\\row\\pard text\\par",
       7000, 3000, kInch, kInch},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    const Paper paper = PrintSource(c.source, folder);
    EXPECT_NEAR(paper.Find("framed").left, c.left, 60) << c.source;
    EXPECT_NEAR(paper.Find("framed").top, c.top, 60) << c.source;
    EXPECT_NEAR(paper.Find("text").left, c.text_left, 60) << c.source;
    EXPECT_NEAR(paper.Find("text").top, c.text_top, 60) << c.source;
    EXPECT_EQ(paper.Pages(), 1) << c.source;
  }
}

std::string TableAt(std::string_view place, int width, int rows) {
  std::string source;
  for (int row = 1; row <= rows; ++row) {
    source.append("\\trowd").append(place).append("\\cellx").append(std::to_string(width));
    source.append("\\pard\\intbl row").append(std::to_string(row)).append("\\cell\\row ");
  }
  return source + "\\pard text\\par ";
}

TEST(FloatingTables, StandWhereTheyAreSetBesideTheText) {
  const struct {
    std::string source;
    double left, top;            // of the word "row1", from the paper's edges
    double text_left, text_top;  // of the word "text"
  } cases[] = {
      {TableAt("\\tphpg\\tposx6000\\tpvpg\\tposy2000", 3000, 2), 6000, 2000, kInch, kInch},
      {TableAt("\\tphmrg\\tposxr\\tposyb", 3000, 1), kPageWidth - kInch - 3000,
       kPageHeight - kInch - 230, kInch, kInch},
      {TableAt("\\tpvpara\\tphmrg\\tposx100\\tposy1\\tdfrmtxtRight300", 3000, 2), kInch + 100,
       kInch, kInch + 3400, kInch},
      {TableAt("\\tpvpara\\tphmrg\\tposnegx-500\\tposy1", 9000, 2), kInch - 500, kInch, kInch,
       kInch + 2 * 230},
      {TableAt("\\tphmrg\\tposx100\\tpvpg\\tposy30000", 3000, 1), kInch + 100, kPageHeight - 230,
       kInch, kInch},
      {TableAt("\\tphmrg\\tpvpara\\tdfrmtxtLeft180", 3000, 1), kInch, kInch, kInch, kInch + 230},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    const Paper paper = PrintSource(c.source, folder);
    EXPECT_NEAR(paper.Find("row1").left, c.left, 60) << c.source;
    EXPECT_NEAR(paper.Find("row1").top, c.top, 60) << c.source;
    EXPECT_NEAR(paper.Find("text").left, c.text_left, 60) << c.source;
    EXPECT_NEAR(paper.Find("text").top, c.text_top, 60) << c.source;
  }
}

// What has no room below its paragraph goes to the next page; what no page has room for is divided.
TEST(FloatingTables, StayOnThePaper) {
  constexpr std::string_view kPlace = "\\tpvpara\\tphmrg\\tposx100\\tposy1";
  std::string lines;
  for (int i = 0; i < 57; ++i) lines += "line\\par ";
  const ScratchFolder folder;
  const Paper late = PrintSource(lines + TableAt(kPlace, 3000, 8), folder);
  EXPECT_EQ(late.Find("row1").page, 2);
  EXPECT_NEAR(late.Find("row1").top, kInch, 60);
  EXPECT_EQ(late.Find("text").page, 2);
  const Paper tall = PrintSource(TableAt(kPlace, 3000, 90), folder);
  EXPECT_EQ(tall.Find("row1").page, 1);
  EXPECT_EQ(tall.Find("row90").page, 2);
  EXPECT_NEAR(tall.Find("row90").left, kInch + 100, 60);
}

TEST(Shapes, ThatFillAPageDoNotKeepTheTextOffAllPages) {
  const ScratchFolder folder;
  const Paper paper =
      PrintSource(Box("\\shpleft0\\shptop0\\shpright12000\\shpbottom17000\\shpbxpage\\shpbypage"
                      "\\shpwr1") +
                      "text\\par next\\par",
                  folder);
  EXPECT_EQ(paper.Find("text").page, 1);
  EXPECT_EQ(paper.Find("next").page, 2);
}

TEST(Shapes, AreReportedOnlyWhereNothingIsDrawn) {
  const auto finds = [](const std::string& source) {
    return printing::NotOnPaper(richtext::ReadRtf("{\\rtf1 " + source + "}"));
  };
  const std::string shape = "{\\shp{\\*\\shpinst\\shpright900\\shpbottom900{\\sp{\\sn shapeType}";
  EXPECT_THAT(finds(Box(kAtColumn)), testing::IsEmpty());
  EXPECT_THAT(finds(shape + "{\\sv 3}}}}"), testing::IsEmpty());
  EXPECT_THAT(finds(shape + "{\\sv 199}}}}"), testing::ElementsAre("a drawing"));
}

}  // namespace
}  // namespace tenora::test
