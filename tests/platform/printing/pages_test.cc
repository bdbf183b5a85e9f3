// How a document is divided into pages.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/printing/paper.h"

namespace tenora::test {
namespace {

using richtext::Block;
using richtext::CharFormat;
using richtext::ParagraphFormat;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Lines of exactly 500 twips, so that a page of 5000 holds ten.
ParagraphFormat HalfThousand() {
  ParagraphFormat format;
  format.line_spacing = -500;
  return format;
}

std::vector<Block> NumberedLines(int count) {
  std::vector<Block> blocks;
  for (int i = 1; i <= count; ++i) {
    blocks.emplace_back(Line("line" + std::to_string(i), HalfThousand()));
  }
  return blocks;
}

class Pages : public testing::Test {
 protected:
  Paper PrintTenLinePages(std::vector<Block> blocks) {
    return Print(DocumentOf(std::move(blocks)), folder_, kTextWidth, 5000);
  }

  ScratchFolder folder_;
};

TEST_F(Pages, EndWhereTheNextLineWouldNotFit) {
  const Paper paper = PrintTenLinePages(NumberedLines(25));
  // Nine lines of six characters and one of seven; then ten of seven.
  EXPECT_THAT(paper.ends, ElementsAre(61, 131, 166));
  EXPECT_THAT(paper.PageText(2), StartsWith("line11\n"));
  EXPECT_THAT(paper.PageText(3), StartsWith("line21\n"));
}

TEST_F(Pages, CountPositionsInUtf16UnitsHiddenTextIncluded) {
  CharFormat hidden;
  hidden.hidden = true;
  richtext::Paragraph first = Line("€😀", HalfThousand());
  first.runs.push_back(Text("unseen", hidden));
  std::vector<Block> blocks{first};
  for (Block& block : NumberedLines(10)) blocks.push_back(block);
  EXPECT_THAT(PrintTenLinePages(blocks).ends, ElementsAre(3 + 6 + 1 + 54, 3 + 6 + 1 + 61));
}

TEST_F(Pages, DivideAParagraphBetweenItsLines) {
  CharFormat courier;
  courier.font = 2;
  courier.half_points = 20;
  std::string text;
  for (int i = 0; i < 200; ++i) text += "1234567 ";
  // 24 letters to a line of two inches: three words.
  const Paper paper = Print(DocumentOf({Line(text, HalfThousand(), courier)}), folder_, 2890, 5000);
  ASSERT_EQ(paper.Pages(), 7);
  for (int page = 1; page < 7; ++page) EXPECT_EQ(paper.ends[page - 1], page * 240);
  EXPECT_EQ(paper.ends.back(), 1601);
}

TEST_F(Pages, GiveTheSamePagesWhenStartedInTheMiddle) {
  const richtext::Document document = DocumentOf(NumberedLines(25));
  const auto printers =
      printing::Printers::Create({printing::kPdfPrinterName, folder_ / "middle.pdf"});
  printing::Printer& printer = printers->Current();
  printer.StartDocument("Middle", {});
  printing::FormatRange range;
  range.document = &document;
  range.print_rect = {0, 0, kTextWidth, 5000};
  range.range = {61, 124};
  EXPECT_EQ(printer.Format(range), 124) << "the range's end";
  range.range = {0, -1};
  EXPECT_EQ(printer.Format(range), 61);
  range.range = {61, -1};
  EXPECT_EQ(printer.Format(range), 131);
  printer.CancelJob();
}

TEST_F(Pages, BreakWhereTheAuthorSaid) {
  ParagraphFormat before = HalfThousand();
  before.page_break_before = true;
  const Paper paper = PrintTenLinePages(
      {Line("first\fsecond", HalfThousand()), Line("third", before), Line("with it")});
  ASSERT_EQ(paper.Pages(), 3);
  EXPECT_THAT(paper.PageText(1), StartsWith("first\n"));
  EXPECT_THAT(paper.PageText(2), StartsWith("second\n"));
  EXPECT_THAT(paper.PageText(3), StartsWith("third\nwith it\n"));
  // A break at the very beginning leaves a page empty, a paragraph on a new page does not.
  const Paper second = PrintTenLinePages({Line("\fsecond")});
  ASSERT_EQ(second.Pages(), 2);
  EXPECT_THAT(second.PageText(2), StartsWith("second\n"));
  EXPECT_EQ(PrintTenLinePages({Line("first", before)}).Pages(), 1);
}

TEST_F(Pages, SpendNoSheetOnEmptyParagraphsAtTheEnd) {
  for (const int lines : {3, 10}) {
    std::vector<Block> blocks = NumberedLines(lines);
    for (int i = 0; i < 15; ++i) blocks.emplace_back(Line(" "));
    blocks.emplace_back(Line("\f"));
    blocks.emplace_back(Line(""));
    EXPECT_EQ(PrintTenLinePages(blocks).Pages(), 1);
  }
  EXPECT_EQ(PrintTenLinePages({Line("text\f")}).Pages(), 1);
  EXPECT_EQ(PrintTenLinePages({Line("")}).Pages(), 1);
}

TEST_F(Pages, KeepTogetherWhatBelongsTogether) {
  std::vector<Block> blocks = NumberedLines(9);
  ParagraphFormat heading = HalfThousand(), block = HalfThousand();
  heading.keep_with_next = true;
  block.keep_together = true;
  blocks.emplace_back(Line("Heading", heading));
  blocks.emplace_back(Line("below", HalfThousand()));
  Paper paper = PrintTenLinePages(blocks);
  EXPECT_THAT(paper.PageText(2), StartsWith("Heading\nbelow"));

  blocks = NumberedLines(9);
  blocks.emplace_back(Line("upper\vlower", block));
  paper = PrintTenLinePages(blocks);
  EXPECT_THAT(paper.PageText(2), StartsWith("upper\nlower"));

  // What exceeds a page cannot be kept and starts where it stands.
  blocks = NumberedLines(9);
  std::string long_text = "1";
  for (int i = 2; i < 14; ++i) long_text += "\v" + std::to_string(i);
  blocks.emplace_back(Line(long_text, block));
  EXPECT_THAT(PrintTenLinePages(blocks).PageText(1), HasSubstr("line9\n1\n"));
}

TEST_F(Pages, LeaveNoLineAloneWhereWidowsAreControlled) {
  const struct {
    int before, lines;
    bool controlled;
    int on_first_page;
  } cases[] = {{9, 2, false, 1}, {9, 2, true, 0}, {8, 3, false, 2}, {8, 3, true, 0},
               {9, 5, true, 0},  {8, 5, true, 2}, {6, 5, true, 3},  {5, 5, true, 5}};
  for (const auto& c : cases) {
    std::vector<Block> blocks = NumberedLines(c.before);
    ParagraphFormat format = HalfThousand();
    format.widow_control = c.controlled;
    std::string text = "p1";
    for (int line = 2; line <= c.lines; ++line) text += "\vp" + std::to_string(line);
    blocks.emplace_back(Line(text, format));
    const Paper paper = PrintTenLinePages(blocks);
    int on_first = 0;
    for (const Word& word : paper.Words()) on_first += word.page == 1 && word.text[0] == 'p';
    EXPECT_EQ(on_first, c.on_first_page) << c.before << " and " << c.lines << c.controlled;
  }
}

TEST_F(Pages, ShrinkALineTallerThanThePage) {
  CharFormat huge;
  huge.half_points = 3000;
  const Paper paper =
      Print(DocumentOf({Line("A", {}, huge), Line("after")}), folder_, kTextWidth, 2000);
  EXPECT_THAT(paper.ends, ElementsAre(2, 8));
  EXPECT_LT(paper.Find("A").bottom, kInch + 2000 + 20);
}

TEST_F(Pages, LeaveOutSpaceAtTheirTopWhereTheyEndOfThemselves) {
  ParagraphFormat spaced = HalfThousand(), broken = HalfThousand();
  spaced.space_before = broken.space_before = 700;
  broken.page_break_before = true;
  std::vector<Block> blocks = NumberedLines(10);
  blocks.emplace_back(Line("top", spaced));
  blocks.emplace_back(Line("broken", broken));
  const Paper paper = PrintTenLinePages(blocks);
  const double first = paper.Find("line1").top;
  EXPECT_EQ(paper.Find("top").page, 2);
  EXPECT_NEAR(paper.Find("top").top, first, 12);
  EXPECT_EQ(paper.Find("broken").page, 3);
  EXPECT_NEAR(paper.Find("broken").top, first + 700, 12);
  EXPECT_NEAR(PrintTenLinePages({Line("opening", spaced)}).Find("opening").top, first + 700, 12);
}

TEST_F(Pages, HoldALongDocumentInOrder) {
  const Paper paper = PrintTenLinePages(NumberedLines(2000));
  ASSERT_EQ(paper.Pages(), 200);
  EXPECT_THAT(paper.PageText(200), StartsWith("line1991\n"));
  EXPECT_THAT(paper.PageText(200), Not(HasSubstr("line1990\n")));
}

}  // namespace
}  // namespace tenora::test
