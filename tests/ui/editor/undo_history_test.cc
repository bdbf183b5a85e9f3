#include "ui/editor/document/undo_history.h"

#include <QClipboard>
#include <QMimeData>
#include <QSignalSpy>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <functional>
#include <string>
#include <vector>

#include "editor_fixture.h"

namespace tenora {
namespace {

void PasteRtf(LetterEditor& editor, const std::string& body) {
  auto* data = new QMimeData;
  data->setData("text/rtf", QByteArray::fromStdString(LetterSource(body)));
  QGuiApplication::clipboard()->setMimeData(data);
  editor.paste();
}

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

// What is done to an empty letter after which it is undone: all of the letter must be back, and
// known to be as it was saved.
TEST_F(EditorTest, UndoBringsBackTheSavedLetterAndTellsSo) {
  const struct {
    const char* what;
    std::string body;
    std::function<void()> edit;
    bool back;
  } cases[] = {
      {"paste into an empty letter", "\\pard\\f0\\fs24 ",
       [&] { PasteRtf(editor, "\\pard\\qc\\f1\\b\\fs60 Big\\par Small"); }, true},
      {"paste before the text", "\\pard\\f0\\fs24 one\\par two",
       [&] { PasteRtf(editor, "\\pard\\qc\\f1\\b\\fs60 Big\\par Small"); }, true},
      {"paste of a table", "\\pard\\f0\\fs24 ", [&] { PasteRtf(editor, kTable); }, true},
      {"paste over everything", "\\pard\\f0\\fs24 one\\par two",
       [&] {
         editor.selectAll();
         PasteRtf(editor, "\\pard\\qr\\f1\\fs60 Big");
       },
       true},
      {"typing and zooming", "\\pard\\fi300\\f0\\fs24 one",
       [&] {
         QTest::keyClicks(&editor, "x");
         editor.paper().SetZoom(1.5);
       },
       true},
      // A margin is not brought back by undoing what was typed after it.
      {"a margin", "\\pard\\f0\\fs24 one",
       [&] {
         box.SetMargins(1000, 1000, 1000, 1000);
         QTest::keyClicks(&editor, "x");
       },
       false},
  };
  for (const auto& c : cases) {
    Open(c.body);
    editor.moveCursor(QTextCursor::Start);
    editor.MarkSaved();
    const std::string saved = Written();
    const QSignalSpy told(&editor, &LetterEditor::SavedAgain);
    c.edit();
    EXPECT_TRUE(told.isEmpty()) << c.what;
    EXPECT_NE(box.TextRTF(), saved) << c.what;
    editor.Undo();
    EXPECT_EQ(box.TextRTF() == saved, c.back) << c.what << box.TextRTF();
    EXPECT_EQ(told.count(), c.back ? 1 : 0) << c.what;
    editor.Redo();
    EXPECT_EQ(told.count(), c.back ? 1 : 0) << c.what;
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
