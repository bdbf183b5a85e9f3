#include "ui/editor/letter_editor.h"

#include <QDoubleSpinBox>
#include <QMimeData>
#include <QTextTable>
#include <QTimer>
#include <memory>

#include "editor_fixture.h"
#include "platform/richtext/document.h"
#include "ui/editor/clipboard/letter_clipboard.h"
#include "ui/editor/codes/code_marker.h"
#include "ui/editor/commands/editor_dialogs.h"
#include "ui/editor/commands/table_commands.h"
#include "ui/editor/editor_actions.h"

namespace tenora {
namespace {

constexpr const char* kTable =
    "\\trowd\\trgaph108\\cellx2000\\cellx4000\\pard\\intbl a\\cell b\\cell\\row"
    "\\trowd\\trgaph108\\trkeep\\clmgf\\cellx2000\\clmrg\\cellx4000\\pard\\intbl "
    "wide\\cell\\cell\\row"
    "\\pard ";

class LetterEditorTest : public EditorTest {};

TEST_F(LetterEditorTest, GivesTheBoxWhatIsTyped) {
  Open("\\pard\\f0\\fs24 Dear \\b <<Tenant Name>>\\b0\\par End");
  Type("Hello ");
  EXPECT_EQ(box.Text(), "Hello Dear <<Tenant Name>>\r\nEnd");
  EXPECT_NE(box.TextRTF().find("Hello Dear \\b <<Tenant Name>>"), std::string::npos)
      << box.TextRTF();
  EXPECT_EQ(box.SelStart(), 6);
}

TEST_F(LetterEditorTest, ShowsWhatComesThroughTheBoxAsOneUndoStep) {
  Open("\\pard\\f0\\fs24 Dear \\b x\\b0\\par End");
  box.Select(5, 1);
  box.SetSelText("one\r\ntwo");
  EXPECT_EQ(editor.toPlainText(), "Dear one\ntwo\nEnd");
  EXPECT_EQ(box.SelStart(), 12);
  EXPECT_NE(box.TextRTF().find("\\b one"), std::string::npos) << box.TextRTF();
  editor.undo();
  EXPECT_EQ(box.Text(), "Dear x\r\nEnd");
  editor.redo();
  EXPECT_EQ(box.Text(), "Dear one\r\ntwo\r\nEnd");
}

TEST_F(LetterEditorTest, ShowsAMergeOfManyCodesAsOneUndoStepWithTheCaretWhereTheBoxPutIt) {
  Open("\\pard\\f0\\fs24 <<A>> and <<B>>\\par <<C>>\\par");
  Type("x");
  const std::string before = box.TextRTF();
  for (const char* code : {"<<A>>", "<<B>>", "<<C>>"}) {
    std::string source = box.TextRTF();
    source.replace(source.find(code), 5, "value");
    box.SetTextRTF(source);
  }
  box.Select(3, 2);
  EXPECT_EQ(box.SelText(), "lu");
  editor.ShowBox();
  EXPECT_EQ(editor.toPlainText(), "xvalue and value\nvalue");
  EXPECT_EQ(editor.textCursor().selectedText(), "lu");
  editor.undo();
  EXPECT_EQ(box.TextRTF(), before);
  editor.undo();
  EXPECT_EQ(box.Text(), "<<A>> and <<B>>\r\n<<C>>");
}

TEST_F(LetterEditorTest, FindsAndSelectsThroughTablesAndHiddenText) {
  Open(std::string(kTable) + "{\\v secret}{\\*\\bkmkstart m}{\\*\\bkmkend m}behind\\par");
  const int found = box.Find("behind", 0);
  EXPECT_EQ(found, 16);  // a b wide and an empty cell, each with its end; "secret"
  EXPECT_EQ(editor.textCursor().selectedText(), "behind");
  EXPECT_EQ(box.SelText(), "behind");
  box.SetSelText("after");
  EXPECT_NE(box.TextRTF().find("secret"), std::string::npos);
  EXPECT_NE(box.TextRTF().find("bkmkstart m"), std::string::npos);
  EXPECT_EQ(box.Text(), "a\tb\r\nwide\t\r\nsecretafter");
}

TEST_F(LetterEditorTest, KeepsAFieldFromGrowingAtItsEnd) {
  Open("{\\field{\\*\\fldinst{HYPERLINK \"x\"}}{\\fldrslt link}}\\par");
  box.Select(4, 0);
  Type("s");
  EXPECT_NE(box.TextRTF().find("link}}s"), std::string::npos) << box.TextRTF();
}

TEST_F(LetterEditorTest, ChangesTablesAndLeavesOtherRowsAsTheyWere) {
  struct Case {
    const char* name;
    void (*run)(LetterEditor&);
    const char* text;
    const char* kept;  // in the source
  };
  const Case cases[] = {
      {"row below", [](LetterEditor& e) { InsertTableRow(e, Side::kAfter); },
       "a\tb\r\n\t\r\nwide\t\r\n", "\\trkeep\\clmgf"},
      {"row above", [](LetterEditor& e) { InsertTableRow(e, Side::kBefore); },
       "\t\r\na\tb\r\nwide\t\r\n", "\\trkeep\\clmgf"},
      {"column right", [](LetterEditor& e) { InsertTableColumn(e, Side::kAfter); },
       "a\t\tb\r\nwide\t\r\n", "\\cellx4000"},
      {"remove row", [](LetterEditor& e) { RemoveTableRows(e); }, "wide\t\r\n", "\\trkeep\\clmgf"},
      {"remove column", [](LetterEditor& e) { RemoveTableColumns(e); }, "b\r\nwide\r\n",
       "\\cellx2000"},
      {"merge across", MergeCellAcross, "a\r\nb\t\r\nwide\t\r\n",
       "\\clmgf\\cellx2000\\clmrg\\cellx4000"},
      {"merge down", MergeCellDown, "a\r\nb\r\nwide\t\r\n\t\r\n",
       "\\trkeep\\clvmrg\\clmgf\\cellx2000\\clvmrg\\clmrg\\cellx4000"},
      {"halve", SplitTableCell, "a\t\tb\r\nwide\t\r\n", "\\cellx1000\\cellx2000\\cellx4000"},
      {"part again",
       [](LetterEditor& e) {
         e.box().Select(4, 0);
         SplitTableCell(e);
       },
       "a\tb\r\nwide\t\r\n", "\\trkeep\\cellx2000\\cellx4000"},
  };
  for (const Case& c : cases) {
    Open(kTable);
    const std::string before = Written();
    c.run(editor);
    EXPECT_EQ(box.Text(), c.text) << c.name;
    EXPECT_NE(box.TextRTF().find(c.kept), std::string::npos) << c.name << box.TextRTF();
    editor.Undo();
    EXPECT_EQ(box.TextRTF(), before) << c.name;
  }
}

TEST_F(LetterEditorTest, PastesTheRichestFormAndCopiesAllForms) {
  struct Case {
    const char* type;
    const char* data;
    const char* text;
    const char* source;
  };
  std::string nested;
  for (int i = 0; i < 40; ++i) nested += "<table><tr><td>";
  const Case cases[] = {
      {"text/rtf", "{\\rtf1{\\fonttbl{\\f3 Verdana;}}\\f3\\b bold}", "bold!", "\\b"},
      {"text/rtf", "{\\rtf1 {{{{\\trowd\\cellx9999999999 \\bin99999 x", nullptr, ""},
      {"text/html", "<p>one <i>two</i></p><img src='file:///etc/hostname'>", nullptr, "\\i two"},
      {"text/html", "<table><tr><td>c1<td>c2</table>", nullptr, "\\cell"},
      {"text/html", "<h1>Big</h1><ol><li>one</ol>", nullptr, "\\pndec"},
      {"text/html", "<table border=1><tr><td>c1</table>", nullptr, "\\clbrdrr"},
      {"text/html", nested.c_str(), nullptr, "\\itap6"},
      {"text/plain", "x\\y{z}", "x\\y{z}!", "\\\\y\\{z\\}"},
  };
  for (const Case& c : cases) {
    Open("\\pard\\f0\\fs24 !");
    QMimeData data;
    data.setData(c.type, c.data);
    editor.InsertBlocks(BlocksOf(data, editor.formats(), editor.CharAtCaret()));
    if (c.text != nullptr) {
      EXPECT_EQ(box.Text(), c.text);
    }
    EXPECT_NE(box.TextRTF().find(c.source), std::string::npos) << box.TextRTF();
    editor.selectAll();
    const std::unique_ptr<QMimeData> copy(CopySelection(editor.textCursor(), editor.formats()));
    const std::string all = box.TextRTF();
    Open("\\pard ");
    editor.InsertBlocks(BlocksOf(*copy, editor.formats(), editor.CharAtCaret()));
    EXPECT_NE(box.TextRTF().find(c.source), std::string::npos) << c.type << box.TextRTF();
    EXPECT_TRUE(copy->hasHtml() && copy->hasText());
  }
}

TEST_F(LetterEditorTest, OffersActionsThatActOnTheCaretsLetter) {
  EditorActions actions;
  EXPECT_FALSE(actions.FormatActions().front()->isEnabled());
  actions.SetEditor(&editor);
  Open("\\pard\\f0\\fs24 one\\par two");
  box.Select(0, 7);
  const auto run = [&](const char* name) {
    for (const QList<QAction*>* group : {&actions.FormatActions(), &actions.InsertActions()}) {
      for (QAction* action : *group) {
        if (action->text().remove('&') == name) return action->trigger();
      }
    }
    ADD_FAILURE() << name;
  };
  run("Bold");
  run("Centre");
  run("Bullets");
  EXPECT_NE(box.TextRTF().find("\\b\\f0\\fs24 one"), std::string::npos) << box.TextRTF();
  EXPECT_NE(box.TextRTF().find("\\qc"), std::string::npos);
  EXPECT_NE(box.TextRTF().find("{\\pntxtb\\'B7}"), std::string::npos);
  EXPECT_TRUE(actions.FormatActions().front()->isChecked());
  editor.undo();
  editor.undo();
  editor.undo();
  EXPECT_EQ(box.TextRTF().find("\\b"), std::string::npos) << box.TextRTF();
}

TEST_F(LetterEditorTest, CompletesAMergeCodeAndClosesIt) {
  struct Case {
    const char* letter;
    int caret;
    const char* keys;
    const char* completed;
  };
  const Case cases[] = {{"", 0, "<<tenant n", "<<Tenant Name>>"},
                        {"<<Tenant Code>> x", 2, "n", "<<Tenant Name>> x"},
                        {" <<Tenant Code>>", 0, "<<n", "<<Tenant Name>> <<Tenant Code>>"}};
  editor.SetCodes({"Tenant Name", "Tenant Code"});
  for (const Case& c : cases) {
    Open(std::string("\\pard\\f0\\fs24 ") + c.letter);
    box.Select(c.caret, 0);
    Type(c.keys);
    QWidget* list = QApplication::activePopupWidget();
    ASSERT_NE(list, nullptr) << c.letter;
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(box.Text(), c.completed);
  }
}

TEST_F(LetterEditorTest, KeepsMergeCodesInOneFormat) {
  for (const auto& [start, length] : {std::pair(8, 3), {8, 0}, {5, 4}}) {
    Open("\\pard\\f0\\fs24 Dear <<Name>>!");
    box.Select(start, length);
    editor.ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
    EXPECT_NE(box.TextRTF().find("\\b <<Name>>\\b0 !"), std::string::npos) << box.TextRTF();
  }
}

TEST_F(LetterEditorTest, ZoomsBesideTheHistory) {
  Open("\\pard\\fi300\\ri200\\f0\\fs24 ab");
  Type("x");
  editor.SetZoom(1.5);
  editor.Undo();
  EXPECT_EQ(box.Text(), "ab");
  editor.SetZoom(2);
  editor.Redo();
  EXPECT_EQ(box.Text(), "xab");
}

TEST_F(LetterEditorTest, LeavesProtectedTextAsItIs) {
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
  editor.ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
  EXPECT_NE(box.TextRTF().find("\\protect safe\\protect0 "), std::string::npos) << box.TextRTF();
  editor.ProtectCharacters(false);
  QTest::keyClick(&editor, Qt::Key_X);
  EXPECT_EQ(box.Text(), "x sax cd");
}

// Keys met a selection that ends behind a picture or in an empty cell with a change of its format.
TEST_F(LetterEditorTest, KeepsTheFormatsOfASelectionThatKeysMeet) {
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

TEST_F(LetterEditorTest, KeepsWhatWasTypedWhenAnObjectComesThroughTheBox) {
  Open("\\pard\\f0\\fs24 ab");
  Type("typed ");
  box.InsertObject("{\\pict\\pngblip 89504e470d0a1a0a}");
  EXPECT_EQ(box.Text().substr(0, 6), "typed ");
  EXPECT_NE(box.TextRTF().find("typed {\\pict"), std::string::npos) << box.TextRTF();
  Type("!");
  EXPECT_EQ(box.ReplaceEvery("!", "?"), 1);
}

TEST_F(LetterEditorTest, TakesATabStopThatWasTypedAndNotSet) {
  QTimer::singleShot(0, [] {
    QWidget* dialog = QApplication::activeModalWidget();
    dialog->findChild<QDoubleSpinBox*>()->setValue(1);
    QTest::keyClick(dialog, Qt::Key_Return);
  });
  const auto tabs = AskTabStops(&editor, {});
  ASSERT_TRUE(tabs.has_value() && tabs->size() == 1);
  EXPECT_EQ(tabs->front().position, static_cast<int>(LocaleUnit().twips));
}

TEST_F(LetterEditorTest, GoesFromCellToCellWithTheTabKey) {
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

TEST(CodeMarker, TellsKnownFromUnknownCodes) {
  const QSet<QString> names{"Tenant Name"};
  struct Case {
    const char* text;
    std::vector<CodeSpan::Kind> kinds;
  };
  using enum CodeSpan::Kind;
  const Case cases[] = {{"<<Tenant Name>> <<tenant name>>", {kData, kUnknown}},
                        {"<<?When?>> <<?\?>>", {kPrompt, kUnknown}},
                        {"<<FutureDate:14:Days>> <<FutureDate:x:Days>>", {kFutureDate, kUnknown}},
                        {"<<Future Date>> <<open", {kUnknown, kUnknown}},
                        {"<< <<Tenant Name>>", {kData}}};
  for (const Case& c : cases) {
    std::vector<CodeSpan::Kind> kinds;
    for (const CodeSpan& code : FindCodes(c.text, names)) kinds.push_back(code.kind);
    EXPECT_EQ(kinds, c.kinds) << c.text;
  }
}

}  // namespace
}  // namespace tenora
