// The numbers of lists: as the list tables of word processors give them, in the letter and in its
// saved form.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/richtext/list_counter.h"
#include "platform/richtext/list_mark.h"
#include "platform/richtext/richtext_support.h"

namespace tenora::richtext {
namespace {

using testing::ElementsAreArray;

using Marks = std::vector<std::string>;

void AddMarks(const std::vector<Block>& blocks, Marks* marks) {
  ListCounter numbers;
  for (const Block& block : blocks) {
    if (const auto* table = std::get_if<std::shared_ptr<Table>>(&block)) {
      for (const Row& row : (*table)->rows) {
        for (const Cell& cell : row.cells) AddMarks(cell.blocks, marks);
      }
      numbers.EndAll();
      continue;
    }
    const ParagraphFormat& format = std::get<Paragraph>(block).format;
    const std::string mark = ListMark(format.bullet, numbers.Next(format));
    if (!mark.empty()) marks->push_back(mark);
  }
}

Marks MarksOf(std::string_view source) {
  Marks marks;
  AddMarks(ReadRtf(source).blocks, &marks);
  return marks;
}

// What the source shows to readers that know no lists.
Marks TextsOf(const std::string& source) {
  Marks texts;
  const std::string open = "{\\pntext\\f0";
  for (std::size_t at = source.find(open); at != std::string::npos; at = source.find(open, at)) {
    at += open.size();
    if (source[at] == ' ') ++at;
    texts.push_back(source.substr(at, source.find("\\tab", at) - at));
  }
  return texts;
}

constexpr const char* kTables =
    "{\\*\\listtable"
    // 7: "1.", "a)", "i."
    "{\\list{\\listlevel\\levelnfc0\\levelstartat1{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}}"
    "{\\listlevel\\levelnfc4\\levelstartat1{\\leveltext\\'02\\'01);}{\\levelnumbers\\'01;}}"
    "{\\listlevel\\levelnfc2\\levelstartat1{\\leveltext\\'02\\'02.;}{\\levelnumbers\\'01;}}"
    "\\listid7}"
    // 8: "I.", then "1.1" with decimal outer numbers, then a level that runs through
    "{\\list{\\listlevel\\levelnfc1\\levelstartat1{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}}"
    "{\\listlevel\\levelnfc0\\levelstartat1\\levellegal1{\\leveltext\\'03\\'00.\\'01;}"
    "{\\levelnumbers\\'01\\'03;}}"
    "{\\listlevel\\levelnfc0\\levelstartat1\\levelnorestart1{\\leveltext\\'03(\\'02);}"
    "{\\levelnumbers\\'02;}}\\listid8}"
    // 9: both levels look alike
    "{\\list{\\listlevel\\levelnfc0\\levelstartat1{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}}"
    "{\\listlevel\\levelnfc0\\levelstartat1{\\leveltext\\'02\\'01.;}{\\levelnumbers\\'01;}}"
    "\\listid9}"
    // 10: from 0; "08" with a leading zero; words without a number
    "{\\list{\\listlevel\\levelnfc0\\levelstartat0{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}}"
    "{\\listlevel\\levelnfc22\\levelstartat9{\\leveltext\\'01\\'01;}{\\levelnumbers\\'01;}}"
    "{\\listlevel\\levelnfc0\\levelstartat1{\\leveltext\\'05Note:;}{\\levelnumbers;}}\\listid10}"
    "{\\list{\\listlevel\\levelnfc5\\levelstartat20{\\leveltext\\'01\\'00;}{\\levelnumbers\\'01;}}"
    "\\listid11}}"
    "{\\*\\listoverridetable{\\listoverride\\listid7\\ls1}{\\listoverride\\listid8\\ls2}"
    "{\\listoverride\\listid9\\ls3}{\\listoverride\\listid10\\ls4}"
    "{\\listoverride\\listid11\\ls7}"
    "{\\listoverride\\listid7\\listoverridecount1{\\lfolevel\\listoverridestartat"
    "\\levelstartat4}\\ls5}{\\listoverride\\listid7\\listoverridecount1{\\lfolevel"
    "\\listoverrideformat1{\\listlevel\\levelnfc3\\levelstartat1{\\leveltext\\'02\\'00.;}"
    "{\\levelnumbers\\'01;}}}\\ls6}}";

// A paragraph of a list's level, further in than those of the level before.
std::string Item(int list, int level) {
  return "\\pard\\ls" + std::to_string(list) + "\\ilvl" + std::to_string(level) + "\\fi-360\\li" +
         std::to_string(720 * (level + 1)) + " x\\par ";
}

TEST(Lists, CountAsTheListTablesSay) {
  const std::string plain = "\\pard between\\par ";
  const struct {
    const char* what;
    std::string body;
    Marks marks;
  } cases[] = {
      {"levels begin anew under each item",
       Item(1, 0) + Item(1, 1) + Item(1, 1) + Item(1, 0) + Item(1, 1) + Item(1, 2) + Item(1, 1),
       {"1.", "a)", "b)", "2.", "a)", "i.", "b)"}},
      {"another indent is the same list",
       Item(1, 0) + "\\pard\\ls1\\li900 x\\par " + Item(1, 0),
       {"1.", "2.", "3."}},
      {"an interrupted list goes on",
       Item(1, 0) + Item(1, 1) + plain + Item(1, 1) + Item(1, 0),
       {"1.", "a)", "b)", "2."}},
      {"lists that look alike count for themselves",
       Item(1, 0) + Item(1, 0) + Item(3, 0) + Item(3, 0) + Item(1, 0),
       {"1.", "2.", "1.", "2.", "3."}},
      {"levels that look alike count for themselves",
       Item(3, 0) + Item(3, 0) + Item(3, 1) + Item(3, 1) + Item(3, 0) + Item(3, 1),
       {"1.", "2.", "1.", "2.", "3.", "1."}},
      {"outer numbers",
       Item(2, 0) + Item(2, 0) + Item(2, 1) + Item(2, 1),
       {"I.", "II.", "2.1", "2.2"}},
      {"a skipped outer level has its first number",
       Item(2, 1) + Item(2, 0) + Item(2, 1),
       {"1.1", "II.", "2.1"}},
      {"a level that runs through",
       Item(2, 0) + Item(2, 2) + Item(2, 0) + Item(2, 2),
       {"I.", "(1)", "II.", "(2)"}},
      {"starts and forms",
       Item(4, 0) + Item(4, 1) + Item(4, 1) + Item(4, 0) + Item(4, 2),
       {"0.", "09", "10", "1.", "Note:"}},
      {"ordinals",
       Item(7, 0) + Item(7, 0) + Item(7, 0) + Item(7, 0) + Item(7, 0),
       {"20th", "21st", "22nd", "23rd", "24th"}},
      {"an override with a start of its own begins once",
       Item(1, 0) + Item(5, 0) + Item(5, 0) + Item(1, 0),
       {"1.", "4.", "5.", "6."}},
      {"an override with a format of its own", Item(1, 0) + Item(6, 0), {"1.", "B."}},
      {"items in cells are of one list, and so are those around the table",
       Item(1, 0) + "\\trowd\\cellx3000\\cellx6000\\pard\\intbl\\ls1 x\\par x\\cell x\\cell\\row " +
           Item(1, 0),
       {"1.", "2.", "3.", "4.", "5."}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string source = Letter(kTables + c.body), saved = Canonical(source);
    EXPECT_THAT(MarksOf(source), ElementsAreArray(c.marks));
    EXPECT_THAT(MarksOf(saved), ElementsAreArray(c.marks));
    EXPECT_THAT(TextsOf(saved), ElementsAreArray(c.marks));
    EXPECT_EQ(Canonical(saved), saved);
  }
}

// The paragraph's own indents count, even where it has none.
TEST(Lists, MarksStandAndLookAsTheirLevelsSay) {
  const struct {
    const char* level;
    Bullet::Gap gap = Bullet::Gap::kTab;
    Alignment alignment = Alignment::kLeft;
    std::optional<bool> bold = {}, italic = {};
    int half_points = 0;
    std::optional<int> font = {}, colour = {};
  } cases[] = {
      {"\\levelfollow0\\leveljc0"},
      {"\\levelfollow1\\leveljc1", Bullet::Gap::kSpace, Alignment::kCentre},
      {"\\levelfollow2\\leveljc2\\b\\fs40", Bullet::Gap::kNone, Alignment::kRight, true, {}, 40},
      {"\\b0\\i", Bullet::Gap::kTab, Alignment::kLeft, false, true},
      {"\\f2\\cf2", Bullet::Gap::kTab, Alignment::kLeft, {}, {}, 0, 1, 1},
      {"\\f0\\cf0", Bullet::Gap::kTab, Alignment::kLeft, {}, {}, 0, {}, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.level);
    const std::string tables = std::string("{\\*\\listtable{\\list{\\listlevel\\levelnfc0") +
                               c.level +
                               "{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}\\fi-360\\li720}"
                               "\\listid7}}{\\*\\listoverridetable{\\listoverride\\listid7\\ls1}}";
    const std::string saved = Canonical(Letter(tables + "\\pard\\ls1 x\\par\\pard\\ls1\\li900 y"));
    EXPECT_EQ(Canonical(saved), saved);
    const Document document = ReadRtf(saved);
    for (std::size_t i = 0; i < 2; ++i) {
      const ParagraphFormat& format = std::get<Paragraph>(document.blocks[i]).format;
      EXPECT_EQ(format.left_indent, i == 0 ? 0 : 900);
      EXPECT_EQ(format.first_indent, 0);
      EXPECT_EQ(format.bullet.gap, c.gap);
      EXPECT_EQ(format.bullet.alignment, c.alignment);
      EXPECT_EQ(format.bullet.bold, c.bold);
      EXPECT_EQ(format.bullet.italic, c.italic);
      EXPECT_EQ(format.bullet.half_points, c.half_points);
      EXPECT_EQ(format.bullet.font, c.font);
      EXPECT_EQ(format.bullet.colour, c.colour);
    }
  }
}

TEST(Lists, TextOfLevelsIsInTheLettersCodePage) {
  // Big5, whose second bytes may be letters.
  EXPECT_THAT(MarksOf("{\\rtf1\\ansi\\ansicpg950\\deff0{\\fonttbl{\\f0\\fcharset0 Arial;}}"
                      "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat1"
                      "{\\leveltext\\'05\\'abe\\'00\\'b3\\'b9;}{\\levelnumbers\\'03;}}\\listid7}}"
                      "{\\*\\listoverridetable{\\listoverride\\listid7\\ls1}}\\pard\\ls1 x\\par}"),
              ElementsAreArray(Marks{"前1章"}));
}

TEST(Lists, OfTheClassicFormCountWhileTheyFollowEachOther) {
  const auto item = [](const char* pn, int indent) {
    return std::string("\\pard{\\pntext\\tab}{\\*\\pn\\pnlvlbody\\pnindent0") + pn + "}\\li" +
           std::to_string(indent) + " x\\par ";
  };
  const std::string number = "\\pnstart1\\pndec{\\pntxta.}",
                    letter = "\\pnstart3\\pnlcltr{\\pntxta)}";
  const std::string source =
      Letter(item(number.c_str(), 720) + item(number.c_str(), 360) + item(letter.c_str(), 1440) +
             item(letter.c_str(), 1440) + item(number.c_str(), 720) + item(letter.c_str(), 720) +
             item(number.c_str(), 720) + "\\pard x\\par " + item(number.c_str(), 720));
  const Marks marks{"1.", "2.", "c)", "d)", "3.", "c)", "1.", "1."};
  EXPECT_THAT(MarksOf(source), ElementsAreArray(marks));
  EXPECT_THAT(TextsOf(Canonical(source)), ElementsAreArray(marks));
}

TEST(ListMark, CountsAsTheListsFormatHasIt) {
  using Kind = Bullet::Kind;
  const struct {
    Bullet bullet;
    int number;
    const char* mark;
  } cases[] = {
      {{Kind::kNone, 1, 0, "", ""}, 3, ""},
      {{Kind::kBullet, 1, 0, "", ""}, 3, "•"},
      {{Kind::kDecimal, 1, 0, "", ")"}, 12, "12)"},
      {{Kind::kUpperLetter, 1, 0, "", ""}, 28, "BB"},
      {{Kind::kLowerRoman, 1, 0, "", ""}, 1994, "mcmxciv"},
      {{Kind::kUpperRoman, 1, 0, "", ""}, 4, "IV"},
      {{Kind::kLowerLetter, 1, 0, "", ""}, 0, "0"},
      {{Kind::kUpperRoman, 1, 0, "", ""}, 2000000, "2000000"},
  };
  for (const auto& expected : cases)
    EXPECT_EQ(ListMark(expected.bullet, expected.number), expected.mark);
}

}  // namespace
}  // namespace tenora::richtext
