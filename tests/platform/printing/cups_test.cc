// Printing through a real print server.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "platform/dialogs/scripted_dialogs.h"
#include "platform/printing/cups_server.h"
#include "platform/printing/paper.h"
#include "support/errors.h"

namespace tenora::test {
namespace {

using printing::Printers;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

class Cups : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    server_ = std::make_unique<CupsServer>();
    ::setenv("CUPS_SERVER", server_->socket().c_str(), 1);
  }
  static void TearDownTestSuite() { server_.reset(); }
  void SetUp() override {
    if (!server_->problem().empty()) GTEST_SKIP() << server_->problem();
  }

  static std::unique_ptr<CupsServer> server_;
};

std::unique_ptr<CupsServer> Cups::server_;

TEST_F(Cups, ListsItsQueuesBehindThePdfPrinter) {
  const auto printers = Printers::Create({});
  EXPECT_EQ(printers->Names().front(), printing::kPdfPrinterName);
  EXPECT_THAT(printers->Names(),
              UnorderedElementsAre(printing::kPdfPrinterName, "Office", "Closed", "Trays"));
  EXPECT_EQ(printers->Current().DeviceName(), "Office") << "the server's default";
  EXPECT_TRUE(printers->SetCurrent("CLOSED"));
  EXPECT_EQ(printers->Current().DeviceName(), "Closed");
}

TEST_F(Cups, TakesTheLettersOfARunAsOneJobUnderItsTitleAsSetInTheChooser) {
  class Chooses : public ScriptedDialogs {
    std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>& printers,
                                             const PrintChoice& shown) override {
      EXPECT_TRUE(printers[shown.printer].on_paper);
      return PrintChoice{shown.printer, 3, false, Sides::kBothLongEdge};
    }
  };
  const auto printers = Printers::Create({"office", {}});
  Chooses dialogs;
  ASSERT_TRUE(printers->Choose(dialogs));
  printing::Printer& printer = printers->Current();
  richtext::Document letters[] = {DocumentOf({Line("Dear Mr Māhuta,")}),
                                  DocumentOf({Line("Dear Mrs Smith,")})};
  // What is in the tray counts, not what the letter was written for.
  letters[0].page.width = letters[0].page.height = 9000;
  const printing::Rect area{kInch, kInch, kInch + kTextWidth, kInch + kTextHeight};
  for (const richtext::Document& letter : letters) {
    printer.StartDocument("Rent rise \"2026\"; $HOME", letter.page);
    DrawPages(printer, letter, area);
  }
  EXPECT_EQ(printer.EndJob(), "");
  const auto jobs = server_->WaitForJobs(1);
  ASSERT_EQ(jobs.size(), 1u);
  EXPECT_EQ(jobs[0].title, "Rent rise \"2026\"; $HOME");
  EXPECT_THAT(jobs[0].options,
              AllOf(HasSubstr("copies=3"), HasSubstr("sides=two-sided-long-edge")));
  const Paper paper{jobs[0].file, {}};
  EXPECT_THAT(paper.PageText(1), HasSubstr("Dear Mr Māhuta,"));
  EXPECT_THAT(paper.PageText(2), HasSubstr("Dear Mrs Smith,"));
  EXPECT_THAT(Poppler({"pdfinfo", paper.file.string()}), HasSubstr("595 x 842"));
}

TEST_F(Cups, OffersWhatThePrinterCanBeSetToAndPrintsSo) {
  class ChoosesTray : public ScriptedDialogs {
    std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>& printers,
                                             const PrintChoice& shown) override {
      EXPECT_FALSE(printers.front().settings) << "the PDF printer";
      PrintChoice choice = shown;
      choice.copies = 2;
      choice.collate = false;
      choice.pages = {{2, 2}};
      for (const PrinterSetting& setting : printers[shown.printer].settings()) {
        offered += setting.label + " (" + setting.preset + "):";
        for (const PrinterSetting::Value& value : setting.values) {
          offered += " " + value.label + ",";
          const bool wanted = value.label == "Bottom" || value.label.starts_with("A5");
          if (wanted) choice.settings.emplace_back(setting.name, value.value);
        }
        offered += "\n";
      }
      return choice;
    }

   public:
    std::string offered;
  };
  const auto printers = Printers::Create({"Trays", {}});
  EXPECT_NEAR(printers->Current().Width(), 595 * 20, 20) << "the queue's own paper";
  ChoosesTray dialogs;
  ASSERT_TRUE(printers->Choose(dialogs, Printers::Offer::kPages, 0));
  EXPECT_EQ(dialogs.offered,
            "Paper (A4): A4, A5,\nPaper tray (): Top, Bottom,\n"
            "Colours (Color): Monochrome, Color,\n");
  printing::Printer& printer = printers->Current();
  EXPECT_NEAR(printer.Width(), 420 * 20, 20);
  printer.StartDocument("Pages", {});
  DrawPages(printer, DocumentOf({Line("first\fsecond\fthird")}),
            {kInch, kInch, 420 * 20 - kInch, 595 * 20 - kInch});
  printer.EndJob();
  const auto jobs = server_->WaitForJobs(2);
  const auto job = std::ranges::find(jobs, "Pages", &CupsServer::Job::title);
  ASSERT_NE(job, jobs.end());
  EXPECT_THAT(job->options, AllOf(HasSubstr("copies=2"), HasSubstr("noCollate"),
                                  HasSubstr("InputSlot=Lower"), HasSubstr("PageSize=A5")));
  const Paper paper{job->file, {}};
  EXPECT_THAT(paper.Text(),
              AllOf(HasSubstr("second"), Not(HasSubstr("first")), Not(HasSubstr("third"))));
}

TEST_F(Cups, NamesPrinterAndTitleWhenAQueueRefuses) {
  const auto printers = Printers::Create({"Closed", {}});
  printing::Printer& printer = printers->Current();
  printer.StartDocument("Notice", {});
  EXPECT_THAT(ErrorOf([&] { printer.EndJob(); }),
              AllOf(HasSubstr("482 - Printer error"), HasSubstr("Closed"), HasSubstr("Notice")));
  EXPECT_FALSE(printer.JobOpen());
}

}  // namespace
}  // namespace tenora::test
