#include "ui/editor/letter_editor.h"

#include "editor_fixture.h"

namespace tenora {
namespace {

using testing::Test;

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
  editor.undo();
  EXPECT_EQ(box.Text(), "Dear x\r\nEnd");
  editor.redo();
  EXPECT_EQ(box.Text(), "Dear one\r\ntwo\r\nEnd");
}

}  // namespace
}  // namespace tenora
