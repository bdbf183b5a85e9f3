#include "output/letter_printing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "platform/printing/paper.h"
#include "support/errors.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

using test::Paper;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr double kNear = 12;

class PrinterModTest : public testing::Test {
 protected:
  void SetMargins(const std::array<const char*, 4>& margins) {
    const char* const keys[] = {"TopMargin", "BottomMargin", "LeftMargin", "RightMargin"};
    for (std::size_t i = 0; i < margins.size(); ++i) {
      settings_.SaveSettingText("Mail\\PrinterSetup", keys[i], margins[i]);
    }
  }

  Paper PrintRtf(const std::string& rtf) {
    RichTextBox box;
    box.SetTextRTF(rtf);
    printer_mod_.PrintRichText(box, "Letter");
    return {printer_mod_.EndJob(), {}};
  }

  std::string FailureOf(const std::string& rtf) {
    return test::ErrorOf([&] { PrintRtf(rtf); });
  }

  test::FakePlatform platform_;
  Settings settings_{platform_.Parts()};
  std::unique_ptr<printing::Printers> printers_ =
      printing::Printers::Create({printing::kPdfPrinterName, platform_.folder / "paper"});
  PrinterMod printer_mod_{*printers_, settings_};
};

std::string Rtf(const std::string& body) {
  return "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\froman Times New Roman;}}\\fs24 " + body + "}";
}

std::string Paragraphs(int count) {
  std::string body;
  for (int i = 1; i <= count; ++i) body += "paragraph " + std::to_string(i) + "\\par ";
  return body;
}

TEST_F(PrinterModTest, StopsBetweenThePagesAndDropsTheJob) {
  int pages = 0;
  printer_mod_.StopAsked = [&pages] { return ++pages == 2; };
  EXPECT_THAT(FailureOf(Rtf(Paragraphs(200))), StartsWith("32755 - "));
  EXPECT_EQ(pages, 2);
  EXPECT_FALSE(printers_->Current().JobOpen());
  EXPECT_TRUE(printer_mod_.EndJob().empty());
}

TEST_F(PrinterModTest, ReadsMarginsInTwipsAndNoneAsZero) {
  EXPECT_EQ(printer_mod_.LoadMargins(), PageMargins());
  SetMargins({"567", "1440", "-20", "2147483647"});
  EXPECT_EQ(printer_mod_.LoadMargins(), (PageMargins{567, 1440, -20, 2147483647}));
}

TEST_F(PrinterModTest, ReportsMarginsThatAreNoNumbers) {
  SetMargins({"0", "0", "wide", "0"});
  EXPECT_THAT(FailureOf(Rtf("text")), StartsWith("13 - "));
  SetMargins({"0", "0", "3000000000", "0"});
  EXPECT_THAT(FailureOf(Rtf("text")), StartsWith("6 - "));
  EXPECT_FALSE(printers_->Current().JobOpen());
}

TEST_F(PrinterModTest, PutsTheTextInsideTheMargins) {
  SetMargins({"1134", "1440", "1701", "2835"});
  const Paper paper = PrintRtf(Rtf("Corner " + std::string(60, 'x') + "\\par\\qr Edge\\par"));
  EXPECT_NEAR(paper.Find("Corner").left, 1701, kNear);
  EXPECT_NEAR(paper.Find("Corner").top, 1134, kNear);
  EXPECT_NEAR(paper.Find("Edge").right, test::kPageWidth - 2835, kNear);
}

TEST_F(PrinterModTest, TakesALettersOwnMarginsWhereNoneAreStored) {
  const std::string own = "\\paperw11906\\paperh16838\\margl1701\\margr2268\\margt1134\\margb1440";
  struct Case {
    std::array<const char*, 4> stored;
    std::string head;
    double left, top, right;
  };
  const Case cases[] = {
      {{"0", "0", "0", "0"}, own, 1701, 1134, 2268},
      {{"567", "0", "0", "850"}, own, 1701, 567, 850},
      {{"0", "0", "-20", "0"}, "\\margl900\\margt-600", -20, 600, 1800},
      {{"0", "0", "0", "0"}, "\\margl900\\margr900", 900, 1440, 900},
      {{"0", "0", "0", "0"}, "", 0, 0, 0},
      {{"0", "0", "0", "0"}, own + "\\gutter300", 2001, 1134, 2268},
      {{"0", "0", "0", "0"}, own + "\\gutter300\\rtlgutter ", 1701, 1134, 2568},
      {{"0", "0", "0", "0"}, own + "\\gutter300\\gutterprl ", 1701, 1434, 2268},
      {{"0", "0", "567", "0"}, own + "\\gutter300\\margmirror ", 567, 1134, 2268},
      // Made for larger paper: none of its margins counts.
      {{"0", "0", "1000", "0"}, "\\paperw30000\\margl1000\\margr15000\\margt1134", 1000, 0, 0},
  };
  for (const Case& c : cases) {
    SetMargins(c.stored);
    const Paper paper = PrintRtf(Rtf(c.head + "Corner\\par\\qr Edge\\par"));
    EXPECT_NEAR(paper.Find("Corner").left, c.left, kNear) << c.head;
    EXPECT_NEAR(paper.Find("Corner").top, c.top, kNear) << c.head;
    EXPECT_NEAR(paper.Find("Edge").right, test::kPageWidth - c.right, kNear) << c.head;
  }
}

TEST_F(PrinterModTest, MirrorsMarginsAndGutterOnEvenPages) {
  SetMargins({"0", "0", "0", "0"});
  const Paper paper =
      PrintRtf(Rtf("\\margmirror\\margl1000\\margr700\\gutter500{\\header\\pard "
                   "Head\\par}one\\page two\\sect\\sectd"
                   "\\guttersxn100 three\\page four"));
  const std::vector<std::pair<const char*, int>> lefts{
      {"one", 1500}, {"two", 700}, {"three", 1100}, {"four", 700}};
  for (std::size_t page = 0; page < lefts.size(); ++page) {
    const test::Word word = paper.Find(lefts[page].first);
    EXPECT_EQ(word.page, page + 1);
    EXPECT_NEAR(word.left, lefts[page].second, kNear) << word.text;
    for (const test::Word& head : paper.Words()) {
      if (head.page != word.page || head.text != "Head") continue;
      EXPECT_NEAR(head.left, word.left, kNear);
    }
  }
}

TEST_F(PrinterModTest, GoesOnToAsManyPagesAsTheTextNeeds) {
  SetMargins({"1440", "1440", "1440", "1440"});
  const Paper paper = PrintRtf(Rtf(Paragraphs(120)));
  // 276 twips a line, 13958 of height: 50 lines a page.
  EXPECT_THAT(test::Poppler({"pdfinfo", paper.file.string()}), HasSubstr("Pages:           3\n"));
  EXPECT_THAT(paper.PageText(2), StartsWith("paragraph 51\n"));
  EXPECT_THAT(paper.PageText(3), AllOf(StartsWith("paragraph 101\n"), HasSubstr("paragraph 120")));
}

TEST_F(PrinterModTest, RefusesMarginsThatLeaveNoRoom) {
  const std::array<const char*, 4> cases[] = {{"9000", "9000", "0", "0"},
                                              {"0", "0", "6000", "6000"},
                                              {"0", "0", "2147483647", "2147483647"},
                                              {"-2147483648", "2147483647", "0", "0"}};
  for (const auto& margins : cases) {
    SetMargins(margins);
    EXPECT_THAT(FailureOf(Rtf("text")), AllOf(StartsWith("482 - Printer error"),
                                              HasSubstr("margins"), HasSubstr(margins[0])));
    EXPECT_FALSE(printers_->Current().JobOpen());
  }
}

TEST_F(PrinterModTest, LaysTheSheetAsEachLetterOfAJobWantsIt) {
  SetMargins({"1000", "1000", "2000", "3000"});
  // The PDF's pages are as large as the letter says, where it says both lengths.
  for (const char* head :
       {"", "\\landscape\\paperw9999", "\\landscape0", "\\paperw12240\\paperh7920",
        "\\landscape\\paperw7920\\paperh12240", "\\paperw9000\\paperh50",
        "\\paperw8391\\paperh11906 first\\sect\\sectd\\pgwsxn6000\\pghsxn8000 "}) {
    RichTextBox box;
    box.SetTextRTF(Rtf(std::string(head) + "\\qr Edge\\par"));
    printer_mod_.PrintRichText(box, "Letter");
  }
  const Paper paper{printer_mod_.EndJob(), {}};
  const std::vector<test::Word> words = paper.Words();
  const int widths[] = {test::kPageWidth,
                        test::kPageHeight,
                        test::kPageWidth,
                        12240,
                        12240,
                        test::kPageWidth,
                        0,
                        6000};
  ASSERT_EQ(words.size(), std::size(widths));
  for (std::size_t i = 0; i < words.size(); ++i) {
    EXPECT_EQ(words[i].page, i + 1);
    const double edge = words[i].text == "Edge" ? widths[i] - 3000 : 2000;
    EXPECT_NEAR(words[i].text == "Edge" ? words[i].right : words[i].left, edge, kNear) << i;
    EXPECT_NEAR(words[i].top, 1000, kNear) << i;
  }
}

}  // namespace
}  // namespace tenora
