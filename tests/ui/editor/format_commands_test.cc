#include "ui/editor/commands/format_commands.h"

#include "editor_fixture.h"

namespace tenora {
namespace {

class FormatCommandsTest : public PlainControlTest {
 protected:
  FormatCommands formatting{letter};
};

TEST_F(FormatCommandsTest, KeepsMergeCodesInOneFormat) {
  for (const auto& [start, length] : {std::pair(8, 3), {8, 0}, {5, 4}}) {
    Open("\\pard\\f0\\fs24 Dear <<Name>>!");
    box.Select(start, length);
    formatting.ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
    EXPECT_NE(box.TextRTF().find("\\b <<Name>>\\b0 !"), std::string::npos) << box.TextRTF();
  }
}

// Qt has no history of the first mark's format.
TEST_F(FormatCommandsTest, TakesTheFormatBackFromTheFirstParagraphsMark) {
  Open("\\pard\\f0\\fs24\\par two");
  formatting.ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
  EXPECT_NE(box.TextRTF().find("\\b"), std::string::npos) << box.TextRTF();
  control.undo();
  EXPECT_FALSE(formatting.CharAtCaret().bold);
  EXPECT_EQ(box.TextRTF().find("\\b"), std::string::npos) << box.TextRTF();
}

}  // namespace
}  // namespace tenora
