// Where the letters of a paragraph stand on paper.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "platform/printing/paper.h"

namespace tenora::test {
namespace {

using richtext::Alignment;
using richtext::Bullet;
using richtext::CharFormat;
using richtext::ParagraphFormat;
using richtext::TabStop;
using testing::DoubleNear;
using testing::HasSubstr;
using testing::Not;

// A reader's boxes are rounded to thousandths of a point, glyphs have side bearings.
constexpr double kNear = 12;

constexpr const char* kSentence =
    "The landlord lets and the tenant takes the premises for the term and at the rent set out "
    "below, which both find sufficient. ";

std::string Sentences(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += kSentence;
  return text;
}

CharFormat Courier(int half_points) {
  CharFormat format;
  format.font = 2;
  format.half_points = half_points;
  return format;
}

class Paragraphs : public testing::Test {
 protected:
  Paper PrintLines(std::vector<richtext::Block> blocks) {
    return Print(DocumentOf(std::move(blocks)), folder_);
  }

  ScratchFolder folder_;
};

TEST_F(Paragraphs, StandAtTheirIndentsAndAlignments) {
  ParagraphFormat indented;
  indented.left_indent = 720;
  ParagraphFormat right, centre, narrow_right;
  right.alignment = narrow_right.alignment = Alignment::kRight;
  narrow_right.right_indent = 1000;
  centre.alignment = Alignment::kCentre;
  const Paper paper =
      PrintLines({Line("Plain"), Line("Indented", indented), Line("Rightmost  ", right),
                  Line("Inner", narrow_right), Line("Middle", centre)});
  EXPECT_THAT(paper.Find("Plain").left, DoubleNear(kInch, kNear));
  EXPECT_THAT(paper.Find("Plain").top, DoubleNear(kInch, kNear));
  EXPECT_THAT(paper.Find("Indented").left, DoubleNear(kInch + 720, kNear));
  EXPECT_THAT(paper.Find("Rightmost").right, DoubleNear(kPageWidth - kInch, kNear));
  EXPECT_THAT(paper.Find("Inner").right, DoubleNear(kPageWidth - kInch - 1000, kNear));
  const Word middle = paper.Find("Middle");
  EXPECT_THAT((middle.left + middle.right) / 2, DoubleNear(kPageWidth / 2.0, kNear));
}

TEST_F(Paragraphs, HangTheirFirstLineAndFillJustifiedOnes) {
  ParagraphFormat format;
  format.left_indent = 1000;
  format.first_indent = -400;
  format.alignment = Alignment::kJustified;
  const Paper paper = PrintLines({Line("First " + Sentences(3) + "last", format)});
  const Word first = paper.Find("First"), last = paper.Find("last");
  EXPECT_THAT(first.left, DoubleNear(kInch + 600, kNear));
  int filled = 0, lines = 1;
  double line_top = first.top, line_right = 0;
  for (const Word& word : paper.Words()) {
    if (word.top > line_top + 100) {
      EXPECT_THAT(word.left, DoubleNear(kInch + 1000, kNear));
      EXPECT_THAT(line_right, DoubleNear(kPageWidth - kInch, kNear));
      line_top = word.top;
      ++lines;
      ++filled;
    }
    line_right = word.right;
  }
  EXPECT_GE(filled, 3);
  EXPECT_LT(last.right, kPageWidth - kInch - 1000) << "the last line must not be stretched";
}

TEST_F(Paragraphs, BreakLinesWhereEqualWidthsSay) {
  // 10-point Courier is 120 twips a letter: 24 letters to two inches.
  const std::string text = "123456789 123456789 1234 123456789 123456789 12345 end";
  const Paper paper = Print(DocumentOf({Line(text, {}, Courier(20))}), folder_, 2880);
  EXPECT_THAT(paper.PageText(1), HasSubstr("123456789 123456789 1234\n123456789 123456789\n"
                                           "12345 end\n"));
}

TEST_F(Paragraphs, DivideAWordThatIsWiderThanTheLine) {
  const Paper paper =
      Print(DocumentOf({Line(std::string(60, 'x'), {}, Courier(20))}), folder_, 2890);
  EXPECT_THAT(paper.PageText(1), HasSubstr(std::string(24, 'x') + "\n" + std::string(24, 'x') +
                                           "\n" + std::string(12, 'x') + "\n"));
}

TEST_F(Paragraphs, MoveTextToTheirTabStops) {
  ParagraphFormat format;
  format.tabs = {{1500, TabStop::Kind::kLeft, ""},
                 {3500, TabStop::Kind::kCentre, ""},
                 {6000, TabStop::Kind::kRight, ""},
                 {7500, TabStop::Kind::kDecimal, ""}};
  const Paper paper = PrintLines({Line("a\tLeft\tCentred\tRight\t1,234.50", format),
                                  Line("b\tLeftmost\tC\tR\t7.125", format), Line("default\ttab"),
                                  Line("wide default\tstop")});
  EXPECT_THAT(paper.Find("Left").left, DoubleNear(kInch + 1500, kNear));
  const Word centred = paper.Find("Centred");
  EXPECT_THAT((centred.left + centred.right) / 2, DoubleNear(kInch + 3500, kNear));
  // The decimal points stand below each other: so do the ends of two and three decimals.
  const double digit = 120;  // of 12-point Times
  EXPECT_THAT(paper.Find("1,234.50").right, DoubleNear(kInch + 7500 + 60 + 2 * digit, kNear));
  EXPECT_THAT(paper.Find("7.125").right, DoubleNear(kInch + 7500 + 60 + 3 * digit, kNear));
  EXPECT_THAT(paper.Find("tab").left, DoubleNear(kInch + 720, kNear));
  EXPECT_THAT(paper.Find("stop").left, DoubleNear(kInch + 1440, kNear));
}

TEST_F(Paragraphs, KeepRightTabsOfAWiderPageOnTheLine) {
  ParagraphFormat format;
  format.tabs = {{kTextWidth + 2000, TabStop::Kind::kRight, ""}};
  const Paper paper = PrintLines({Line("Receipt\tNo.1636", format)});
  EXPECT_THAT(paper.Find("No.1636").right, DoubleNear(kInch + kTextWidth, kNear));
  EXPECT_THAT(paper.Find("No.1636").top, DoubleNear(paper.Find("Receipt").top, kNear));
}

TEST_F(Paragraphs, EndRightTabsAtTheStopAndLeadersBeforeIt) {
  ParagraphFormat format;
  format.tabs = {{5000, TabStop::Kind::kRight, "dot"}};
  const Paper paper = PrintLines({Line("Total\t42.00", format), Line("\tAlone", format)});
  EXPECT_THAT(paper.Text(), testing::ContainsRegex("Total ?\\.\\.\\.\\.+ ?42\\.00"));
  int aligned = 0;
  for (const Word& word : paper.Words()) {
    if (!word.text.ends_with("42.00") && !word.text.ends_with("Alone")) continue;
    EXPECT_THAT(word.right, DoubleNear(kInch + 5000, kNear));
    ++aligned;
  }
  EXPECT_EQ(aligned, 2);
}

TEST_F(Paragraphs, SpaceTheirLinesAsSet) {
  ParagraphFormat exact, at_least, twice, spaced;
  exact.line_spacing = -600;
  at_least.line_spacing = 800;
  twice.line_spacing = 480;
  twice.line_spacing_multiple = true;
  spaced.space_before = 300;
  spaced.space_after = 500;
  const struct {
    ParagraphFormat format;
    double step;
  } cases[] = {{exact, 600}, {at_least, 800}, {twice, 552}, {spaced, 276 + 800}};
  for (const auto& expected : cases) {
    const Paper paper = PrintLines({Line("One", expected.format), Line("Two", expected.format)});
    EXPECT_THAT(paper.Find("Two").top - paper.Find("One").top, DoubleNear(expected.step, kNear));
  }
}

TEST_F(Paragraphs, NumberListsAndHangTheirText) {
  ParagraphFormat number;
  number.left_indent = 720;
  number.first_indent = -360;
  number.bullet = {Bullet::Kind::kDecimal, 1, 0, "", "."};
  ParagraphFormat letter = number;
  letter.left_indent = 1440;
  letter.bullet = {Bullet::Kind::kLowerLetter, 1, 0, "(", ")"};
  const Paper paper = PrintLines({Line("one", number), Line("two", number), Line("two-a", letter),
                                  Line("two-b", letter), Line("three", number), Line("gap"),
                                  Line("again", number)});
  EXPECT_THAT(paper.PageText(1), HasSubstr("1. one\n2. two\n(a) two-a\n(b) two-b\n3. three\n"));
  EXPECT_THAT(paper.PageText(1), HasSubstr("1. again"));
  EXPECT_THAT(paper.Find("1.").left, DoubleNear(kInch + 360, kNear + 8));
  EXPECT_THAT(paper.Find("one").left, DoubleNear(kInch + 720, kNear));
}

TEST_F(Paragraphs, OfOneStyleStandWithoutSpaceBetweenThem) {
  ParagraphFormat listed;
  listed.space_before = 200;
  listed.space_after = 400;
  listed.contextual_style = 34;
  ParagraphFormat other = listed;
  other.contextual_style = 2;
  const Paper paper = PrintLines({Line("normal"), Line("one", listed), Line("two", listed),
                                  Line("other", other), Line("after")});
  const double line = 276;
  double top = paper.Find("normal").top;
  const std::pair<const char*, double> steps[] = {
      {"one", line + 200}, {"two", line}, {"other", line + 600}, {"after", line + 400}};
  for (const auto& [word, step] : steps) {
    EXPECT_THAT(paper.Find(word).top - top, DoubleNear(step, kNear)) << word;
    top = paper.Find(word).top;
  }
}

TEST_F(Paragraphs, HaveTheLargerSpaceBetweenThemInLettersWithTheSpacingOfHtml) {
  ParagraphFormat automatic, spaced, item;
  automatic.automatic_before = automatic.automatic_after = true;
  automatic.space_before = automatic.space_after = 280;
  spaced.space_before = 500;
  spaced.space_after = 100;
  item = automatic;
  item.bullet.kind = Bullet::Kind::kBullet;
  item.left_indent = 360;
  item.first_indent = -360;
  richtext::Document document = DocumentOf({Line("first", automatic), Line("second", automatic),
                                            Line("third", spaced), Line("fourth", automatic),
                                            Line("fifth", item), Line("sixth", item), Line("end")});
  const double line = 276;
  const struct {
    const char* word;
    double added, larger;  // below the word before
  } steps[] = {{"second", 560, 280}, {"third", 780, 500}, {"fourth", 380, 280},
               {"fifth", 560, 280},  {"sixth", 0, 0},     {"end", 280, 280}};
  for (const bool html : {false, true}) {
    if (html) document.page.other_words = "\\htmautsp";
    const Paper paper = Print(document, folder_);
    double top = paper.Find("first").top;
    EXPECT_THAT(top, DoubleNear(kInch + (html ? 0 : 280), kNear));
    for (const auto& step : steps) {
      const double below = paper.Find(step.word).top;
      EXPECT_THAT(below - top, DoubleNear(line + (html ? step.larger : step.added), kNear))
          << step.word;
      top = below;
    }
  }
}

TEST_F(Paragraphs, TakeNoLineWhereTheirMarksAreHiddenToo) {
  CharFormat hidden;
  hidden.hidden = true;
  richtext::Paragraph only_text = Line("secret", {}, hidden);
  only_text.mark.hidden = false;
  const Paper paper = PrintLines({Line("one"), Line("secret", {}, hidden), Line("", {}, hidden),
                                  Line("two"), only_text, Line("three")});
  EXPECT_THAT(paper.Find("two").top - paper.Find("one").top, DoubleNear(276, kNear));
  EXPECT_THAT(paper.Find("three").top - paper.Find("two").top, DoubleNear(552, kNear));
  EXPECT_THAT(paper.Text(), Not(HasSubstr("secret")));
}

TEST_F(Paragraphs, PlaceListMarksAsTheListSays) {
  ParagraphFormat format;
  format.left_indent = 1440;
  format.first_indent = -360;
  format.bullet.kind = Bullet::Kind::kDecimal;
  const auto bullet = [&](Alignment alignment, Bullet::Gap gap) {
    format.bullet.alignment = alignment;
    format.bullet.gap = gap;
    ++format.bullet.start;
    return format;
  };
  // In Courier, whose letters are 120 twips wide.
  const Paper paper =
      PrintLines({Line("left", bullet(Alignment::kLeft, Bullet::Gap::kTab), Courier(20)),
                  Line("centred", bullet(Alignment::kCentre, Bullet::Gap::kTab), Courier(20)),
                  Line("right", bullet(Alignment::kRight, Bullet::Gap::kTab), Courier(20)),
                  Line("spaced", bullet(Alignment::kLeft, Bullet::Gap::kSpace), Courier(20)),
                  Line("5", bullet(Alignment::kRight, Bullet::Gap::kNone), Courier(20))});
  const double start = kInch + 1080;
  EXPECT_THAT(paper.Find("2").left, DoubleNear(start, kNear));
  EXPECT_THAT(paper.Find("3").left, DoubleNear(start - 60, kNear));
  EXPECT_THAT(paper.Find("4").left, DoubleNear(start - 120, kNear));
  for (const char* const word : {"left", "centred", "right"})
    EXPECT_THAT(paper.Find(word).left, DoubleNear(start + 360, kNear)) << word;
  EXPECT_THAT(paper.Find("spaced").left, DoubleNear(start + 240, kNear));
  EXPECT_THAT(paper.Find("65").left, DoubleNear(start - 120, kNear));
}

TEST_F(Paragraphs, ShowListMarksInAFormatOfTheirOwn) {
  ParagraphFormat format;
  format.bullet.kind = Bullet::Kind::kDecimal;
  format.bullet.half_points = 80;
  const Paper paper = PrintLines({Line("text", format)});
  EXPECT_THAT(paper.Find("1").bottom - paper.Find("1").top, DoubleNear(40 * 20 * 1.107, 40));
  EXPECT_THAT(paper.Find("text").bottom - paper.Find("text").top, DoubleNear(12 * 20 * 1.107, 40));
}

TEST_F(Paragraphs, ShowTheTextOfEveryCharacterFormat) {
  CharFormat hidden, capitals, small, arial_bold, raised;
  hidden.hidden = true;
  capitals.all_caps = true;
  small.small_caps = true;
  arial_bold.font = 1;
  arial_bold.bold = true;
  raised.raise_half_points = 12;
  richtext::Paragraph paragraph;
  paragraph.runs = {Text("Māhuta €12 office "),  Text("secret ", hidden),
                    Text("loud ", capitals),     Text("Small ", small),
                    Text("strong ", arial_bold), Text("up", raised)};
  const Paper paper = PrintLines({paragraph});
  EXPECT_THAT(paper.PageText(1), HasSubstr("Māhuta €12 office LOUD SMALL strong"));
  EXPECT_THAT(paper.Text(), Not(HasSubstr("secret")));
  EXPECT_LT(paper.Find("up").top, paper.Find("strong").top);
  EXPECT_GE(paper.Find("up").top, kInch - kNear) << "raised letters make the line higher";
  const std::string fonts = Poppler({"pdffonts", paper.file.string()});
  EXPECT_THAT(fonts, HasSubstr("LiberationSerif"));
  EXPECT_THAT(fonts, HasSubstr("LiberationSans-Bold"));
  EXPECT_THAT(fonts, Not(testing::ContainsRegex("Identity-H +no"))) << "all are embedded";
}

// The first row of the page, in points, that is not white.
int FirstInk(const Paper& paper, int page = 1) {
  const std::string number = std::to_string(page);
  const std::string image =
      Poppler({"pdftoppm", "-r", "72", "-gray", "-f", number, "-l", number, paper.file.string()});
  // A line each: the kind, width and height, the greatest value; then a byte for each point.
  const int width = std::atoi(image.substr(3, 8).c_str());
  const std::size_t start = image.find("\n255\n") + 5;
  const auto ink = std::find_if(image.begin() + long(start), image.end(),
                                [](char c) { return static_cast<unsigned char>(c) < 128; });
  return static_cast<int>((ink - image.begin() - long(start)) / std::max(width, 1));
}

TEST_F(Paragraphs, AreStruckThroughTheMiddleOfRaisedLetters) {
  CharFormat struck;
  struck.strike = true;
  struck.half_points = 72;
  const auto row = [&](const CharFormat& format) {
    richtext::Paragraph paragraph;
    // Blanks show the line alone; the other run keeps the baseline where it is.
    CharFormat tall;
    tall.half_points = 200;
    paragraph.runs = {Text("\u00A0\u00A0\u00A0\u00A0", format), Text("\u00A0", tall)};
    return FirstInk(PrintLines({paragraph}));
  };
  const int normal = row(struck);
  CharFormat super = struck, sub = struck, up = struck;
  super.script = richtext::Script::kSuper;
  sub.script = richtext::Script::kSub;
  up.raise_half_points = 40;
  EXPECT_NEAR(row(up), normal - 20, 1);
  EXPECT_LT(row(super), normal - 5);
  EXPECT_GT(row(sub), normal + 3);
}

TEST_F(Paragraphs, ReadSymbolFontsByTheirGlyphs) {
  richtext::Document document = EmptyDocument();
  document.fonts.push_back({3, "Symbol", "tech", 2, 2});
  document.fonts.push_back({4, "Wingdings", "nil", 2, 2});
  CharFormat symbol, wingdings;
  symbol.font = 3;
  wingdings.font = 4;
  richtext::Paragraph paragraph;
  paragraph.runs = {Text("ab\uF0B3", symbol), Text(" and "), Text("\uF0FC", wingdings)};
  document.blocks = {paragraph};
  EXPECT_THAT(Print(document, folder_).PageText(1), HasSubstr("αβ≥ and ✓"));
}

TEST_F(Paragraphs, RunFromTheRightWhereTheScriptDoes) {
  ParagraphFormat format, left, filled;
  format.right_to_left = left.right_to_left = filled.right_to_left = true;
  format.alignment = Alignment::kRight;
  filled.alignment = Alignment::kJustified;
  const Paper paper = PrintLines({Line("שלום", format), Line("latin", format), Line("left", left),
                                  Line("outermost " + Sentences(3) + "last", filled)});
  EXPECT_THAT(paper.Find("latin").right, DoubleNear(kPageWidth - kInch, kNear));
  EXPECT_THAT(paper.Find("left").left, DoubleNear(kInch, kNear));
  EXPECT_GT(paper.Find("last").top, paper.Find("outermost").top);
  EXPECT_LT(paper.Find("last").right, kPageWidth - kInch + kNear);
  // The reader takes right-to-left words apart; the first letter stands outermost.
  EXPECT_THAT(paper.Find("ש").right, DoubleNear(kPageWidth - kInch, kNear));
  EXPECT_THAT(PrintLines({Line("שלום (see) x", format)}).Text(), HasSubstr("(see)"));
}

TEST_F(Paragraphs, MakeRoomForTheirBorders) {
  using Kind = richtext::Border::Kind;
  const auto framed = [](int width, int space, Kind kind = Kind::kSingle) {
    ParagraphFormat format;
    format.top = format.bottom = format.left = format.right = {true, width, 0, space, kind};
    return format;
  };
  ParagraphFormat parted = framed(20, 40), hanging = framed(20, 0), shaded = framed(20, 0);
  parted.between = {true, 60, 0, 100};
  hanging.first_indent = -300;
  shaded.shading = 1;
  const struct {
    const char* name;
    ParagraphFormat one, two;
    double above, between, below;  // twips more than without borders
  } cases[] = {
      {"space", framed(20, 300), framed(20, 300), 320, 0, 320},
      {"double", framed(20, 0, Kind::kDouble), framed(20, 0, Kind::kDouble), 60, 0, 60},
      {"thick", framed(20, 0, Kind::kThick), framed(20, 0, Kind::kThick), 40, 0, 40},
      {"triple", framed(60, 0, Kind::kTriple), framed(60, 0, Kind::kTriple), 300, 0, 300},
      {"thin and thick", framed(60, 0, Kind::kThinThickThinMedium),
       framed(60, 0, Kind::kThinThickThinMedium), 180, 0, 180},
      {"a line between", parted, parted, 60, 200, 60},
      {"other borders", framed(100, 0), framed(60, 0), 100, 160, 60},
      {"another left edge", framed(20, 0), hanging, 20, 40, 20},
      {"shading", framed(20, 0), shaded, 20, 0, 20},
  };
  const auto tops = [](const Paper& paper) {
    return std::vector{paper.Find("one").top, paper.Find("two").top, paper.Find("after").top};
  };
  const std::vector<double> plain = tops(PrintLines({Line("one"), Line("two"), Line("after")}));
  for (const auto& c : cases) {
    const Paper paper = PrintLines({Line("one", c.one), Line("two", c.two), Line("after")});
    const std::vector<double> found = tops(paper);
    EXPECT_THAT(found[0] - plain[0], DoubleNear(c.above, kNear)) << c.name;
    EXPECT_THAT(found[1] - plain[1] - c.above, DoubleNear(c.between, kNear)) << c.name;
    EXPECT_THAT(found[2] - plain[2] - c.above - c.between, DoubleNear(c.below, kNear)) << c.name;
    EXPECT_THAT(paper.Find("one").left, DoubleNear(kInch, kNear)) << "outside of the text";
  }
}

TEST_F(Paragraphs, CloseTheirFrameWhereAPageEnds) {
  ParagraphFormat framed;
  framed.top = framed.bottom = {true, 20, 0, 100};
  const std::vector<richtext::Block> lines(80, Line("text", framed));
  const Paper paper = Print(DocumentOf(lines), folder_);
  ASSERT_GT(paper.Pages(), 1);
  EXPECT_NEAR(FirstInk(paper, 2), (kInch - 120) / 20, 1);
}

TEST_F(Paragraphs, SpreadTheirWordsWhereTheyAreDistributed) {
  ParagraphFormat format;
  format.alignment = richtext::Alignment::kDistributed;
  const Paper paper = PrintLines({Line("one two three", format), Line("alone", format)});
  EXPECT_THAT(paper.Find("one").left, DoubleNear(kInch, kNear));
  EXPECT_THAT(paper.Find("three").right, DoubleNear(kInch + kTextWidth, kNear));
  EXPECT_THAT(paper.Find("two").left - paper.Find("one").right,
              DoubleNear(paper.Find("three").left - paper.Find("two").right, kNear));
  EXPECT_THAT(paper.Find("alone").left, DoubleNear(kInch, kNear));
}

TEST_F(Paragraphs, KernPairsFromTheSizeThatTheLetterSays) {
  const auto width = [&](int kerned_from) {
    CharFormat format;
    format.half_points = 40;
    format.kerned_from = kerned_from;
    const Word word = PrintLines({Line("AVAVAV", {}, format)}).Find("AVAVAV");
    return word.right - word.left;
  };
  EXPECT_THAT(width(41), DoubleNear(width(0), 1));
  EXPECT_LT(width(40), width(0) - 200);
}

TEST_F(Paragraphs, AreWholeWhenTheyAreSetInParts) {
  // Longer than what is set in one part, with blanks, without, and in as many formats as letters.
  std::string words, word(40000, 'x');
  for (int i = 0; i < 8000; ++i) words += "w" + std::to_string(i) + " ";
  richtext::Paragraph colourful;
  for (int i = 0; i < 3000; ++i) {
    CharFormat format;
    format.half_points = 20 + i % 2;
    colourful.runs.push_back(Text("c", format));
  }
  std::string read = PrintLines({Line(words), Line(word), colourful}).Text();
  const auto count = [&](char c) { return std::count(read.begin(), read.end(), c); };
  EXPECT_EQ(count('w'), 8000);
  EXPECT_EQ(count('x'), 40000);
  EXPECT_EQ(count('c'), 3000);
  for (const int at : {0, 999, 4000, 7999}) {
    EXPECT_THAT(read, HasSubstr("w" + std::to_string(at)));
  }
}

TEST_F(Paragraphs, KeepInsideThePageWhenTheirIndentsCross) {
  ParagraphFormat format;
  format.left_indent = 8000;
  format.right_indent = 8000;
  const Paper paper = PrintLines({Line("abc def", format)});
  EXPECT_EQ(paper.ends, std::vector<int>{8});
}

}  // namespace
}  // namespace tenora::test
