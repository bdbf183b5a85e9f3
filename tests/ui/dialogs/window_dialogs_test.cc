#include "platform/dialogs/window_dialogs.h"

#include <QListWidget>
#include <QMessageBox>
#include <QTimer>

#include "platform/dialogs/file_filter.h"
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
