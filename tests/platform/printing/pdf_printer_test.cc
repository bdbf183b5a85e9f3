// The PDF printer: file names, files and their metadata.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>

#include "platform/dialogs/scripted_dialogs.h"
#include "platform/printing/paper.h"
#include "platform/runtime/files.h"
#include "support/environment.h"
#include "support/errors.h"

namespace tenora::test {
namespace {

using printing::kPdfPrinterName;
using printing::Printer;
using printing::Printers;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

std::filesystem::path PrintLetter(Printers& printers, const std::string& title,
                                  const std::string& text = "letter") {
  Printer& printer = printers.Current();
  printer.StartDocument(title, {});
  const richtext::Document document = DocumentOf({Line(text)});
  DrawPages(printer, document, {kInch, kInch, kInch + kTextWidth, kInch + kTextHeight});
  return printer.EndJob();
}

std::vector<std::string> FilesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(PdfPrinter, IsInstalledFirstAndFoundInAnyCase) {
  const auto printers = Printers::Create({"PRINT to pdf", {}});
  EXPECT_GE(printers->Count(), 1);
  EXPECT_EQ(printers->Names().front(), kPdfPrinterName);
  EXPECT_EQ(printers->Current().DeviceName(), kPdfPrinterName);
  EXPECT_FALSE(printers->SetCurrent("no such printer"));
  EXPECT_TRUE(printers->SetCurrent("print TO PDF"));
  EXPECT_EQ(printers->Current().PhysicalOffsetX(), 0);
  EXPECT_EQ(printers->Current().PhysicalOffsetY(), 0);
}

TEST(PdfPrinter, TellsWhichPrinterIsNotInstalled) {
  const auto printers = Printers::Create({"Upstairs", {}});
  EXPECT_THAT(ErrorOf([&] { printers->Current(); }),
              AllOf(HasSubstr("482 - Printer error"), HasSubstr("Upstairs")));
  EXPECT_TRUE(printers->SetCurrent(kPdfPrinterName)) << "another can still be chosen";
}

TEST(PdfPrinter, UsesThePaperOfTheRegion) {
  const struct {
    const char* locale;
    int width, height;
  } cases[] = {{"en_NZ.UTF-8", 11906, 16838},
               {"en_US.UTF-8", 12240, 15840},
               {"fr_CA", 12240, 15840},
               {"C", 11906, 16838}};
  for (const auto& expected : cases) {
    const Environment environment({{"LC_ALL", expected.locale}});
    const auto printers = Printers::Create({kPdfPrinterName, {}});
    EXPECT_EQ(printers->Current().Width(), expected.width) << expected.locale;
    EXPECT_EQ(printers->Current().Height(), expected.height) << expected.locale;
  }
}

TEST(PdfPrinter, WritesUnderTheDataFolderAndNeverOverAnotherLetter) {
  const ScratchFolder folder;
  const auto printers = Printers::Create({kPdfPrinterName, {}});
  printers->SetDataFolder(folder.path());
  EXPECT_EQ(PrintLetter(*printers, "Rent rise", "one"), folder / "Printed/Rent rise.pdf");
  EXPECT_EQ(PrintLetter(*printers, "Rent rise", "two"), folder / "Printed/Rent rise(1).pdf");
  EXPECT_EQ(PrintLetter(*printers, "Rent rise", "three"), folder / "Printed/Rent rise(2).pdf");
  const Paper first{folder / "Printed/Rent rise.pdf", {}};
  EXPECT_THAT(first.Text(), HasSubstr("one"));
  EXPECT_EQ(FilesIn(folder / "Printed").size(), 3u) << "nothing is left behind";
}

TEST(PdfPrinter, ReplacesTheFileItWasGivenByName) {
  const ScratchFolder folder;
  const auto printers = Printers::Create({kPdfPrinterName, folder / "sub/out.PDF"});
  PrintLetter(*printers, "First", "one");
  EXPECT_EQ(PrintLetter(*printers, "Second", "two"), folder / "sub/out.PDF");
  EXPECT_THAT((Paper{folder / "sub/out.PDF", {}}).Text(), HasSubstr("two"));
  EXPECT_THAT(FilesIn(folder / "sub"), ElementsAre("out.PDF"));
}

TEST(PdfPrinter, NamesTheDocumentAndItsPaper) {
  const ScratchFolder folder;
  const auto printers = Printers::Create({kPdfPrinterName, folder.path()});
  const std::string about = Poppler({"pdfinfo", PrintLetter(*printers, "Māhuta & Söhne")});
  EXPECT_THAT(about, HasSubstr("Māhuta & Söhne"));
  EXPECT_THAT(about, HasSubstr("(A4)"));
}

TEST(PdfPrinter, CollectsTheLettersOfOneJob) {
  const ScratchFolder folder;
  const auto printers = Printers::Create({kPdfPrinterName, folder.path()});
  Printer& printer = printers->Current();
  for (const char* text : {"first", "second", "third"}) {
    printer.StartDocument(text, {});
    const richtext::Document document = DocumentOf({Line(text)});
    DrawPages(printer, document, {0, 0, kTextWidth, kTextHeight});
    EXPECT_TRUE(printer.JobOpen());
    EXPECT_THAT(FilesIn(folder.path()), ElementsAre()) << "a kill would leave it behind";
  }
  const Paper paper{printer.EndJob(), {}};
  EXPECT_EQ(paper.file, folder / "first.pdf");
  EXPECT_THAT(paper.PageText(2), HasSubstr("second"));
  EXPECT_THAT(paper.PageText(3), HasSubstr("third"));
  EXPECT_EQ(printer.EndJob(), "") << "nothing is open";
}

TEST(PdfPrinter, LeavesNothingOfADroppedJob) {
  const ScratchFolder folder;
  {
    const auto printers = Printers::Create({kPdfPrinterName, folder.path()});
    printers->Current().StartDocument("Dropped", {});
    printers->Current().CancelJob();
    EXPECT_THAT(FilesIn(folder.path()), ElementsAre());
    printers->Current().StartDocument("Left open", {});
  }
  EXPECT_THAT(FilesIn(folder.path()), ElementsAre());
}

TEST(PdfPrinter, NamesThePathItCannotWrite) {
  const ScratchFolder folder;
  WriteWholeFile(folder / "file", "in the way");
  std::filesystem::create_directory(folder / "folder.pdf");
  const struct {
    std::filesystem::path target;
    const char* named;
  } cases[] = {{folder / "file/sub", "file"},
               {folder / "folder.pdf", "folder.pdf"},
               {"/proc/tenora", "/proc/tenora"}};
  for (const auto& expected : cases) {
    const auto printers = Printers::Create({kPdfPrinterName, expected.target});
    EXPECT_THAT(
        ErrorOf([&] { PrintLetter(*printers, "Letter"); }),
        AllOf(HasSubstr("482 - Printer error"), HasSubstr(expected.named), HasSubstr("Letter")));
    EXPECT_FALSE(printers->Current().JobOpen());
  }
  const auto nowhere = Printers::Create({kPdfPrinterName, {}});
  EXPECT_THAT(ErrorOf([&] { PrintLetter(*nowhere, "Letter"); }), HasSubstr("482"));
}

TEST(PdfPrinter, ReportsADiskThatFillsUp) {
  const ScratchFolder folder;
  const auto printers = Printers::Create({kPdfPrinterName, folder.path()});
  Printer& printer = printers->Current();
  printer.StartDocument("Large", {});
  // The job's own file is made unable to grow.
  rlimit old_limit{}, tight{};
  ::getrlimit(RLIMIT_FSIZE, &old_limit);
  const auto old_handler = ::signal(SIGXFSZ, SIG_IGN);
  tight = old_limit;
  tight.rlim_cur = 100;
  ::setrlimit(RLIMIT_FSIZE, &tight);
  const richtext::Document document = DocumentOf({Line("does not fit")});
  DrawPages(printer, document, {0, 0, kTextWidth, kTextHeight});
  const std::string failure = ErrorOf([&] { printer.EndJob(); });
  ::setrlimit(RLIMIT_FSIZE, &old_limit);
  ::signal(SIGXFSZ, old_handler);
  EXPECT_THAT(failure, AllOf(HasSubstr("482 - Printer error"), HasSubstr("Large")));
  EXPECT_THAT(FilesIn(folder.path()), ElementsAre());
}

TEST(PdfPrinter, NamesFilesAfterTitlesAsEverySystemAllows) {
  const struct {
    std::string title, stem;
  } cases[] = {
      {"Rent rise - Smith", "Rent rise - Smith"},
      {"Receipt: 2026/11", "Receipt- 2026-11"},
      {" ... ", "Document"},
      {"", "Document"},
      {std::string(119, 'a') + "€", std::string(111, 'a') + "~"},
  };
  for (const auto& expected : cases) {
    const ScratchFolder folder;
    const auto printers = Printers::Create({kPdfPrinterName, folder.path()});
    printers->Current().StartDocument(expected.title, {});
    EXPECT_THAT(printers->Current().EndJob().filename().string(),
                testing::StartsWith(expected.stem));
  }
}

TEST(PrinterChooser, OffersAllAndTakesTheChosenOne) {
  const auto printers = Printers::Create({"absent", {}});
  ScriptedDialogs dialogs;
  dialogs.WillCancel().WillChoose(0);
  EXPECT_FALSE(printers->Choose(dialogs));
  EXPECT_TRUE(printers->Choose(dialogs));
  EXPECT_EQ(printers->Current().DeviceName(), kPdfPrinterName);
  EXPECT_EQ(dialogs.shown().front().items.front(), kPdfPrinterName);
}

TEST(PrinterChooser, PrintsThePagesThatWereChosenOnce) {
  class ChoosesPages : public ScriptedDialogs {
   public:
    std::vector<PageRange> pages;

   private:
    std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>&,
                                             const PrintChoice& shown) override {
      EXPECT_TRUE(shown.pages.has_value() && shown.pages->empty());
      PrintChoice choice = shown;
      choice.pages = pages;
      return choice;
    }
  };
  const ScratchFolder folder;
  const auto printers = Printers::Create({kPdfPrinterName, folder.path()});
  const std::string break_before = "\f";
  const richtext::Document letter = DocumentOf(
      {Line("one" + break_before + "two" + break_before + "three" + break_before + "four")});
  ChoosesPages dialogs;
  const auto print = [&] {
    Printer& printer = printers->Current();
    printer.StartDocument("Letter", {});
    DrawPages(printer, letter, {kInch, kInch, kInch + kTextWidth, kInch + kTextHeight});
    const Paper paper{printer.EndJob(), {}};
    std::string text = paper.Text();
    std::erase(text, '\n');
    std::ranges::replace(text, '\f', '|');
    return text;
  };
  const struct {
    std::vector<PageRange> pages;
    const char* text;
  } cases[] = {{{}, "one|two|three|four|"},
               {{{2, 3}}, "two|three|"},
               {{{1, 1}, {4, 9}}, "one|four|"},
               {{{3, 3}, {2, 2}}, "two|three|"}};
  for (const auto& c : cases) {
    dialogs.pages = c.pages;
    ASSERT_TRUE(printers->Choose(dialogs, Printers::Offer::kPages, 0));
    EXPECT_EQ(printers->SomePages(), !c.pages.empty());
    EXPECT_EQ(print(), c.text);
  }
  EXPECT_EQ(print(), "one|two|three|four|") << "not the pages of the job before";
  dialogs.pages = {{5, 6}};
  ASSERT_TRUE(printers->Choose(dialogs, Printers::Offer::kPages, 0));
  EXPECT_THAT(ErrorOf(print), HasSubstr("\"Letter\" has 4 pages, and none of those"));
  EXPECT_FALSE(printers->Current().JobOpen());
  EXPECT_EQ(print(), "one|two|three|four|");
}

TEST(PrinterChooser, TurnsThePaperAndKeepsItTurnedUntilTheDefaultIsWanted) {
  class Sideways : public ScriptedDialogs {
    std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>& printers,
                                             const PrintChoice& shown) override {
      EXPECT_EQ(shown.landscape, times++ > 0);
      EXPECT_FALSE(printers.front().on_paper);
      return PrintChoice{.printer = 0, .landscape = true};
    }
    int times = 0;
  };
  const auto printers = Printers::Create({kPdfPrinterName, {}});
  const int width = printers->Current().Width(), height = printers->Current().Height();
  Sideways dialogs;
  for (int time = 0; time < 2; ++time) {
    EXPECT_TRUE(printers->Choose(dialogs));
    EXPECT_EQ(printers->Current().Width(), height);
    EXPECT_EQ(printers->Current().Height(), width);
  }
  printers->UseDefault();
  EXPECT_EQ(printers->Current().Width(), width);
}

}  // namespace
}  // namespace tenora::test
