#include <gmock/gmock.h>

#include <QPlainTextEdit>
#include <QTreeWidget>

#include "ui/dialogs/dialogs_fixture.h"
#include "ui/dialogs/frm_run_report.h"
#include "ui/dialogs/frm_unfinished_runs.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Choice = frmRunReport::Choice;
using Result = LetterReport::Result;

LetterReport Report(std::size_t number, Result result) {
  LetterReport report;
  report.number = number;
  report.recipient = {"R" + std::to_string(number), "T" + std::to_string(number)};
  report.result = result;
  if (result != Result::kFailed) report.file = "/data/R" + std::to_string(number) + "/Notice.rtf";
  report.problem = "reason " + std::to_string(number);
  return report;
}

class RunReportTest : public DialogsTest {
 protected:
  RunReportTest() {
    summary_.asked = 9;
    summary_.done = 2;
    summary_.held = {Report(3, Result::kHeld), Report(4, Result::kHeld)};
    summary_.no_address = {Report(5, Result::kNoAddress), Report(6, Result::kNoAddress)};
    summary_.in_doubt = {Report(7, Result::kInDoubt)};
    summary_.failed = {Report(8, Result::kFailed)};
  }
  static QTreeWidgetItem* Item(QWidget& dialog, const QString& name) {
    const auto found = Find<QTreeWidget>(dialog, "lstLetters")
                           ->findItems(name, Qt::MatchStartsWith | Qt::MatchRecursive, 0);
    if (found.size() != 1) throw std::runtime_error("not one item " + name.toStdString());
    return found.front();
  }
  static std::vector<std::size_t> Numbers(const frmRunReport& dialog) {
    std::vector<std::size_t> numbers;
    for (const LetterReport& report : dialog.chosen()) numbers.push_back(report.number);
    return numbers;
  }
  GenerationSummary summary_;
};

// Each button takes the ticked letters that it is about, and nothing can be done without any.
TEST_F(RunReportTest, DoesOnlyWhatIsAskedWithTheTickedLettersOfItsKind) {
  struct Case {
    std::vector<QString> ticked;
    const char* button;
    Choice choice;
    std::vector<std::size_t> chosen;
  };
  const Case cases[] = {
      {{"R4", "R5", "R7"}, "cmdOpen", Choice::kOpen, {4, 5, 7}},
      {{"R4", "R5", "R7"}, "cmdSendHeld", Choice::kSendHeld, {4}},
      {{"R4", "2 have no"}, "cmdPrint", Choice::kPrint, {5, 6}},
      {{"Held back"}, "cmdSendHeld", Choice::kSendHeld, {3, 4}},
      {{"R4"}, "cmdPrint", Choice::kLeave, {}},
      {{"R5", "R7"}, "cmdSendHeld", Choice::kLeave, {}},
      {{}, "cmdOpen", Choice::kLeave, {}},
      {{}, "cmdMakeMissing", Choice::kMakeMissing, {}},
      {{"R4"}, "cmdLeave", Choice::kLeave, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.button);
    frmRunReport dialog(summary_, Destination::kEmail);
    for (const QString& name : c.ticked) Item(dialog, name)->setCheckState(0, Qt::Checked);
    Press(dialog, c.button);
    EXPECT_EQ(dialog.choice(), c.choice);
    EXPECT_EQ(Numbers(dialog), c.chosen);
  }
}

TEST_F(RunReportTest, NamesEveryLetterWithItsReasonAndWhatIsLeftToDo) {
  frmRunReport dialog(summary_, Destination::kEmail);
  EXPECT_EQ(Find<QLabel>(dialog, "lblSummary")->text(), "2 of 9 letters were e-mailed.");
  auto* list = Find<QTreeWidget>(dialog, "lstLetters");
  for (const char* name : {"R3 (T3)", "R5 (T5)", "R7 (T7)", "R8 (T8)"}) {
    QTreeWidgetItem* item = Item(dialog, name);
    list->setCurrentItem(item);
    EXPECT_EQ(item->text(1).toStdString(), "reason " + std::string(name + 1, 1));
    EXPECT_THAT(Find<QPlainTextEdit>(dialog, "txtReason")->toPlainText().toStdString(),
                HasSubstr(item->text(1).toStdString()));
  }
  EXPECT_EQ(Item(dialog, "1 not begun")->parent(), Item(dialog, "R8")->parent());
  EXPECT_EQ(Find<QLabel>(dialog, "lblMissing")->text(), "Make the missing letters now?");
}

TEST_F(RunReportTest, OffersNoMoreThanThereIsToDo) {
  GenerationSummary held;
  held.asked = 1;
  held.held = {Report(1, Result::kHeld)};
  GenerationSummary in_doubt;
  in_doubt.asked = 1;
  in_doubt.in_doubt = {Report(1, Result::kInDoubt)};
  struct Case {
    const GenerationSummary& summary;
    Destination destination;
    std::vector<std::string> offered;
  };
  for (const Case& c : {Case{held, Destination::kPrinter, {"&Open", "Print &Anyway", "&Leave"}},
                        Case{held, Destination::kFolder, {"&Open", "Keep as It &Is", "&Leave"}},
                        Case{in_doubt, Destination::kEmail, {"&Open", "&Leave"}}}) {
    frmRunReport dialog(c.summary, c.destination);
    std::vector<std::string> offered;
    for (const QPushButton* button : dialog.findChildren<QPushButton*>()) {
      if (button->isHidden()) continue;
      offered.push_back(button->text().toStdString());
      // The only letter is ticked.
      EXPECT_TRUE(button->isEnabled()) << offered.back();
    }
    EXPECT_EQ(offered, c.offered);
    EXPECT_EQ(dialog.findChild<QLabel*>("lblMissing"), nullptr);
  }
}

TEST_F(RunReportTest, OpensTheLetterThatIsActivatedAndIsLeftByEscape) {
  frmRunReport dialog(summary_, Destination::kEmail);
  dialog.show();
  auto* list = Find<QTreeWidget>(dialog, "lstLetters");
  list->setCurrentItem(Item(dialog, "R8"));  // has no file
  emit list->itemActivated(list->currentItem(), 0);
  EXPECT_TRUE(dialog.isVisible());
  emit list->itemActivated(Item(dialog, "R7"), 0);
  EXPECT_EQ(dialog.choice(), Choice::kOpen);
  EXPECT_THAT(Numbers(dialog), ElementsAre(7));
  frmRunReport left(summary_, Destination::kEmail);
  left.show();
  QTest::keyClick(&left, Qt::Key_Escape);
  EXPECT_FALSE(left.isVisible());
  EXPECT_EQ(left.choice(), Choice::kLeave);
}

TEST_F(DialogsTest, UnfinishedRunsAreShownWithTheirCountsAndChosenByTheirLine) {
  std::vector<UnfinishedRun> runs(2);
  runs[0].log = "/data/Letters a.log";
  runs[0].problem = "/data/Letters a.log: line 3 is damaged";
  runs[1].started = "2026-11-21 09:30:00";
  runs[1].request.template_name = "Rent review";
  runs[1].request.destination = Destination::kEmail;
  GenerationSummary& summary = runs[1].summary;
  summary.asked = 33;
  summary.done = 20;
  summary.held = {Report(1, Result::kHeld), Report(2, Result::kHeld)};
  summary.no_address = {Report(3, Result::kNoAddress)};
  summary.in_doubt = {Report(4, Result::kInDoubt)};
  summary.failed = {Report(5, Result::kFailed)};
  summary.merged.problems = {"The PDF of all letters is not finished: /data/Letters b.pdf"};
  const test::PlainLocale locale;
  frmUnfinishedRuns dialog(locale, runs);
  dialog.show();
  auto* list = Find<QTreeWidget>(dialog, "lstRuns");
  // A log that cannot be read is not resumed.
  EXPECT_FALSE(Find<QPushButton>(dialog, "cmdResume")->isEnabled());
  EXPECT_EQ(list->topLevelItem(0)->text(0), "Letters a.log: line 3 is damaged");
  QTest::keyClick(list, Qt::Key_Down);
  QStringList shown;
  for (int column = 0; column < list->columnCount(); ++column) {
    shown << list->currentItem()->text(column);
  }
  EXPECT_EQ(shown, QStringList({"21/11/2026 09:30 AM", "Rent review", "E-mail", "33", "20",
                                "9, PDF", "1", "2", "1"}));
  Press(dialog, "cmdResume");
  EXPECT_EQ(dialog.choice(), frmUnfinishedRuns::Choice::kResume);
  EXPECT_EQ(&dialog.chosen(), &runs[1]);
}

}  // namespace
}  // namespace tenora
