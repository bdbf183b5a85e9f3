// The templates that come with the program, filled for the sample agency's own recipients.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "letters/frm_letter.h"
#include "letters/template_library.h"
#include "output/letter_pdf.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

class ExampleTemplatesTest : public testing::Test {
 protected:
  ExampleTemplatesTest() { machine_.InstallSampleDatabase(); }

  fs::path Examples() const { return test::SourceDir() / "examples/agency"; }
  // What stands on the letter's paper; it must be one page without a code.
  std::string Paper(const frmLetter& letter) const {
    const fs::path file = machine_.folder / "letter.pdf";
    WriteWholeFile(file, MakeLetterPdf(letter.rtfLetter, "letter", session_.settings));
    const std::string text = test::RunProcess({"pdftotext", "-layout", file.string(), "-"}).output;
    EXPECT_THAT(text, Not(HasSubstr("<<")));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\f'), 1) << text;
    return text;
  }

  test::FakePlatform machine_;
  mutable Session session_{machine_.Parts()};
};

TEST_F(ExampleTemplatesTest, FillAnOwnersLetterForEveryOwner) {
  session_.database.OpenDatabase();
  session_.caches.CacheOwners(session_.database);
  session_.database.CloseDatabase();
  const auto names = TemplateLibrary(Examples()).Names(kOwnerTemplates);
  EXPECT_THAT(names, testing::ElementsAre("Fee change", "Owner statement", "Owner welcome"));
  for (const std::string& name : names) {
    for (const OwnerRecord& owner : session_.caches.Owners) {
      frmLetter letter(session_);
      letter.members().RecipientName = owner.Name;
      letter.LoadLetter(Examples() / kOwnerTemplates / (name + ".rtf"), kOwnerTemplates);
      const OwnerMergeOutcome outcome = letter.InsertOwnerDetails();
      EXPECT_TRUE(outcome.owner_found && outcome.future_dates_inserted && !outcome.error);
      if (name == "Fee change") machine_.dialogs.WillType("9.25");
      letter.InsertPrompts();
      const std::string paper = Paper(letter);
      EXPECT_THAT(paper, HasSubstr(owner.Name));
      EXPECT_THAT(paper, HasSubstr(owner.FeePercent + "% of the rent"));
    }
  }
}

TEST_F(ExampleTemplatesTest, FillAChequeOfAnyLengthOnOnePage) {
  for (const std::string word : {"Cheque", "Check"}) {
    for (const auto& [amount, words] : {std::pair(0.05, "Zero Dollars and 05 Cents"),
                                        {777777.77, "Hundred and Seventy Seven Dollars and 77"}}) {
      frmLetter letter(session_);
      letter.LoadLetter(Examples() / word / ("Trust account " + ToLower(word) + ".rtf"), word);
      EXPECT_FALSE(letter.InsertChequeDetails(
          "Aroha Māhuta and the Partners of Old Mill Close Maintenance and Gardening", amount));
      const std::string paper = Paper(letter);
      EXPECT_THAT(paper, HasSubstr("$**" + FormatNumber(amount, "0.00")));
      EXPECT_THAT(paper, HasSubstr(words));
    }
  }
}

}  // namespace
}  // namespace tenora
