#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/printing/paper.h"

namespace tenora::test {
namespace {

using richtext::Cell;
using richtext::Row;
using richtext::Table;
using testing::DoubleNear;
using testing::HasSubstr;
using testing::StartsWith;

constexpr double kNear = 12;

Row RowOf(const std::vector<std::string>& texts) {
  Row row;
  row.half_gap = 100;
  for (const std::string& text : texts) {
    row.cells.push_back(CellOf(text, 3000 * (static_cast<int>(row.cells.size()) + 1)));
  }
  return row;
}

class Tables : public testing::Test {
 protected:
  Paper PrintTable(std::vector<Row> rows, int height = kTextHeight) {
    auto table = std::make_shared<Table>();
    table->rows = std::move(rows);
    return Print(DocumentOf({table, Line("after")}), folder_, kTextWidth, height);
  }

  ScratchFolder folder_;
};

TEST_F(Tables, SetEachCellInItsColumn) {
  Row tall = RowOf({"top", "middle", "low"});
  tall.height = 2000;
  tall.cells[1].vertical_align = Cell::VerticalAlign::kCentre;
  tall.cells[2].vertical_align = Cell::VerticalAlign::kBottom;
  const Paper paper = PrintTable({tall});
  EXPECT_NEAR(paper.Find("top").left, kInch + 100, kNear);
  EXPECT_NEAR(paper.Find("middle").left, kInch + 3100, kNear);
  EXPECT_NEAR(paper.Find("top").top, kInch, kNear);
  const Word middle = paper.Find("middle"), low = paper.Find("low");
  EXPECT_NEAR((middle.top + middle.bottom) / 2, kInch + 1000, 30);
  EXPECT_NEAR(low.bottom, kInch + 2000, 30);
  EXPECT_NEAR(paper.Find("after").top, kInch + 2000, kNear);
}

TEST_F(Tables, KeepTextOffTheEdgesAsFarAsTheCellSays) {
  Row row = RowOf({"own", "gap"});
  row.cells[0].padding = {200, 300, 150, 0};
  const Paper paper = PrintTable({row, RowOf({"next"})});
  EXPECT_NEAR(paper.Find("own").left, kInch + 300, kNear);
  EXPECT_NEAR(paper.Find("own").top, kInch + 200, kNear);
  EXPECT_NEAR(paper.Find("gap").left, kInch + 3100, kNear);
  EXPECT_NEAR(paper.Find("gap").top, kInch + 200, kNear) << "as high as its neighbour";
  EXPECT_NEAR(paper.Find("next").top - paper.Find("own").bottom, 150, 60);

  Row tall = RowOf({"", "x"});
  tall.cells[0].blocks.clear();
  tall.cells[0].padding = {100000, 100000, 100000, 100000};
  for (int i = 1; i <= 50; ++i) tall.cells[0].blocks.emplace_back(Line("p" + std::to_string(i)));
  EXPECT_EQ(PrintTable({tall}, 5600).Find("p50").page, 5) << "half of each page is padding";
}

TEST_F(Tables, MakeRoomForTheLinesBetweenRows) {
  const auto line = [](int width, richtext::Border::Kind kind = {}) {
    return richtext::Border{.present = true, .width = width, .kind = kind};
  };
  const double text = 276;  // of a line, 12 points
  const struct {
    const char* name;
    richtext::Border top, bottom;  // of the left cells, and the other way round of the right ones
    double first, pitch, last;     // above the first row, between rows, below the last
  } cases[] = {{"none", {}, {}, 0, 0, 0},
               {"the thicker counts", line(40), line(100), 100, 100, 100},
               {"double", line(20, richtext::Border::Kind::kDouble), {}, 60, 60, 60},
               {"hairlines", line(1), line(1), 1, 1, 1},
               {"no width named", line(0), line(0), 15, 15, 15}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<Row> rows{RowOf({"r0", "x0"}), RowOf({"r1", "x1"}), RowOf({"r2", "x2"})};
    for (Row& row : rows) {
      row.cells[0].top = row.cells[1].bottom = c.top;
      row.cells[0].bottom = row.cells[1].top = c.bottom;
    }
    const Paper paper = PrintTable(rows);
    EXPECT_NEAR(paper.Find("r0").top, kInch + c.first, 4);
    EXPECT_NEAR(paper.Find("x0").top, kInch + c.first, 4);
    EXPECT_NEAR(paper.Find("r2").top - paper.Find("r0").top, 2 * (text + c.pitch), 4);
    EXPECT_NEAR(paper.Find("after").top - paper.Find("r2").top, text + c.last, 4);
  }
}

TEST_F(Tables, SetTextUpAndDownThePage) {
  Row set = RowOf({"rising text", "level", "falling text"});
  set.half_gap = 0;
  set.height = 2000;
  set.cells[0].direction = Cell::Direction::kUp;
  set.cells[2].direction = Cell::Direction::kDown;
  Row automatic = RowOf({"Unseparated", "beside"});
  automatic.cells[0].direction = Cell::Direction::kUp;
  const Paper paper = PrintTable({set, automatic});
  const Word rising = paper.Find("rising"), falling = paper.Find("falling");
  EXPECT_NEAR(rising.left, kInch, 60);
  EXPECT_NEAR(rising.bottom, kInch + 2000, 60);
  EXPECT_LT(paper.Find("text").bottom, rising.top + 1) << "the line runs up";
  EXPECT_GT(rising.bottom - rising.top, rising.right - rising.left);
  EXPECT_NEAR(falling.right, kInch + 9000, 80);
  EXPECT_NEAR(falling.top, kInch, 60);
  EXPECT_NEAR(paper.Find("level").top, kInch, kNear);
  const Word long_word = paper.Find("Unseparated");
  EXPECT_GE(long_word.top, kInch + 2000 - kNear) << "the row is as high as its text is long";
  EXPECT_LE(long_word.bottom, paper.Find("after").top + kNear);
}

TEST_F(Tables, BeginARightToLeftRowAtItsRightEnd) {
  Row row = RowOf({"first", "second"});
  row.right_to_left = true;
  row.cells[1].right_edge = 4000;
  const Paper paper = PrintTable({row});
  EXPECT_NEAR(paper.Find("second").left, kInch + 100, kNear);
  EXPECT_NEAR(paper.Find("first").left, kInch + 1000 + 100, kNear);
}

TEST_F(Tables, AlignAmountsAtACellsDecimalTab) {
  richtext::ParagraphFormat amounts;
  amounts.tabs = {{2000, richtext::TabStop::Kind::kDecimal, ""}};
  richtext::Row row;
  for (const char* text : {"1.25", "1,234.50", "9\t7.25"}) {
    richtext::Cell cell = CellOf("", 3000 * (int(row.cells.size()) + 1));
    cell.blocks = {Line(text, amounts)};
    row.cells.push_back(std::move(cell));
  }
  auto table = std::make_shared<richtext::Table>();
  table->rows.push_back(std::move(row));
  const Paper paper = Print(DocumentOf({table, Line("0.25", amounts)}), folder_);
  const double digit = 120;  // of 12-point Times
  EXPECT_THAT(paper.Find("1.25").right, DoubleNear(kInch + 2060 + 2 * digit, 12));
  EXPECT_THAT(paper.Find("1,234.50").right, DoubleNear(kInch + 5060 + 2 * digit, 12));
  EXPECT_THAT(paper.Find("9").left, DoubleNear(kInch + 6000, 20)) << "it has a tab of its own";
  EXPECT_THAT(paper.Find("0.25").left, DoubleNear(kInch, 12)) << "outside tables";
}

TEST_F(Tables, StandWhereTheirRowsAreAligned) {
  Row right = RowOf({"cell"});
  right.alignment = richtext::Alignment::kRight;
  Row shifted = RowOf({"moved"});
  shifted.left_edge = -100;
  const Paper paper = PrintTable({right, shifted});
  EXPECT_NEAR(paper.Find("cell").left, kPageWidth - kInch - 3000 + 100, kNear);
  EXPECT_NEAR(paper.Find("moved").left, kInch, kNear);
}

TEST_F(Tables, JoinMergedCells) {
  Row first = RowOf({"wide", "covered", "c1"}), second = RowOf({"a2", "b2", "c2"});
  first.cells[0].horizontal_merge = Cell::Merge::kFirst;
  first.cells[1].horizontal_merge = Cell::Merge::kContinued;
  first.cells[0].blocks = {Line("wide enough for more than one column of text")};
  first.cells[2].vertical_merge = Cell::Merge::kFirst;
  second.cells[2].vertical_merge = Cell::Merge::kContinued;
  first.cells[2].blocks = {Line("c1"), Line("x"), Line("y"), Line("last")};
  const Paper paper = PrintTable({first, second});
  EXPECT_NEAR(paper.Find("text").top, paper.Find("wide").top, kNear) << "one line";
  EXPECT_THAT(paper.Text(), testing::Not(HasSubstr("covered")));
  EXPECT_THAT(paper.Text(), testing::Not(HasSubstr("c2")));
  EXPECT_GE(paper.Find("after").top, paper.Find("last").bottom - kNear);
}

TEST_F(Tables, RepeatTheirHeaderOnEveryPage) {
  std::vector<Row> rows{RowOf({"Head"})};
  rows[0].header = true;
  for (int i = 1; i <= 60; ++i) rows.push_back(RowOf({"row" + std::to_string(i)}));
  const Paper paper = PrintTable(rows, 5600);
  ASSERT_EQ(paper.Pages(), 4);
  EXPECT_THAT(paper.PageText(1), StartsWith("Head\n"));
  EXPECT_THAT(paper.PageText(2), StartsWith("Head\n"));
  EXPECT_THAT(paper.PageText(3), HasSubstr("row54\n"));
  EXPECT_EQ(paper.ends.back(), 5 + 9 * 5 + 51 * 6 + 6) << "headers count once";
}

TEST_F(Tables, LeaveNoHeaderAloneAtThePagesFoot) {
  Row header = RowOf({"heading"}), body = RowOf({"first"});
  header.header = true;
  header.height = body.height = 1000;
  // The header itself would fit below the text.
  auto table = std::make_shared<Table>(Table{{header, body}});
  richtext::ParagraphFormat tall;
  tall.line_spacing = -5000;
  const Paper paper =
      Print(DocumentOf({Line("above", tall), table}), folder_, kTextWidth, 5000 + 1500);
  EXPECT_EQ(paper.Find("above").page, 1);
  EXPECT_EQ(paper.Find("heading").page, 2);
  EXPECT_EQ(paper.Find("first").page, 2);
}

TEST_F(Tables, DivideARowThatIsTallerThanThePage) {
  Row row = RowOf({"", "short"});
  row.cells[0].blocks.clear();
  for (int i = 1; i <= 50; ++i) row.cells[0].blocks.emplace_back(Line("p" + std::to_string(i)));
  const Paper paper = PrintTable({row}, 5600);
  ASSERT_EQ(paper.Pages(), 3);
  EXPECT_THAT(paper.PageText(2), StartsWith("p21\n"));
  EXPECT_THAT(paper.PageText(3), HasSubstr("p50\n"));
  EXPECT_EQ(paper.Find("after").page, 3);
}

TEST_F(Tables, NestAndStayInTheirCell) {
  auto inner = std::make_shared<Table>();
  inner->rows = {RowOf({"in1", "in2"})};
  inner->rows[0].cells[0].right_edge = 1000;
  inner->rows[0].cells[1].right_edge = 2000;
  Row outer = RowOf({"", "beside"});
  outer.cells[0].blocks = {Line("above"), inner, Line("below")};
  const Paper paper = PrintTable({outer});
  EXPECT_NEAR(paper.Find("in2").left, kInch + 100 + 1000 + 100, kNear);
  EXPECT_GT(paper.Find("in1").top, paper.Find("above").top);
  EXPECT_GT(paper.Find("below").top, paper.Find("in1").top);
  EXPECT_NEAR(paper.Find("beside").left, kInch + 3100, kNear);
}

TEST_F(Tables, EndACellThatEndsWithATableBelowThat) {
  auto inner = std::make_shared<Table>();
  inner->rows = {RowOf({"inside"})};
  inner->rows[0].cells[0].right_edge = 2000;
  const double plain = PrintTable({RowOf({"inside"})}).Find("after").top;
  for (const char* last : {"", "more"}) {
    Row outer = RowOf({"", "beside"});
    outer.cells[0].blocks = {inner, Line(last)};
    const double lines = *last == '\0' ? 2 * 10 : 2 * 10 + 276;
    EXPECT_NEAR(PrintTable({outer}).Find("after").top, plain + lines, kNear) << last;
  }
}

TEST_F(Tables, NarrowRowsThatWouldRunOffThePaper) {
  Row wide = RowOf({"left", "lost"}), inside = RowOf({"in", "margin"});
  wide.cells[0].right_edge = 30000;
  wide.cells[1].right_edge = 40000;
  inside.cells[0].right_edge = kTextWidth - 100;
  inside.cells[1].right_edge = kTextWidth + 1000;
  // An indent counts too: a letter made for narrow margins is printed in wide ones.
  Row indented = RowOf({"moved", "gone"});
  indented.left_edge = 1000;
  indented.cells[0].right_edge = 6000;
  indented.cells[1].right_edge = kTextWidth + kInch + 500;
  const Paper paper = PrintTable({wide, inside, indented});
  EXPECT_NEAR(paper.Find("moved").left, kInch + 1000 + 100, kNear);
  EXPECT_LT(paper.Find("gone").left, kInch + 6000) << "narrowed";
  EXPECT_NEAR(paper.Find("lost").left, kInch + 0.75 * kTextWidth + 100, kNear);
  EXPECT_NEAR(paper.Find("margin").left, kPageWidth - kInch, kNear) << "still on the paper";
}

TEST_F(Tables, EndForCellsOfNoWidthAndRowsWithoutCells) {
  Row odd = RowOf({"zero", "back"});
  odd.cells[0].right_edge = 0;
  odd.cells[1].right_edge = -500;
  const Paper paper = PrintTable({Row(), odd, RowOf({"sane"})});
  EXPECT_EQ(paper.Pages(), 1);
  EXPECT_EQ(paper.Find("sane").page, 1);
}

}  // namespace
}  // namespace tenora::test
