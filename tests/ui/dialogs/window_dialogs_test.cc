#include "platform/dialogs/window_dialogs.h"

#include <QDialogButtonBox>
#include <QListWidget>
#include <QMessageBox>
#include <QSpinBox>
#include <QTimer>

#include "platform/dialogs/file_filter.h"
#include "platform/dialogs/print_box.h"
#include "ui/dialogs/dialogs_fixture.h"

namespace tenora {
namespace {

// Presses a key in the modal box once it is up; `look` sees the box before.
template <typename Look>
void WhenUp(Qt::Key key, Look&& look) {
  QTimer::singleShot(0, [key, look] {
    QWidget* box = QApplication::activeModalWidget();
    ASSERT_NE(box, nullptr);
    look(*box);
    QTest::keyClick(box->focusWidget() == nullptr ? box : box->focusWidget(), key);
  });
}

TEST_F(DialogsTest, BoxesAnswerEnterWithTheDefaultAndEscapeWithNone) {
  WindowDialogs dialogs;
  const struct {
    Buttons buttons;
    Answer default_answer;
    Qt::Key key;
    Answer answer;
  } cases[] = {
      {Buttons::kOk, Answer::kOk, Qt::Key_Escape, Answer::kOk},
      {Buttons::kOkCancel, Answer::kCancel, Qt::Key_Return, Answer::kCancel},
      {Buttons::kOkCancel, Answer::kOk, Qt::Key_Escape, Answer::kCancel},
      {Buttons::kYesNo, Answer::kNo, Qt::Key_Return, Answer::kNo},
      {Buttons::kYesNo, Answer::kYes, Qt::Key_Return, Answer::kYes},
      {Buttons::kYesNo, Answer::kYes, Qt::Key_Escape, Answer::kCancel},
      {Buttons::kYesNoCancel, Answer::kYes, Qt::Key_Escape, Answer::kCancel},
      {Buttons::kYesNoCancel, Answer::kYes, Qt::Key_N, Answer::kNo},
  };
  for (const auto& c : cases) {
    WhenUp(c.key, [](QWidget& box) {
      auto& message = dynamic_cast<QMessageBox&>(box);
      EXPECT_EQ(message.text(), "<b>a</b>\nb");
      EXPECT_EQ(message.textFormat(), Qt::PlainText);
      EXPECT_EQ(message.icon(), QMessageBox::Question);
    });
    EXPECT_EQ(dialogs.Show({.text = "<b>a</b>\r\nb",
                            .buttons = c.buttons,
                            .icon = Icon::kQuestion,
                            .default_answer = c.default_answer}),
              c.answer);
  }
  for (const auto& [key, answer] : {std::pair(Qt::Key_B, Answer::kOther),
                                    {Qt::Key_Return, Answer::kOk},
                                    {Qt::Key_Escape, Answer::kOk}}) {
    WhenUp(key, [](QWidget&) {});
    EXPECT_EQ(dialogs.Show({.text = "missing", .other_button = "&Browse…"}), answer);
  }
  WhenUp(Qt::Key_Return, [](QWidget& box) {
    EXPECT_EQ(box.windowTitle(), "Find text");
    QTest::keyClicks(Find<QLineEdit>(box, "txtAnswer"), "new");
  });
  EXPECT_EQ(dialogs.AskText("Enter", "Find text", "old"), "new");
  WhenUp(Qt::Key_Escape, [](QWidget&) {});
  EXPECT_EQ(dialogs.AskText("Enter", "Find text", "old"), std::nullopt);
  WhenUp(Qt::Key_Return,
         [](QWidget& box) { QTest::keyClick(Find<QListWidget>(box, "lstItems"), Qt::Key_Down); });
  EXPECT_EQ(dialogs.Choose("Print", {"a", "b", "c"}, 1), 2u);
  // Enter takes what nobody has chosen neither in the list nor by its button.
  WhenUp(Qt::Key_Escape, [](QWidget& box) {
    auto* list = Find<QListWidget>(box, "lstItems");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Return);
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_TRUE(box.isVisible());
  });
  EXPECT_EQ(dialogs.Choose("Print", {"a", "b"}, Dialogs::kNoItem), std::nullopt);
  WhenUp(Qt::Key_Return, [](QWidget& box) {
    auto* list = Find<QListWidget>(box, "lstItems");
    const QPoint place = list->visualItemRect(list->item(1)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
  });
  EXPECT_EQ(dialogs.Choose("Print", {"a", "b"}, Dialogs::kNoItem), 1u);
  WhenUp(Qt::Key_Escape, [](QWidget&) {});
  EXPECT_EQ(dialogs.Choose("Print", {}, 0), std::nullopt);
}

// What a letter's question in a run is answered with, by what is done in its box; "cmdBack" and the
// like are the buttons of the box that Escape opens.
TEST_F(DialogsTest, ALettersQuestionTellsAnEmptyAnswerFromTheEndOfTheRun) {
  using Way = LetterAnswer::Way;
  struct Case {
    const char* progress;
    std::vector<const char*> pressed;
    Way way;
    bool for_all;
  };
  const Case cases[] = {
      {"3 of 33 letters", {"Enter"}, Way::kText, false},
      {"3 of 33 letters", {"chkForAll", "Enter"}, Way::kText, true},
      {"3 of 33 letters", {"chkForAll", "cmdStopRun"}, Way::kStopRun, false},
      {"3 of 33 letters", {"Escape", "cmdLeaveEmpty"}, Way::kNone, false},
      {"3 of 33 letters", {"cmdCancel", "cmdStop"}, Way::kStopRun, false},
      {"3 of 33 letters", {"Escape", "cmdBack", "chkForAll", "Enter"}, Way::kText, true},
      {"3 of 33 letters", {"Escape", "Escape", "Enter"}, Way::kText, false},
      {"", {"Enter"}, Way::kText, false},
      {"", {"Escape"}, Way::kNone, false},
  };
  WindowDialogs dialogs;
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.pressed));
    std::size_t next = 0;
    // Each step in the box that is up then: the one of Escape stands over the question.
    std::function<void()> step = [&] {
      QWidget* box = QApplication::activeModalWidget();
      ASSERT_NE(box, nullptr);
      if (next == 0) {
        EXPECT_EQ(box->findChild<QWidget*>("cmdStopRun") != nullptr, *c.progress != '\0');
        QTest::keyClicks(Find<QLineEdit>(*box, "txtAnswer"), "Ann");
      }
      const std::string name = c.pressed[next++];
      if (next < c.pressed.size()) QTimer::singleShot(0, step);
      if (name == "Enter") return QTest::keyClick(box->focusWidget(), Qt::Key_Return);
      if (name == "Escape") return QTest::keyClick(box, Qt::Key_Escape);
      Press(*box, name.c_str());
    };
    QTimer::singleShot(0, step);
    const LetterAnswer answer =
        dialogs.AskForLetter({.prompt = "Who inspects <b>it</b>?", .progress = c.progress});
    EXPECT_EQ(next, c.pressed.size());
    EXPECT_EQ(answer.way, c.way);
    EXPECT_EQ(answer.text, c.way == Way::kText ? "Ann" : "");
    EXPECT_EQ(answer.for_all, c.for_all);
  }
}

TEST_F(DialogsTest, ThePrintBoxTakesPagesCopiesAndThePrintersOwnSettings) {
  const std::vector<OfferedPrinter> printers{
      {"Print to PDF", false, {}},
      {"Office", true, [] {
         return std::vector<PrinterSetting>{
             {"media-source", "Paper tray", {{"upper", "Upper"}, {"lower", "Lower"}}, "Upper"},
             {"media-type", "Kind of paper", {{"plain", "Plain"}, {"thick", "Thick"}}, ""}};
       }}};
  PrintChoice shown;
  shown.pages.emplace();
  shown.printer = 1;
  shown.page_count = 4;
  PrintBox box(printers, shown, nullptr);
  box.show();
  auto* print = box.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
  const auto choose_tray = [&](int row) {
    QTimer::singleShot(0, [row] {
      QWidget* settings = QApplication::activeModalWidget();
      ASSERT_NE(settings, nullptr);
      EXPECT_EQ(settings->windowTitle(), "Properties of Office");
      Find<QComboBox>(*settings, "media-source")->setCurrentIndex(row);
      QTest::keyClick(settings, Qt::Key_Return);
    });
    Press(box, "cmdProperties");
  };
  EXPECT_TRUE(box.Choice().pages->empty());
  auto* pages = Find<QLineEdit>(box, "txtPages");
  const struct {
    const char* typed;
    bool printable;
  } cases[] = {{"2-", true}, {"2-x", false}, {"3-2", false}, {"2-3, 5", false}, {"1, 3-4", true}};
  for (const auto& c : cases) {
    pages->clear();
    QTest::keyClicks(pages, c.typed);
    EXPECT_EQ(print->isEnabled(), c.printable) << c.typed;
    EXPECT_EQ(Find<QLabel>(box, "lblPagesFault")->text().isEmpty(), c.printable) << c.typed;
  }
  EXPECT_EQ(box.Choice().pages, (std::vector<PageRange>{{1, 1}, {3, 4}}));
  pages->setText("99");
  Find<QComboBox>(box, "cboOrientation")->setCurrentIndex(1);
  EXPECT_TRUE(print->isEnabled()) << "nobody has counted these pages";
  Find<QComboBox>(box, "cboOrientation")->setCurrentIndex(0);
  EXPECT_EQ(Find<QLabel>(box, "lblPagesFault")->text(), "The letter has 4 pages.");
  pages->setText("1, 3-4");
  EXPECT_FALSE(Find<QCheckBox>(box, "chkCollate")->isEnabled()) << "one copy";
  Find<QSpinBox>(box, "txtCopies")->setValue(2);
  Find<QCheckBox>(box, "chkCollate")->setChecked(false);
  choose_tray(2);
  EXPECT_EQ(box.Choice().settings, (ChosenSettings{{"media-source", "lower"}}));
  EXPECT_FALSE(box.Choice().collate);
  EXPECT_EQ(box.Choice().copies, 2);
  choose_tray(0);
  EXPECT_EQ(box.Choice().settings, ChosenSettings());
  Find<QListWidget>(box, "lstItems")->setCurrentRow(0);
  EXPECT_FALSE(Find<QPushButton>(box, "cmdProperties")->isEnabled());
  EXPECT_EQ(box.Choice().copies, 1);
  EXPECT_EQ(box.Choice().pages->size(), 2U);
  shown.pages = {{2, 3}, {5, 5}};
  PrintBox again(printers, shown, nullptr);
  EXPECT_EQ(Find<QLineEdit>(again, "txtPages")->text(), "2-3, 5");
  EXPECT_EQ(again.Choice().pages, shown.pages);
  EXPECT_FALSE(Find<QRadioButton>(again, "optAllPages")->isChecked());
  shown.pages.reset();
  PrintBox run(printers, shown, nullptr);
  run.show();
  EXPECT_FALSE(Find<QLineEdit>(run, "txtPages")->isVisible());
  EXPECT_FALSE(run.Choice().pages.has_value());
}

TEST(FileFilter, IsTakenApartAsItStands) {
  using Filters = std::vector<FileFilter>;
  EXPECT_EQ(ParseFileFilter("All Image files|*.bmp;*.dib;"),
            (Filters{{"All Image files", {"*.bmp", "*.dib"}}}));
  EXPECT_EQ(ParseFileFilter("Excel Files|*xls"), (Filters{{"Excel Files", {"*xls"}}}));
  EXPECT_EQ(ParseFileFilter("A|*.a|B|;|C"), (Filters{{"A", {"*.a"}}}));
  EXPECT_EQ(ParseFileFilter(""), Filters{});
}

}  // namespace
}  // namespace tenora
