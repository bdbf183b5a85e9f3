#include "ui/editor/commands/letter_search.h"

#include "editor_fixture.h"

namespace tenora {
namespace {

using Direction = LetterSearch::Direction;
using Found = LetterSearch::Found;
using Replaced = LetterSearch::Replaced;

class LetterSearchTest : public EditorTest {
 protected:
  std::string Selected() { return editor.textCursor().selectedText().toStdString(); }
  // What is searched, as it is shown; empty where that is the whole letter.
  std::string Shown() {
    const auto shown = editor.extraSelections();
    return shown.isEmpty() ? "" : shown.front().cursor.selectedText().toStdString();
  }
};

TEST_F(LetterSearchTest, ReplacesAllInTheFormatOfWhatWasThereAsOneStep) {
  const LetterSearch::Wanted anyhow{"rent"}, same_case{"rent", true, false},
      words{"rent", false, true};
  const struct {
    const char* body;
    LetterSearch::Wanted wanted;
    const char* with;
    int replaced, kept, in_code;
    const char *text, *source;  // what the letter is then, and what its source has in it
  } cases[] = {
      {"Rent, rent, current", anyhow, "fee", 3, 0, 0, "fee, fee, curfee", ""},
      {"Rent, rent, current", same_case, "fee", 2, 0, 0, "Rent, fee, curfee", ""},
      {"Rent, rent, current", words, "fee", 2, 0, 0, "fee, fee, current", ""},
      {"Rent, rent, current", {"RENT", true, true}, "fee", 0, 0, 0, "Rent, rent, current", ""},
      {"Rent", anyhow, "rent rent", 1, 0, 0, "rent rent", ""},
      {"the rent", anyhow, "", 1, 0, 0, "the ", ""},
      {"rentrent rents", words, "x", 0, 0, 0, "rentrent rents", ""},
      {"a\\b rent\\b0 b", anyhow, "fee", 1, 0, 0, "afeeb", "\\b fee\\b0 b"},
      {"a \\b re\\b0 nt b", anyhow, "fee", 1, 0, 0, "a fee b", "\\b fee\\b0  b"},
      {"rent \\protect rent\\protect0  rent", anyhow, "fee", 2, 1, 0, "fee rent fee",
       "\\protect rent\\protect0 "},
      {"re{\\*\\bkmkstart m}nt{\\*\\bkmkend m} due", anyhow, "fee", 1, 0, 0, "fee due",
       "bkmkstart m"},
      {"{\\field{\\*\\fldinst{HYPERLINK \"x\"}}{\\fldrslt the rent}}", anyhow, "fee", 1, 0, 0,
       "the fee", "the fee}}"},
      {"{\\field{\\*\\fldinst{HYPERLINK \"x\"}}{\\fldrslt re}}nt", anyhow, "fee", 1, 0, 0, "fee",
       ""},
      // Inside merge codes only where their marks are looked for.
      {"Rent <<Rent Due>> rent <<?Which rent?>> rent", anyhow, "Bond", 3, 0, 2,
       "Bond <<Rent Due>> Bond <<?Which rent?>> Bond", ""},
      {"<<Rent Due>> <<Rent>>", {"<<rent"}, "<<Bond", 2, 0, 0, "<<Bond Due>> <<Bond>>", ""},
      {"<<Rent Due>>>", {">"}, "!", 1, 0, 2, "<<Rent Due>>!", ""},
      {"a <<Rent Due>>", {"a <"}, "!", 0, 0, 1, "a <<Rent Due>>", ""},
      {"rent << rent", anyhow, "fee", 2, 0, 0, "fee << fee", ""},
      {"<<Re{\\*\\bkmkstart m}nt Due>> rent", anyhow, "fee", 1, 0, 1, "<<Rent Due>> fee", ""},
      {"10\\~000\\line rent", {"10 000"}, "9", 1, 0, 0, "9\r\nrent", ""},
      {"rent", anyhow, "one\ntwo\u2029", 1, 0, 0, "one two ", ""},
  };
  for (const auto& c : cases) {
    Open(std::string("\\pard\\f0\\fs24 ") + c.body + "\\par rest");
    const std::string before = Written();
    const LetterSearch::Count count =
        editor.search().ReplaceAll(c.wanted, QString::fromUtf8(c.with));
    EXPECT_EQ(count.replaced, c.replaced) << c.body;
    EXPECT_EQ(count.kept, c.kept) << c.body;
    EXPECT_EQ(count.in_code, c.in_code) << c.body;
    EXPECT_EQ(box.Text(), std::string(c.text) + "\r\nrest") << c.body;
    EXPECT_NE(box.TextRTF().find(c.source), std::string::npos) << box.TextRTF();
    if (c.replaced == 0) continue;
    editor.Undo();
    EXPECT_EQ(box.TextRTF(), before) << c.body;
  }
}

TEST_F(LetterSearchTest, GoesFromOneToTheNextAndOnAtTheOtherEnd) {
  Open(std::string(kTable) + "\\pard\\f0\\fs24 a wide word\\par wider");
  const struct {
    Direction direction;
    bool wrap;
    Found found;
    const char* text;
    int start;  // in the letter
  } steps[] = {
      {Direction::kForward, true, Found::kYes, "wide", 4},
      {Direction::kForward, true, Found::kYes, "wide", 12},
      {Direction::kForward, true, Found::kYes, "wide", 22},
      {Direction::kForward, false, Found::kNo, "wide", 22},
      {Direction::kForward, true, Found::kPastTheEnd, "wide", 4},
      {Direction::kBackward, false, Found::kNo, "wide", 4},
      {Direction::kBackward, true, Found::kPastTheEnd, "wide", 22},
      {Direction::kBackward, true, Found::kYes, "wide", 12},
  };
  for (const auto& step : steps) {
    EXPECT_EQ(editor.search().Find({"WIDE"}, step.direction, step.wrap), step.found);
    EXPECT_EQ(Selected(), step.text);
    EXPECT_EQ(box.SelStart(), step.start);
  }
  EXPECT_EQ(editor.search().Find({"wide", false, true}, Direction::kForward, true),
            Found::kPastTheEnd);
  EXPECT_EQ(editor.search().Find({"narrow"}, Direction::kForward, true), Found::kNo);
}

TEST_F(LetterSearchTest, ReplacesTheSelectionOnlyWhereItIsAnOccurrence) {
  Open("\\pard\\f0\\fs24 rent \\protect rent\\protect0  rents <<rent>>");
  const struct {
    int start, length;
    Replaced replaced;
    const char* text;
  } cases[] = {{0, 3, Replaced::kNo, "rent rent rents <<rent>>"},
               {0, 0, Replaced::kNo, "rent rent rents <<rent>>"},
               {5, 4, Replaced::kNo, "rent rent rents <<rent>>"},
               {18, 4, Replaced::kInCode, "rent rent rents <<rent>>"},
               {10, 4, Replaced::kYes, "rent rent fees <<rent>>"},
               {0, 4, Replaced::kYes, "fee rent fees <<rent>>"}};
  for (const auto& c : cases) {
    box.Select(c.start, c.length);
    EXPECT_EQ(editor.search().Replace({"rent"}, "fee"), c.replaced) << c.start;
    EXPECT_EQ(box.Text(), c.text);
  }
}

TEST_F(LetterSearchTest, StaysWithinWhatWasSelected) {
  Open("\\pard\\f0\\fs24 rent rent\\par rent rent\\par rent");
  EXPECT_FALSE(editor.search().LimitToSelection());
  box.Select(5, 9);  // the second and the third
  ASSERT_TRUE(editor.search().LimitToSelection());
  EXPECT_EQ(editor.search().Find({"rent"}, Direction::kForward, false), Found::kYes);
  EXPECT_EQ(box.SelStart(), 5);
  EXPECT_EQ(editor.search().Find({"rent"}, Direction::kBackward, true), Found::kPastTheEnd);
  EXPECT_EQ(box.SelStart(), 10);
  EXPECT_EQ(editor.search().ReplaceAll({"rent"}, "the bond").replaced, 2);
  EXPECT_EQ(box.Text(), "rent the bond\r\nthe bond rent\r\nrent");
  // What was put in at either edge is within, and shown so.
  EXPECT_EQ(Shown(), "the bond\u2029the bond");
  EXPECT_EQ(editor.search().ReplaceAll({"the bond"}, "fee").replaced, 2);
  EXPECT_EQ(Shown(), "fee\u2029fee");
  EXPECT_EQ(editor.search().ReplaceAll({"rent"}, "x").replaced, 0);
  editor.Undo();
  EXPECT_EQ(Shown(), "the bond\u2029the bond");
  editor.search().Unlimit();
  EXPECT_EQ(Shown(), "");
  EXPECT_EQ(editor.search().ReplaceAll({"rent"}, "x").replaced, 3);
}

}  // namespace
}  // namespace tenora
