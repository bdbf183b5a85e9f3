#include "ui/editor/document/edited_letter.h"

#include "editor_fixture.h"

namespace tenora {
namespace {

class EditedLetterTest : public EditorTest {};

TEST_F(EditedLetterTest, GivesTheBoxWhatIsTyped) {
  Open("\\pard\\f0\\fs24 Dear \\b <<Tenant Name>>\\b0\\par End");
  Type("Hello ");
  EXPECT_EQ(box.Text(), "Hello Dear <<Tenant Name>>\r\nEnd");
  EXPECT_NE(box.TextRTF().find("Hello Dear \\b <<Tenant Name>>"), std::string::npos)
      << box.TextRTF();
  EXPECT_EQ(box.SelStart(), 6);
}

TEST_F(EditedLetterTest, ShowsWhatComesThroughTheBoxAsOneUndoStep) {
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

TEST_F(EditedLetterTest, ShowsAMergeOfManyCodesAsOneUndoStepWithTheCaretWhereTheBoxPutIt) {
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

TEST_F(EditedLetterTest, FindsAndSelectsThroughTablesAndHiddenText) {
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

TEST_F(EditedLetterTest, KeepsWhatWasTypedWhenAnObjectComesThroughTheBox) {
  Open("\\pard\\f0\\fs24 ab");
  Type("typed ");
  box.InsertObject("{\\pict\\pngblip 89504e470d0a1a0a}");
  EXPECT_EQ(box.Text().substr(0, 6), "typed ");
  EXPECT_NE(box.TextRTF().find("typed {\\pict"), std::string::npos) << box.TextRTF();
  Type("!");
  EXPECT_EQ(box.ReplaceEvery("!", "?"), 1);
}

}  // namespace
}  // namespace tenora
