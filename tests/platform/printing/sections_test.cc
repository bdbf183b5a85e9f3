// Sections of a document on paper: how each begins, its page and its columns.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/printing/paper.h"
#include "platform/richtext/rtf_reader.h"

namespace tenora::test {
namespace {

using testing::ElementsAreArray;

richtext::Document Letter(const std::string& body) {
  return richtext::ReadRtf("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Times New Roman;}}\\pard\\plain " +
                           body + "\\par}");
}

// The words of each page, from top to bottom.
std::vector<std::string> PagesOf(const Paper& paper) {
  std::vector<std::string> pages(paper.ends.size());
  for (const Word& word : paper.Words()) {
    std::string& page = pages.at(static_cast<std::size_t>(word.page - 1));
    page += (page.empty() ? "" : " ") + word.text;
  }
  return pages;
}

TEST(Sections, BeginAsTheirOwnWordsSay) {
  const std::string number = "{\\header\\chpgn\\par}";
  const struct {
    std::string body;
    std::vector<std::string> pages;
  } cases[] = {
      {"a\\sect b", {"a", "b"}},
      {"\\sbknone a\\sect\\sectd b", {"a", "b"}},
      {"a\\sect\\sectd\\sbknone b\\sect\\sectd c", {"a b", "c"}},
      {"a\\sect\\sectd\\sbknone\\lndscpsxn b", {"a", "b"}},
      {number + "a\\sect\\sectd\\sbkodd b\\sect\\sectd\\sbkeven c", {"1 a", "3 b", "4 c"}},
      {number + "a\\sect\\sectd\\pgnrestart\\pgnstarts8\\pgnucrm b\\page c\\sect\\sectd d",
       {"1 a", "VIII b", "IX c", "10 d"}},
      {"{\\header one\\par}{\\footer foot\\par}a\\sect{\\header two\\par}b\\sect c",
       {"one a foot", "two b foot", "two c foot"}},
      {"{\\header all\\par}a\\sect\\titlepg{\\headerf first\\par}b\\page c",
       {"all a", "first b", "all c"}},
      {"{\\header\\sectnum  of {\\field{\\*\\fldinst SECTIONPAGES}{\\fldrslt 9}}\\par}a\\page b"
       "\\sect c",
       {"1 of 2 a", "1 of 2 b", "2 of 1 c"}},
      {"a\\par\\sect\\sect b", {"a", "", "b"}},
      {"a\\page\\sect b\\par\\page\\sect\\sectd c\\page\\sect\\sectd\\sbknone d",
       {"a", "b", "c", "d"}},
  };
  const ScratchFolder folder;
  for (const auto& c : cases)
    EXPECT_THAT(PagesOf(Print(Letter(c.body), folder)), ElementsAreArray(c.pages)) << c.body;
}

// Lines of exactly 500 twips, on pages of ten.
TEST(Sections, FillTheirColumnsOneAfterTheOther) {
  std::string body = "\\pard\\sl-500 above\\sect\\sectd\\sbknone\\cols2\\colsx526 ";
  for (int line = 1; line <= 12; ++line) body += "line" + std::to_string(line) + "\\par ";
  const std::string below = "\\sect\\sectd\\sbknone below";
  const ScratchFolder folder;
  const auto at = [](const Paper& paper, const char* word, int page, int column, int line) {
    const Word found = paper.Find(word);
    const Word above = paper.Find("above");
    EXPECT_EQ(found.page, page) << word;
    EXPECT_NEAR(found.left - above.left, column * (kTextWidth + 526) / 2, 2) << word;
    EXPECT_NEAR(found.bottom - above.bottom, line * 500, 2) << word;
  };
  const Paper open = Print(Letter(body), folder, kTextWidth, 5000);
  at(open, "line9", 1, 0, 9);
  at(open, "line10", 1, 1, 1);
  // Equally long before a section on the same page.
  const Paper closed = Print(Letter(body + below), folder, kTextWidth, 5000);
  at(closed, "line6", 1, 0, 6);
  at(closed, "line7", 1, 1, 1);
  at(closed, "below", 1, 0, 7);
  // A page further where both columns are full.
  const Paper full =
      Print(Letter("\\cols2\\colsx526 " + body + body + below), folder, kTextWidth, 5000);
  EXPECT_EQ(full.Find("below").page, 2);
}

TEST(Sections, BreakTheirColumnsWhereTheAuthorDoes) {
  const struct {
    std::string body;
    std::vector<std::string> words;  // page, column and line of each
  } cases[] = {
      {"\\cols2 a\\column b\\par c\\column d", {"a 1 0 0", "b 1 1 0", "c 1 1 1", "d 2 0 0"}},
      {"\\cols2\\column a", {"a 1 1 0"}},
      {"a\\column b", {"a 1 0 0", "b 2 0 0"}},
      // Equally long before a section on the same page, unless somebody says otherwise.
      {"\\cols2 a\\par b\\sect\\sectd\\sbknone c", {"a 1 0 0", "b 1 1 0", "c 1 0 1"}},
      {"\\cols2 a\\par b\\column d\\sect\\sectd\\sbknone c",
       {"a 1 0 0", "b 1 0 1", "d 1 1 0", "c 1 0 2"}},
      {"\\nocolbal\\cols2 a\\par b\\sect\\sectd\\sbknone c", {"a 1 0 0", "b 1 0 1", "c 1 0 2"}},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    const Paper paper = Print(Letter("\\sl-500 " + c.body), folder);
    std::vector<std::string> words;
    for (const Word& word : paper.Words()) {
      words.push_back(word.text + " " + std::to_string(word.page) + " " +
                      std::to_string(word.left > kPageWidth / 2.0) + " " +
                      std::to_string(static_cast<int>((word.bottom - kInch) / 500)));
    }
    EXPECT_THAT(words, testing::UnorderedElementsAreArray(c.words)) << c.body;
  }
}

// Whether anything dark is between two columns of the page, beside their first line.
bool HasLineBetween(const Paper& paper, int page) {
  const std::string number = std::to_string(page);
  const std::string image =
      Poppler({"pdftoppm", "-r", "72", "-gray", "-f", number, "-l", number, paper.file.string()});
  constexpr std::size_t kWidth = 595, kRow = 78, kLeft = 290, kRight = 305;
  const std::size_t pixels = image.find("255\n") + 4;
  const std::string_view row = std::string_view(image).substr(pixels + kRow * kWidth, kWidth);
  return std::ranges::any_of(row.substr(kLeft, kRight - kLeft),
                             [](char grey) { return static_cast<unsigned char>(grey) < 200; });
}

TEST(Sections, HaveALineBetweenTheirColumnsOnEveryPage) {
  const ScratchFolder folder;
  for (const std::string word : {"\\linebetcol", ""}) {
    const Paper paper =
        Print(Letter("\\cols2" + word + " a\\column b\\column c\\column d"), folder);
    for (const int page : {1, 2}) EXPECT_EQ(HasLineBetween(paper, page), !word.empty()) << page;
  }
}

// Lines of exactly 500 twips, on pages of ten.
TEST(Sections, HaveTheirNotesAtTheFootOfThePageAndAtTheEnd) {
  const auto lines = [](const std::string& name, int count) {
    std::string body;
    for (int line = 1; line <= count; ++line) body += name + std::to_string(line) + "\\par ";
    return body;
  };
  const auto note = [](const std::string& text, const std::string& kind = "") {
    return "{\\super\\chftn}{\\footnote" + kind + "\\pard\\plain\\sl-500{\\super\\chftn} " + text +
           "}";
  };
  const struct {
    std::string body;
    std::vector<std::string> pages;
  } cases[] = {
      // Its room is taken from the text of its page; marks of the author's stay as they are.
      {"a" + note("first") + " b*{\\footnote\\pard * own} c" + note("second") + "\\par" +
           lines(" x", 7) + "end",
       {"a 1 b* c 2 x1 x2 x3 x4 x5 x6 1 first * own 2 second", "x7 end"}},
      // One with neither its mark nor the author's is numbered, or its other end is.
      {"a{\\*\\footnote first} b" + note("second") +
           " c\\super\\u8224?{\\footnote own} d"
           "{\\super\\chftn}{\\footnote third}\\par\\plain end",
       {"a 1 b 2 c † d3 end 1first 2 second own 3third"}},
      // Where it has no room the line goes with it to the next page.
      {lines("x", 9) + "m" + note("foot"), {"x1 x2 x3 x4 x5 x6 x7 x8 x9", "m 1 1 foot"}},
      // But not where it is long.
      {lines("x", 7) + "m" + note(lines("n", 8)),
       {"x1 x2 x3 x4 x5 x6 x7 m 1 1 n1", "n2 n3 n4 n5 n6 n7 n8"}},
      // One that is too long goes on on the next pages, beside their text and beyond it.
      {"m" + note(lines("n", 18)) + "\\par after\\par " + lines("x", 5),
       {"m 1 1 n1 n2 n3 n4 n5 n6 n7 n8", "after x1 x2 x3 x4 n9 n10 n11 n12",
        "x5 n13 n14 n15 n16 n17 n18"}},
      {"\\ftnrestart a" + note("x") + note("y") + "\\sect\\sectd b" + note("z"),
       {"a 12 1 x 2 y", "b 1 1 z"}},
      {"\\aftnnrlc\\ftnstart5 a" + note("last", "\\ftnalt") + " b" + note("foot") + "\\par " +
           lines("x", 6),
       {"a i b 5 x1 x2 x3 x4 x5 x6 i last 5 foot"}},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    const Paper paper = Print(Letter("\\sl-500 " + c.body), folder, kTextWidth, 5000);
    EXPECT_THAT(PagesOf(paper), ElementsAreArray(c.pages)) << c.body;
  }
}

TEST(Sections, NumberTheirPagesInTheTextToo) {
  const auto field = [](const std::string& instruction, const std::string& result) {
    return "{\\field{\\*\\fldinst " + instruction + "}{\\fldrslt " + result + "}}";
  };
  const std::string page = field("PAGE", "7"), pages = field("NUMPAGES", "{\\b 8}{\\i 9}");
  // Nine letters fill a line in which the right number leaves room for one more.
  const std::string wide =
      "\\ri" + std::to_string(kTextWidth - 1300) + " MMM" + field("PAGE", "MMMM") + " W\\par ";
  const struct {
    std::string body;
    std::vector<std::string> pages;
  } cases[] = {
      {page + " of " + pages + "\\page p{\\chpgn} of " + pages + "\\page " + page,
       {"1 of 3", "p2 of 3", "3"}},
      {"\\pgnstart4\\pgnucrm{\\header h{\\chpgn}\\par}" + page + "\\page " +
           field("PAGE \\\\* alphabetic", "7"),
       {"hIV IV", "hV e"}},
      {"s{\\sectnum} " + field("SECTIONPAGES", "") +
           "\\page b\\sect\\sectd\\pgnrestart\\pgnlcrm s" + field("SECTION", "7") + " " +
           field("SECTIONPAGES", "7") + " " + page,
       {"s1 2", "b", "s2 1 i"}},
      // A row that goes on on the next page, of which each cell is divided elsewhere.
      {"x\\page y\\par\\trowd\\cellx3000\\cellx6000\\pard\\intbl\\sl-3000 a\\par b\\par c" + page +
           "\\cell d" + page + "\\cell\\row\\pard ",
       {"x", "y a b d2", "c3"}},
      {"x\\page y\\par\\pard\\posxr\\pvpara f" + page + "\\par\\pard\\par", {"x", "y f2"}},
      {"x\\page{\\shp{\\*\\shpinst\\shpright3000\\shpbottom900{\\sp{\\sn shapeType}{\\sv 202}}"
       "{\\shptxt b{\\chpgn}\\par}}}\\par",
       {"x", "b2"}},
      {"x\\page m{\\super\\chftn}{\\footnote\\pard\\plain {\\super\\chftn} n" + page + "}",
       {"x", "m 1 1 n2"}},
      {"\\v " + page + "\\v0 a\\page b", {"a", "b"}},
      // Where the stored results are shorter or longer, the right ones move the text.
      {"\\sl-4000 " + wide + "\\pard\\sl-4000 " + page + "\\page " + page, {"MMM1 W 1", "2"}},
  };
  const ScratchFolder folder;
  for (const auto& c : cases)
    EXPECT_THAT(PagesOf(Print(Letter(c.body), folder, kTextWidth, 8100)), ElementsAreArray(c.pages))
        << c.body;
}

// Lines of exactly 500 twips, on pages of ten and a half.
TEST(Sections, StandUpAndDownThePageAsTheySay) {
  std::string long_text;
  for (int line = 1; line <= 10; ++line)
    long_text += "l" + std::to_string(line) + (line % 2 == 0 ? "\\par " : "\\line ");
  const std::string shape =
      "{\\shp{\\*\\shpinst\\shptop1440\\shpright3000\\shpbottom2000\\shpbypage\\shpwr1{\\sp{\\sn "
      "shapeType}{\\sv 1}}}}";
  const struct {
    std::string body;
    std::vector<std::string> words;  // twips below the top of the text area
  } cases[] = {
      {"a\\par b", {"a 0", "b 500"}},
      {"\\vertalc a\\par b", {"a 2125", "b 2625"}},
      {"\\vertalb a\\par b", {"a 4250", "b 4750"}},
      {"\\vertalb\\vertalt a", {"a 0"}},
      {"a\\sect\\sectd\\vertal b\\sect\\sectd c", {"a 0", "b 4750", "c 0"}},
      // Above the notes (their line takes 200), and below what keeps its place on the page.
      {"\\vertalb a{\\super\\chftn}{\\footnote\\pard\\plain\\sl-500{\\super\\chftn} n}",
       {"a 4050", "n 4750"}},
      {"\\vertalb " + shape + "\\pard\\sl-500 a", {"a 560"}},
      // Only where the text goes on of itself.
      {"\\vertalj a\\par b\\page c", {"a 0", "b 500", "c 0"}},
      {"\\vertalj " + long_text + "m",
       {"l1 0", "l2 500", "l3 1062", "l4 1562", "l5 2125", "l6 2625", "l7 3187", "l8 3687",
        "l9 4250", "l10 4750", "m 0"}},
  };
  const ScratchFolder folder;
  const double top = Print(Letter("\\sl-500 top"), folder, kTextWidth, 5250).Find("top").top;
  for (const auto& c : cases) {
    const Paper paper = Print(Letter("\\sl-500 " + c.body), folder, kTextWidth, 5250);
    for (const std::string& expected : c.words) {
      const std::size_t blank = expected.find(' ');
      EXPECT_NEAR(paper.Find(expected.substr(0, blank)).top - top,
                  std::stod(expected.substr(blank)), 3)
          << c.body << " " << expected;
    }
  }
}

// Points from the first page's left edge to the first ink in its middle row, and from its top in
// its middle column; -1 where there is none.
std::pair<int, int> InkAround(const Paper& paper) {
  const std::string image = Poppler({"pdftoppm", "-r", "72", "-gray", "-l", "1", paper.file});
  int width = 0, height = 0;
  std::sscanf(image.c_str(), "P5 %d %d", &width, &height);
  const std::size_t start = image.find("\n255\n") + 5;
  const auto dark = [&](int x, int y) {
    return static_cast<unsigned char>(image.at(start + std::size_t(y * width + x))) < 128;
  };
  std::pair<int, int> found{-1, -1};
  for (int x = width - 1; x >= 0; --x) found.first = dark(x, height / 2) ? x : found.first;
  for (int y = height - 1; y >= 0; --y) found.second = dark(width / 2, y) ? y : found.second;
  return found;
}

TEST(Sections, HaveTheirBordersAroundThePage) {
  const std::string border = "\\brdrs\\brdrw100\\brsp200", head = "{\\header\\pard h\\par}";
  const std::string all = "\\pgbrdrt" + border + "\\pgbrdrl" + border + "\\pgbrdrb" + border;
  const struct {
    std::string body;
    int left, top;
  } cases[] = {
      {all + " a", (kInch - 300) / 20, (kInch - 300) / 20},
      {all + "\\pgbrdropt32 a", 10, 10},
      {"\\pgbrdrt" + border + " a", -1, (kInch - 300) / 20},
      {all + "\\pgbrdrhead\\headery500 " + head + "a", (kInch - 300) / 20, 10},
      {all + "\\pgbrdrhead\\headery500 a", (kInch - 300) / 20, (kInch - 300) / 20},
      {all + "\\pgbrdropt1 a", (kInch - 300) / 20, (kInch - 300) / 20},
      {all + "\\pgbrdropt2 a", -1, -1},
      // Section words in a footer are not the section's.
      {all + "{\\footer\\pard\\sectd\\pgbrdrl\\brdrnone f\\par}a", (kInch - 300) / 20,
       (kInch - 300) / 20},
  };
  const ScratchFolder folder;
  for (const auto& c : cases) {
    const auto [left, top] = InkAround(Print(Letter(c.body), folder));
    EXPECT_NEAR(left, c.left, 1) << c.body;
    EXPECT_NEAR(top, c.top, 1) << c.body;
  }
}

TEST(Sections, HaveMarginsOfTheirOwnAndLieAcross) {
  const richtext::Document document = Letter(
      "one\\sect\\sectd\\marglsxn2000\\margtsxn3000 two\\sect\\sectd\\lndscpsxn\\marglsxn2500 "
      "three");
  const ScratchFolder folder;
  for (const bool own : {true, false}) {
    const auto printers =
        printing::Printers::Create({printing::kPdfPrinterName, folder / "sections.pdf"});
    printing::Printer& printer = printers->Current();
    printer.StartDocument("Sections", {});
    printing::FormatRange range;
    range.document = &document;
    range.print_rect = {kInch, kInch, kInch + kTextWidth, kInch + kTextHeight};
    range.page_rect = {0, 0, kPageWidth, kPageHeight};
    range.own_margins = {own, own, own, own};
    for (int page = 1; page <= 3; ++page) {
      if (page > 1) printer.NewPage();
      range.range.from = printer.Format(range);
    }
    Paper paper;
    paper.file = printer.EndJob();
    EXPECT_NEAR(paper.Find("one").left, kInch, 2);
    EXPECT_NEAR(paper.Find("two").left, own ? 2000 : kInch, 2);
    EXPECT_NEAR(paper.Find("two").top - paper.Find("one").top, own ? 3000 - kInch : 0, 2);
    EXPECT_NEAR(paper.Find("three").left, own ? 2500 : kInch, 2);
    EXPECT_THAT(Poppler({"pdfinfo", "-f", "3", "-l", "3", paper.file.string()}),
                testing::ContainsRegex("Page +3 size: +842 x 595"));
  }
}

}  // namespace
}  // namespace tenora::test
