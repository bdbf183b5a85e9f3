#include "ui/editor/commands/table_commands.h"

#include "editor_fixture.h"

namespace tenora {
namespace {

class TableCommandsTest : public EditorTest {};

TEST_F(TableCommandsTest, ChangesTablesAndLeavesOtherRowsAsTheyWere) {
  struct Case {
    const char* name;
    void (*run)(TableCommands&);
    const char* text;
    const char* kept;  // in the source
  };
  const Case cases[] = {
      {"row below", [](TableCommands& t) { t.InsertRow(Side::kAfter); }, "a\tb\r\n\t\r\nwide\t\r\n",
       "\\trkeep\\clmgf"},
      {"row above", [](TableCommands& t) { t.InsertRow(Side::kBefore); },
       "\t\r\na\tb\r\nwide\t\r\n", "\\trkeep\\clmgf"},
      {"column right", [](TableCommands& t) { t.InsertColumn(Side::kAfter); },
       "a\t\tb\r\nwide\t\r\n", "\\cellx4000"},
      {"remove row", [](TableCommands& t) { t.RemoveRows(); }, "wide\t\r\n", "\\trkeep\\clmgf"},
      {"remove column", [](TableCommands& t) { t.RemoveColumns(); }, "b\r\nwide\r\n",
       "\\cellx2000"},
      {"merge across", [](TableCommands& t) { t.MergeAcross(); }, "a\r\nb\t\r\nwide\t\r\n",
       "\\clmgf\\cellx2000\\clmrg\\cellx4000"},
      {"merge down", [](TableCommands& t) { t.MergeDown(); }, "a\r\nb\r\nwide\t\r\n\t\r\n",
       "\\trkeep\\clvmrg\\clmgf\\cellx2000\\clvmrg\\clmrg\\cellx4000"},
      {"halve", [](TableCommands& t) { t.SplitCell(); }, "a\t\tb\r\nwide\t\r\n",
       "\\cellx1000\\cellx2000\\cellx4000"},
      {"split again", [](TableCommands& t) { t.SplitCell(); }, "a\tb\r\nwide\t\r\n",
       "\\trkeep\\cellx2000\\cellx4000"},
  };
  for (const Case& c : cases) {
    Open(kTable);
    const std::string before = Written();
    if (std::string_view(c.name) == "split again") box.Select(4, 0);
    c.run(editor.tables());
    EXPECT_EQ(box.Text(), c.text) << c.name;
    EXPECT_NE(box.TextRTF().find(c.kept), std::string::npos) << c.name << box.TextRTF();
    editor.Undo();
    EXPECT_EQ(box.TextRTF(), before) << c.name;
  }
}

}  // namespace
}  // namespace tenora
