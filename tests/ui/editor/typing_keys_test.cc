#include "ui/editor/commands/typing_keys.h"

#include <QAbstractTextDocumentLayout>
#include <QAccessible>
#include <QTextBlock>
#include <QTextTable>
#include <functional>

#include "editor_fixture.h"

namespace tenora {
namespace {

class TypingKeysTest : public EditorTest {};

TEST_F(TypingKeysTest, KeepsAFieldFromGrowingAtItsEnd) {
  Open("{\\field{\\*\\fldinst{HYPERLINK \"x\"}}{\\fldrslt link}}\\par");
  box.Select(4, 0);
  Type("s");
  EXPECT_NE(box.TextRTF().find("link}}s"), std::string::npos) << box.TextRTF();
}

TEST_F(TypingKeysTest, TellsScreenReadersTextCaretAndSelection) {
  Open("Dear \\b Ann\\b0\\par");
  box.Select(5, 0);
  Type("Mary ");
  QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(&editor);
  ASSERT_NE(spoken, nullptr);
  QAccessibleTextInterface* text = spoken->textInterface();
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(text->text(0, 13), "Dear Mary Ann");
  EXPECT_EQ(text->cursorPosition(), 10);
  box.Select(5, 4);
  editor.ShowBox();
  int start = 0, end = 0;
  text->selection(0, &start, &end);
  EXPECT_EQ(text->text(start, end), "Mary");
  EXPECT_FALSE(spoken->state().readOnly);
}

TEST_F(TypingKeysTest, LeavesProtectedTextAsItIs) {
  struct Case {
    int start, length;
    Qt::Key key;
    const char* text;
  };
  const Case cases[] = {
      {5, 0, Qt::Key_X, "ab safe cd"},         {3, 0, Qt::Key_Delete, "ab safe cd"},
      {4, 0, Qt::Key_Backspace, "ab safe cd"}, {1, 3, Qt::Key_X, "ab safe cd"},
      {5, 0, Qt::Key_Return, "ab safe cd"},    {7, 0, Qt::Key_X, "ab safex cd"},
      {3, 0, Qt::Key_X, "ab xsafe cd"},        {0, 2, Qt::Key_X, "x safe cd"}};
  for (const Case& c : cases) {
    Open("\\pard\\f0\\fs24 ab \\protect safe\\protect0  cd");
    box.Select(c.start, c.length);
    QTest::keyClick(&editor, c.key);
    EXPECT_EQ(box.Text(), c.text) << c.start;
    EXPECT_NE(box.TextRTF().find("\\protect safe\\protect0 "), std::string::npos) << box.TextRTF();
  }
  box.Select(4, 2);
  box.SetSelText("<<Name>>");
  editor.formatting().ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
  EXPECT_NE(box.TextRTF().find("\\protect safe\\protect0 "), std::string::npos) << box.TextRTF();
  editor.formatting().ProtectCharacters(false);
  QTest::keyClick(&editor, Qt::Key_X);
  EXPECT_EQ(box.Text(), "x sax cd");
}

// A key once changed the format of a selection that ended after a picture or in an empty cell.
TEST_F(TypingKeysTest, KeepsTheFormatsOfASelection) {
  Open("\\pard\\f0\\fs24\\b bold\\b0  plain\\page\\par end");
  const std::string before = Written();
  box.Select(0, 11);
  QTest::keyClick(&editor, Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_EQ(box.TextRTF(), before);
  box.Select(0, 11);
  Type("x");
  EXPECT_EQ(box.Text(), "x\r\nend");
  editor.Undo();
  EXPECT_EQ(box.TextRTF(), before);
}

TEST_F(TypingKeysTest, GoesFromCellToCellWithTheTabKey) {
  Open(std::string(kTable) + "end");
  box.Select(0, 0);
  for (const char* text : {"1", "2", "3", "4"}) {
    Type(text);
    QTest::keyClick(&editor, Qt::Key_Tab);
  }
  QTest::keyClick(&editor, Qt::Key_Backtab);
  Type("5");
  EXPECT_EQ(box.Text(), "1a\t2b\r\n3wide\t\r\n54\t\r\n\t\r\nend");
}

// Lines between the letter's first table and its last paragraph.
double LinesBehindTable(const QTextDocument& document) {
  const QAbstractTextDocumentLayout& layout = *document.documentLayout();
  const QRectF text = layout.blockBoundingRect(document.lastBlock());
  return (text.top() -
          layout.frameBoundingRect(document.rootFrame()->childFrames().front()).bottom()) /
         text.height();
}

// Qt gives an empty paragraph behind a table no height.
TEST_F(TypingKeysTest, ShowsEmptyLinesBehindATable) {
  struct Case {
    const char* name;
    const char* behind;
    std::function<void()> change;
    const char* text;
    int lines;
  };
  const auto press = [&](Qt::Key key) { QTest::keyClick(&editor, key); };
  const auto enter = [&] { press(Qt::Key_Return); };
  const auto go_behind = [&](int length) {
    box.Select(static_cast<int>(std::string_view("a\tb\nwide\t\n").size()), length);
    editor.ShowBox();
  };
  const Case cases[] = {
      {"loaded", "\\par text", [] {}, "\r\ntext", 1},
      {"two loaded", "\\par\\par text", [] {}, "\r\n\r\ntext", 2},
      {"a bookmark", "{\\*\\bkmkstart m}{\\*\\bkmkend m}\\par text", [] {}, "\r\ntext", 1},
      {"Enter", "text", [&] { go_behind(0), enter(); }, "\r\ntext", 1},
      {"Enter twice", "text", [&] { go_behind(0), enter(), enter(); }, "\r\n\r\ntext", 2},
      {"Delete", "gone\\par text", [&] { go_behind(4), press(Qt::Key_Delete); }, "\r\ntext", 1},
      {"Backspace", "x\\par text", [&] { go_behind(1), press(Qt::Key_Backspace); }, "\r\ntext", 1},
      {"Cut", "gone\\par text", [&] { go_behind(4), editor.Cut(); }, "\r\ntext", 1},
      {"merged", "gone\\par text", [&] { go_behind(4), box.SetSelText(""); }, "\r\ntext", 1},
      {"undone", "\\par text", [&] { go_behind(0), Type("ab"), editor.Undo(); }, "\r\ntext", 1},
      {"typed", "\\par text", [&] { go_behind(0), Type("ab"); }, "ab\r\ntext", 1},
  };
  for (const Case& c : cases) {
    Open(std::string(kTable) + "\\pard\\f0\\fs24 " + c.behind);
    c.change();
    editor.ShowBox();
    EXPECT_EQ(box.Text(), std::string("a\tb\r\nwide\t\r\n") + c.text) << c.name;
    EXPECT_NEAR(LinesBehindTable(*editor.document()), c.lines, 0.15) << c.name;
  }
}

TEST_F(TypingKeysTest, TypesBehindANewTableAsAboveIt) {
  Open("\\pard\\f1\\fs36 Top");
  QTest::keyClick(&editor, Qt::Key_End, Qt::ControlModifier);
  QTest::keyClick(&editor, Qt::Key_Return);
  editor.tables().InsertTable(1, 2, 4000);
  QTest::keyClick(&editor, Qt::Key_End, Qt::ControlModifier);
  QTest::keyClick(&editor, Qt::Key_Return);
  QTest::keyClick(&editor, Qt::Key_Return);
  Type("abc");
  EXPECT_EQ(box.Text(), "Top\r\n\t\r\n\r\n\r\nabc");
  EXPECT_EQ(QTextCursor(editor.document()->lastBlock()).charFormat().fontPointSize(), 18);
  EXPECT_NEAR(LinesBehindTable(*editor.document()), 2, 0.15);
}

}  // namespace
}  // namespace tenora
