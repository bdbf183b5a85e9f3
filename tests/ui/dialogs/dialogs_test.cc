#include <gmock/gmock.h>

#include <QListWidget>

#include "platform/runtime/files.h"
#include "ui/dialogs/dialogs_fixture.h"
#include "ui/dialogs/frm_future_date.h"
#include "ui/dialogs/frm_generate.h"
#include "ui/dialogs/frm_printer.h"
#include "ui/dialogs/frm_receipt.h"
#include "ui/dialogs/frm_spell_check.h"
#include "ui/dialogs/margin_text.h"
#include "ui/dialogs/recipient_list.h"

namespace tenora {
namespace {

using testing::ElementsAre;

TEST(MarginText, GoesToTwipsAndBack) {
  const struct {
    MarginUnit unit;
    double twips;
    std::string shown, typed;
    int stored;
  } cases[] = {
      {MarginUnit::kCentimetres, 567, "1", "1", 567},
      {MarginUnit::kCentimetres, 1417.5, "2.5", "2.5", 1418},
      {MarginUnit::kCentimetres, 1418, "2.5", "2.50", 1418},
      {MarginUnit::kInches, 1440, "1", "1.", 1440},
      {MarginUnit::kInches, 1000, "0.69", ".69", 994},
      {MarginUnit::kCentimetres, 0, "0", "", 0},
      {MarginUnit::kCentimetres, 0, "0", ".", 0},
      {MarginUnit::kCentimetres, 283.5, "0.5", "0.5", 284},  // halves to even
      {MarginUnit::kCentimetres, 850.5, "1.5", "1.5", 850},
      {MarginUnit::kInches, 2147483647, "1491308.09", "99999999", 2147483647},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(MarginText(c.twips, c.unit), c.shown);
    EXPECT_EQ(WholeTwips(TwipsOfText(c.typed, c.unit)), c.stored) << c.typed;
  }
}

TEST_F(DialogsTest, FutureDateWritesItsCodeOverTheSelection) {
  const struct {
    const char* typed;
    int unit;
    const char* text;
  } cases[] = {{"1x4-.", 0, "on <<FutureDate:14:Days>>."},
               {"", 2, "on <<FutureDate::Months>>."},
               {"07", 3, "on <<FutureDate:07:Years>>."}};
  for (const auto& c : cases) {
    RichTextBox editor;
    editor.SetText("on HERE.");
    editor.Select(3, 4);
    frmFutureDate dialog(editor);
    dialog.show();
    EXPECT_EQ(Find<QComboBox>(dialog, "cboPeriod")->currentText(), "Days");
    Type(dialog, "txtNumber", c.typed);
    Find<QComboBox>(dialog, "cboPeriod")->setCurrentIndex(c.unit);
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_EQ(editor.Text(), c.text);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
  }
  RichTextBox editor;
  frmFutureDate dialog(editor);
  QTest::keyClick(&dialog, Qt::Key_Escape);
  EXPECT_EQ(editor.Text(), "");
}

TEST_F(DialogsTest, PrinterTakesMarginsInEitherUnit) {
  Store("Mail\\PrinterSetup", "TopMargin", "1000");
  frmPrinter dialog(session_.settings, machine_.dialogs);
  EXPECT_EQ(Text(dialog, "txtTop"), "1.76");
  Type(dialog, "txtLeft", "a2.5.0-");
  EXPECT_EQ(Text(dialog, "txtLeft"), "2.50");
  Press(dialog, "optInch");
  EXPECT_EQ(Text(dialog, "txtLeft"), "0.98");
  Type(dialog, "txtRight", "1");
  Press(dialog, "cmdOK");
  // What was only looked at in the other unit keeps its value.
  EXPECT_EQ(Stored("Mail\\PrinterSetup", "TopMargin"), "1000");
  EXPECT_EQ(Stored("Mail\\PrinterSetup", "LeftMargin"), "1418");
  EXPECT_EQ(Stored("Mail\\PrinterSetup", "RightMargin"), "1440");
  EXPECT_EQ(Stored("Mail\\PrinterSetup", "CM"), "False");
  frmPrinter again(session_.settings, machine_.dialogs);
  EXPECT_TRUE(Find<QRadioButton>(again, "optInch")->isChecked());
  Store("Mail\\PrinterSetup", "TopMargin", "wide");
  frmPrinter broken(session_.settings, machine_.dialogs);
  EXPECT_THAT(machine_.dialogs.Texts(), ElementsAre(testing::StartsWith("13 - ")));
}

TEST_F(DialogsTest, ReceiptWantsSomewhereToGo) {
  using Kind = frmReceipt::DocumentKind;
  Store("Receipt", "DefaultFormat", "Gone");
  frmReceipt dialog(Kind::kReceipt, session_.settings, machine_.dialogs, {"Receipt"},
                    kApplicationTitle);
  EXPECT_EQ(Find<QPushButton>(dialog, "cmdOK")->text(), "&Print");
  EXPECT_EQ(Find<QComboBox>(dialog, "cboDefaultFormat")->currentText(), "Gone");
  Press(dialog, "chkPrint");
  EXPECT_FALSE(Find<QCheckBox>(dialog, "chkSaveCopy")->isEnabled());
  dialog.show();
  Press(dialog, "cmdOK");
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_THAT(machine_.dialogs.Texts(),
              ElementsAre("You need to output to either printer or email or both"));
  EXPECT_EQ(Stored("Receipt", "Print"), "not stored");
  Press(dialog, "chkEmail");
  Press(dialog, "chkPdfAttachment");
  Press(dialog, "cmdOK");
  EXPECT_EQ(Stored("Receipt", "Print") + Stored("Receipt", "Email") + Stored("Receipt", "Prompt") +
                Stored("Receipt", "PdfAttachment") + Stored("Receipt", "SaveCopy"),
            "01110");
  EXPECT_EQ(Stored("Receipt", "DefaultFormat"), "Gone");

  frmReceipt letters(Kind::kInspectionLetter, session_.settings, machine_.dialogs, {"Receipt"},
                     "Property Manager");
  EXPECT_EQ(Find<QLabel>(letters, "lblDefaultFormat")->text().remove('&'), "Default Letter Format");
  EXPECT_EQ(letters.findChild<QCheckBox*>("chkSaveCopy"), nullptr);
  EXPECT_NE(Find<QPushButton>(letters, "cmdOK")->text(), "&Print");
  Press(letters, "cmdOK");
  EXPECT_EQ(Stored("InspectionLetter", "SaveCopy"), "not stored");
}

TEST_F(DialogsTest, SpellCheckGivesWhatWasTypedChosenOrNothing) {
  const auto speller = spelling::Speller::Open(
      {.language = "en_GB", .user_words = machine_.folder / "words.txt", .folders = {}});
  const auto run = [&](const char* typed, bool choose, const char* button) {
    frmSpellCheck dialog("recieve", *speller, machine_.dialogs);
    EXPECT_EQ(Text(dialog, "txtBadWord"), "recieve");
    auto* list = Find<QListWidget>(dialog, "lstSuggestions");
    if (choose) list->setCurrentItem(list->findItems("receive", Qt::MatchExactly).at(0));
    // As when the keyboard passes over the list.
    if (!choose) list->setCurrentRow(0, QItemSelectionModel::NoUpdate);
    Type(dialog, "txtReplace", typed);
    if (button == nullptr) {
      QTest::keyClick(&dialog, Qt::Key_Escape);
    } else {
      Press(dialog, button);
    }
    return dialog.Chosen();
  };
  EXPECT_EQ(run("  got ", false, "cmdChange").replacement, "got");
  EXPECT_EQ(run("", true, "cmdChange").replacement, "receive");
  EXPECT_EQ(run("  ", true, "cmdChange").replacement, "receive");
  EXPECT_EQ(run("", false, "cmdChange").replacement, "recieve");
  EXPECT_EQ(run("typed", true, "cmdIgnore").replacement, "");
  EXPECT_FALSE(run("", false, "cmdIgnore").stop);
  EXPECT_TRUE(run("", false, nullptr).stop);
  EXPECT_TRUE(speller->Misspelt("recieve"));
  run("", false, "cmdAdd");
  EXPECT_FALSE(speller->Misspelt("recieve"));
  EXPECT_EQ(ReadWholeFile(machine_.folder / "words.txt"), "recieve\n");
}

class GenerateTest : public DialogsTest {
 protected:
  GenerateTest() {
    const struct {
      const char *name, *code, *property, *email;
      bool closed;
    } tenants[] = {{"Ann Lee", "T1", "P1", "ann@x.test", false},
                   {"Old Ben", "T2", "P2", "", true},
                   {"Cat Lee", "T3", "P3", "", false},
                   {"Ann Lee", "T4", "P4", "a4@x.test", false}};
    for (const auto& t : tenants) {
      TenantRecord record;
      record.KeyName = t.name;
      record.Reference = t.code;
      record.PropertyCode = t.property;
      record.Email = t.email;
      record.Closed = t.closed;
      session_.caches.Tenants.push_back(record);
    }
  }
  static std::string Count(QWidget& dialog) {
    return Find<QLabel>(dialog, "lblCount")->text().toStdString();
  }
};

TEST_F(GenerateTest, KeepsTicksThroughSearchAndFilters) {
  frmGenerate dialog(session_, "Templates", "Notice");
  dialog.show();
  Press(dialog, "cmdGenerate");
  EXPECT_THAT(machine_.dialogs.Texts(), ElementsAre("Nothing selected"));
  EXPECT_TRUE(dialog.isVisible());
  QTest::keyClicks(Find<QLineEdit>(dialog, "txtSearch"), "lee");
  auto* list = Find<RecipientView>(dialog, "lstMultiSelect");
  EXPECT_EQ(list->model()->rowCount(), 3);
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                    list->visualRect(list->model()->index(2, 0)).center());
  EXPECT_EQ(Count(dialog), "1 of 3 selected");
  Press(dialog, "chkClosed");
  EXPECT_THAT(Count(dialog), testing::StartsWith("1 of 4 selected"));
  Find<QLineEdit>(dialog, "txtSearch")->setText("ben");
  Press(dialog, "cmdSelectAll");
  Press(dialog, "cmdGenerate");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_THAT(dialog.Request().recipients,
              ElementsAre(Recipient{"Ann Lee", "T4"}, Recipient{"Old Ben", "T2"}));
}

TEST_F(GenerateTest, OffersTheEMailFilterWithEMailOnly) {
  frmGenerate dialog(session_, "Templates", "Notice");
  auto* exclude = Find<QCheckBox>(dialog, "ExcludeNoEmailAddress");
  exclude->setChecked(true);
  EXPECT_FALSE(exclude->isEnabled());
  EXPECT_EQ(Count(dialog), "0 of 3 selected");
  Press(dialog, "optEmail");
  EXPECT_TRUE(exclude->isEnabled());
  EXPECT_EQ(Count(dialog), "0 of 2 selected");
  Press(dialog, "cmdInvert");
  Type(dialog, "txtSubject", "Your rent");
  EXPECT_EQ(dialog.Request().destination, Destination::kEmail);
  EXPECT_EQ(dialog.Request().subject, "Your rent");
  dialog.SetDestination(Destination::kPrinter);
  EXPECT_EQ(Count(dialog), "2 of 3 selected");
  auto* list = Find<RecipientView>(dialog, "lstMultiSelect");
  list->selectAll();
  list->setCurrentIndex(list->model()->index(1, 0));
  list->selectAll();
  QTest::keyClick(list, Qt::Key_Space);
  EXPECT_EQ(Count(dialog), "3 of 3 selected");
}

}  // namespace
}  // namespace tenora
