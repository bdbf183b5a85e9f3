#include "ui/window/main/letter_runs.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <QTreeWidget>

#include "letters/template_library.h"
#include "window_fixture.h"

namespace tenora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class LetterRunsTest : public WindowPartsTest {
 protected:
  LetterRunsTest() {
    LoadTenants();
    QObject::connect(&runs_, &LetterRuns::Told,
                     [this](const QString& message) { told_.push_back(message.toStdString()); });
    request_.template_kind = kTemplates;
    request_.template_name = "Notice";
  }
  // The next dialogs, in order: what is ticked or selected there, and the button that is pressed.
  struct Step {
    const char* dialog;
    std::vector<const char*> ticked;
    const char* button;
  };
  void InDialogs(std::vector<Step> steps) {
    steps_ = std::move(steps);
    done_ = 0;
    QTimer::singleShot(0, &desk_, [this] { DoStep(); });
  }
  void DoStep() {
    QWidget* dialog = QApplication::activeModalWidget();
    if (dialog == nullptr || done_ == steps_.size()) return;
    const Step& step = steps_[done_++];
    if (done_ < steps_.size()) QTimer::singleShot(0, &desk_, [this] { DoStep(); });
    EXPECT_EQ(dialog->objectName(), step.dialog);
    for (const char* name : step.ticked) {
      for (auto* item : dialog->findChild<QTreeWidget*>("lstLetters")
                            ->findItems(name, Qt::MatchStartsWith | Qt::MatchRecursive, 0)) {
        item->setCheckState(0, Qt::Checked);
      }
    }
    dialog->findChild<QAbstractButton*>(step.button)->click();
  }
  void Generate(std::initializer_list<Recipient> recipients) {
    request_.recipients = recipients;
    runs_.Run(request_.destination, [this](GenerationObserver& observer) {
      return GenerateSelection(session_, request_, observer, printers_.IfRead());
    });
    EXPECT_EQ(done_, steps_.size()) << "a dialog did not come up";
  }
  std::vector<UnfinishedRun> Unfinished() const { return FindUnfinishedRuns(Data()); }
  bool Exists(const std::string& file) const { return std::filesystem::exists(Data() / file); }

  const Recipient mei_{"Mei Huang", "T00007"}, ben_{"Ben Huang", "T00032"},
      tama_{"Tama O'Brien", "T00006"};
  LetterRuns runs_{session_,  tree_,  letters_,
                   printers_, AtOnce, [](const std::filesystem::path&) { return false; },
                   &desk_};
  GenerationRequest request_;
  std::vector<Step> steps_;
  std::size_t done_ = 0;
  std::vector<std::string> told_;
};

TEST_F(LetterRunsTest, SendsTheTickedHeldLettersAsTheyAreAndNoOthers) {
  SaveTemplate("Notice", "Dear <<Tenant Nmae>> <<?Why?>>");
  platform_.dialogs.WillType("rent").WillType("rent");
  InDialogs({{"frmRunReport", {"Ben Huang"}, "cmdSendHeld"}, {"frmRunReport", {}, "cmdLeave"}});
  Generate({mei_, ben_});
  // Mei's letter is not made anew, which would have asked its question again.
  EXPECT_THAT(told_, ElementsAre("0 of 2 letters were made.", "1 of 2 letters were made."));
  ASSERT_EQ(Unfinished().size(), 1U);
  ASSERT_EQ(Unfinished()[0].summary.held.size(), 1U);
  EXPECT_EQ(Unfinished()[0].summary.held[0].recipient, mei_);
}

TEST_F(LetterRunsTest, OpensAHeldLetterAndSendsItAfterItsCorrection) {
  SaveTemplate("Notice", "Dear <<Tenant Nmae>>");
  InDialogs({{"frmRunReport", {"Tama"}, "cmdOpen"}});
  Generate({mei_, tama_});
  ASSERT_EQ(desk_.Letters().size(), 1U);
  EXPECT_EQ(InFront().TenantCode, "T00006");
  frmLetter& letter = letters_.Active()->letter();
  letter.rtfLetter.SetText("Dear Tama");
  // Its letter waits to be saved, which is asked before the run looks at the file.
  platform_.dialogs.WillPress(Answer::kYes);
  InDialogs({{"frmUnfinishedRuns", {}, "cmdResume"}, {"frmRunReport", {}, "cmdLeave"}});
  EXPECT_TRUE(runs_.ShowUnfinished());
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre("Save changes?"));
  EXPECT_EQ(told_.back(), "1 of 2 letters were made.");
}

TEST_F(LetterRunsTest, PrintsWhatHasNoAddressAndIsDoneThen) {
  SaveTemplate("Notice", "Dear <<Tenant Name>>");
  request_.destination = Destination::kEmail;
  platform_.dialogs.WillChoose(0);
  InDialogs({{"frmRunReport", {"Tama"}, "cmdPrint"}});
  Generate({tama_});
  EXPECT_EQ(told_.back(), "1 of 1 letters were made.");
  EXPECT_TRUE(Exists("Printed"));
  EXPECT_THAT(Unfinished(), IsEmpty());
  for (const ShownBox& box : platform_.dialogs.shown()) {
    EXPECT_EQ(box.kind, ShownBox::Kind::kChoice) << box.text;
  }
}

TEST_F(LetterRunsTest, MakesTheMissingLettersAfterAFailure) {
  SaveTemplate("Notice", "Dear <<Tenant Name>>");
  // A file stands where the letter's folder should be.
  WriteWholeFile(Data() / mei_.name, "");
  InDialogs({{"frmRunReport", {}, "cmdMakeMissing"}, {"frmRunReport", {}, "cmdLeave"}});
  Generate({mei_, ben_});
  EXPECT_THAT(told_, ElementsAre("0 of 2 letters were made.", "0 of 2 letters were made."));
  EXPECT_EQ(platform_.dialogs.shown().size(), 2U);  // the error of each attempt
  std::filesystem::remove(Data() / mei_.name);
  InDialogs({{"frmUnfinishedRuns", {}, "cmdResume"}});
  EXPECT_TRUE(runs_.ShowUnfinished());
  EXPECT_EQ(told_.back(), "2 of 2 letters were made.");
  EXPECT_FALSE(runs_.ShowUnfinished());
}

TEST_F(LetterRunsTest, ShowsARunUntilItIsForgotten) {
  SaveTemplate("Notice", "Dear <<Tenant Nmae>>");
  InDialogs({{"frmRunReport", {}, "cmdLeave"}});
  Generate({mei_, ben_});
  platform_.dialogs.WillPress(Answer::kNo).WillPress(Answer::kYes);
  InDialogs({{"frmUnfinishedRuns", {}, "cmdLook"},
             {"frmRunReport", {}, "cmdLeave"},
             {"frmUnfinishedRuns", {}, "cmdLater"}});
  EXPECT_TRUE(runs_.ShowUnfinished());
  InDialogs({{"frmUnfinishedRuns", {}, "cmdForget"}, {"frmUnfinishedRuns", {}, "cmdForget"}});
  EXPECT_TRUE(runs_.ShowUnfinished());
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("No letter and no log is removed."));
  EXPECT_EQ(platform_.dialogs.answers_left(), 0U);
  EXPECT_FALSE(runs_.ShowUnfinished());
  EXPECT_TRUE(Exists("Mei Huang/Notice.rtf"));
}

}  // namespace
}  // namespace tenora
