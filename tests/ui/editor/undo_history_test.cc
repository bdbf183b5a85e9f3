#include "ui/editor/document/undo_history.h"

#include <QTextBlockFormat>
#include <QTextCursor>
#include <string>
#include <vector>

#include "editor_fixture.h"

namespace tenora {
namespace {

class UndoHistoryTest : public PlainControlTest {
 protected:
  // As zooming does.
  void ChangeLooks() {
    history.ChangeLooks([&] {
      QTextCursor cursor(control.document());
      QTextBlockFormat format = cursor.blockFormat();
      format.setTextIndent(format.textIndent() + 1);
      cursor.setBlockFormat(format);
    });
  }

  UndoHistory history{letter};
};

TEST_F(UndoHistoryTest, LeavesAnUntouchedLetterWithoutSteps) {
  Open("\\pard\\f0\\fs24 ab");
  const std::string before = box.TextRTF();
  bool changed = false;
  box.OnChange([&] { changed = true; });
  ChangeLooks();
  EXPECT_FALSE(control.document()->isUndoAvailable());
  EXPECT_FALSE(changed);
  EXPECT_EQ(box.TextRTF(), before);
}

TEST_F(UndoHistoryTest, SkipsChangesOfTheLooks) {
  // Steps: i inserts a character, r replaces the first in an edit block, l changes the looks.
  struct Case {
    const char* steps;
    std::vector<const char*> undone;  // the text after each Undo
  };
  const Case cases[] = {{"i", {"ab"}},
                        {"il", {"ab"}},
                        {"ill", {"ab"}},
                        {"ilil", {"iab", "ab"}},
                        {"rl", {"ab"}},
                        {"rllr", {"rrb", "ab"}},
                        {"irlil", {"rrab", "iab", "ab"}}};
  for (const Case& c : cases) {
    Open("\\pard\\f0\\fs24 ab");
    for (const char* step = c.steps; *step != 0; ++step) {
      if (*step == 'l') ChangeLooks();
      if (*step == 'i') Insert(0, "i");
      if (*step != 'r') continue;
      QTextCursor cursor(control.document());
      cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
      cursor.insertText(QStringLiteral("rr"));
    }
    const std::string last = box.Text();
    for (const char* text : c.undone) {
      history.Undo();
      EXPECT_EQ(box.Text(), text) << c.steps;
    }
    for (std::size_t i = 0; i < c.undone.size(); ++i) history.Redo();
    EXPECT_EQ(box.Text(), last) << c.steps;
  }
}

class ZoomHistoryTest : public EditorTest {};

TEST_F(ZoomHistoryTest, KeepsTheWritersStepsWhileZooming) {
  Open("\\pard\\fi300\\ri200\\f0\\fs24 ab");
  Type("x");
  editor.paper().SetZoom(1.5);
  editor.Undo();
  EXPECT_EQ(box.Text(), "ab");
  editor.paper().SetZoom(2);
  editor.Redo();
  EXPECT_EQ(box.Text(), "xab");
}

}  // namespace
}  // namespace tenora
