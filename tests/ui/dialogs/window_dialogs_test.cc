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
