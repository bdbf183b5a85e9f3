#include "ui/window/letter/letter_spelling.h"

#include <QContextMenuEvent>
#include <QTest>
#include <QTimer>

#include "ui/editor/editor_actions.h"
#include "window_fixture.h"

namespace tenora {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

class LetterSpellingTest : public WindowPartsTest {
 protected:
  LetterSpellingTest() {
    spelling_.Load();
    SaveTemplate("Letter", "I recieve <<Recieve>> the qwzx rent");
    letters_.Open(Entry("Templates/Letter"));
    actions_.SetEditor(&Editor());
  }
  LetterEditor& Editor() { return letters_.Active()->editor(); }
  std::string Text() { return letters_.Active()->letter().rtfLetter.Text(); }
  // The menu's entries for the word at this place of the letter; `choose`, where one is called so,
  // is chosen by the keyboard.
  std::vector<std::string> Menu(int at, const QString& choose = {}) {
    QTextCursor cursor = Editor().textCursor();
    cursor.setPosition(at);
    Editor().setTextCursor(cursor);
    std::vector<std::string> entries;
    QTimer::singleShot(0, [&] {
      auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      ASSERT_NE(menu, nullptr);
      for (QAction* action : menu->actions()) {
        entries.push_back(action->text().remove('&').toStdString());
        if (action->text().remove('&') == choose) menu->setActiveAction(action);
      }
      QTest::keyClick(menu, choose.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
    });
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(&Editor(), &event);
    return entries;
  }

  EditorActions actions_;
};

TEST_F(LetterSpellingTest, OffersWhatAMisspeltWordMayMeanInItsMenu) {
  EXPECT_THAT(Menu(0), Not(Contains("Ignore All")));   // a word
  EXPECT_THAT(Menu(15), Not(Contains("Ignore All")));  // in a merge code
  EXPECT_THAT(Menu(5, "receive"), Contains("Add to Dictionary"));
  EXPECT_EQ(Text(), "I receive <<Recieve>> the qwzx rent");
  EXPECT_THAT(Menu(5), Not(Contains("Ignore All")));
  Editor().Undo();
  EXPECT_EQ(Text(), "I recieve <<Recieve>> the qwzx rent");
  letters_.Active()->letter().members().Changed = false;
}

TEST_F(LetterSpellingTest, KeepsIgnoringAWordAndAddsOneForGood) {
  EXPECT_THAT(Menu(28, "Ignore All"), Contains("Ignore All"));
  EXPECT_THAT(Menu(28), Not(Contains("Ignore All")));
  EXPECT_THAT(Menu(3, "Add to Dictionary"), Contains("receive"));
  spelling_.Load();  // as after a change of the settings
  EXPECT_THAT(Menu(28), Not(Contains("Ignore All")));
  EXPECT_THAT(Menu(3), Not(Contains("receive")));
  const auto user_settings = platform_.Parts().registry.FileOf(registry::Hive::kCurrentUser);
  EXPECT_THAT(ReadWholeFile(user_settings.parent_path() / "words.txt"), HasSubstr("recieve"));
}

}  // namespace
}  // namespace tenora
