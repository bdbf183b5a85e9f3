#include "ui/window/letter/find_panel.h"

#include <QTest>

#include "window_fixture.h"

namespace tenora {
namespace {

class FindPanelTest : public WindowPartsTest {
 protected:
  FindPanelTest() {
    panel_.show();
    panel_.hide();
  }
  void OpenLetter(const std::string& text) {
    SaveTemplate("Letter", text);
    letters_.Open(Entry("Templates/Letter"));
    panel_.SetLetter(letters_.Active());
    Editor().setFocus();
  }
  LetterEditor& Editor() { return letters_.Active()->editor(); }
  template <class Widget>
  Widget* Find(const char* name) {
    return panel_.findChild<Widget*>(name);
  }
  void Type(const char* field, const char* text) {
    auto* line = Find<QLineEdit>(field);
    line->clear();
    QTest::keyClicks(line, text);
  }
  std::string Told() { return Find<QLabel>("lblFindResult")->text().toStdString(); }
  std::string Text() { return letters_.Active()->letter().rtfLetter.Text(); }

  FindPanel panel_{platform_.dialogs};
};

TEST_F(FindPanelTest, IsWorkedByKeysAndTellsWhatItDid) {
  OpenLetter("Rent, rent and current");
  panel_.Open();
  ASSERT_TRUE(panel_.isVisible());
  auto* text = Find<QLineEdit>("txtFind");
  EXPECT_FALSE(Find<QPushButton>("cmdReplaceAll")->isEnabled());
  QTest::keyClicks(text, "rent");
  QTest::keyClick(text, Qt::Key_Return);
  EXPECT_EQ(Editor().textCursor().selectionStart(), 0);
  QTest::keyClick(text, Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_EQ(Editor().textCursor().selectedText(), "rent");
  EXPECT_EQ(Editor().textCursor().selectionStart(), 18);
  EXPECT_EQ(Told(), "The beginning was reached; this is the last one.");
  panel_.FindNext();
  EXPECT_EQ(Told(), "The end was reached; this is the first one.");
  Find<QCheckBox>("chkMatchCase")->setChecked(true);
  Find<QCheckBox>("chkWholeWords")->setChecked(true);
  Type("txtReplaceWith", "fee");
  QTest::keyClick(Find<QLineEdit>("txtReplaceWith"), Qt::Key_Return);  // "Rent" is not it
  EXPECT_EQ(Text(), "Rent, rent and current");
  QTest::keyClick(Find<QLineEdit>("txtReplaceWith"), Qt::Key_Return);
  EXPECT_EQ(Text(), "Rent, fee and current");
  EXPECT_EQ(Told(), "\"rent\" is not in this letter.");
  Find<QCheckBox>("chkMatchCase")->setChecked(false);
  Find<QCheckBox>("chkWholeWords")->setChecked(false);
  Find<QPushButton>("cmdReplaceAll")->click();
  EXPECT_EQ(Told(), "2 were replaced.");
  EXPECT_EQ(Text(), "fee, fee and curfee");
  Editor().Undo();
  EXPECT_EQ(Text(), "Rent, fee and current");
  EXPECT_EQ(Told(), "") << "they are no longer replaced";
  QTest::keyClick(text, Qt::Key_Escape);
  EXPECT_TRUE(panel_.isHidden());
  letters_.Active()->letter().members().Changed = false;
}

TEST_F(FindPanelTest, FindsWithEnterAfterAChoice) {
  OpenLetter("rents, rent, Rent");
  panel_.Open();
  Type("txtFind", "rent");
  auto* words = Find<QCheckBox>("chkWholeWords");
  QTest::keyClick(words, Qt::Key_Space);
  QTest::keyClick(words, Qt::Key_Return);
  EXPECT_EQ(Editor().textCursor().selectionStart(), 7);
  EXPECT_TRUE(words->isChecked());
  QTest::keyClick(Find<QCheckBox>("chkMatchCase"), Qt::Key_Return);
  EXPECT_EQ(Editor().textCursor().selectionStart(), 13);
  QTest::keyClick(words, Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_EQ(Editor().textCursor().selectionStart(), 7);
}

TEST_F(FindPanelTest, BeginsWithTheSelectionAndLooksOnlyThereWhereItIsOfSeveralLines) {
  OpenLetter("one two\\par two three\\par two");
  const auto select = [&](int start, int end) {
    QTextCursor cursor = Editor().textCursor();
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    Editor().setTextCursor(cursor);
  };
  select(4, 7);
  panel_.Open();
  EXPECT_EQ(Find<QLineEdit>("txtFind")->text(), "two");
  EXPECT_FALSE(Find<QCheckBox>("chkInSelection")->isChecked());
  select(4, 13);
  panel_.Open();
  EXPECT_EQ(Find<QLineEdit>("txtFind")->text(), "two");
  EXPECT_TRUE(Find<QCheckBox>("chkInSelection")->isChecked());
  Type("txtReplaceWith", "2");
  Find<QPushButton>("cmdReplaceAll")->click();
  EXPECT_EQ(Text(), "one 2\r\n2 three\r\ntwo");
  // Again in the same words, and the key for the panel does not leave them.
  panel_.Open();
  Type("txtFind", "2");
  Type("txtReplaceWith", "second");
  QTest::keyClick(Find<QPushButton>("cmdReplaceAll"), Qt::Key_Space);
  EXPECT_EQ(Text(), "one second\r\nsecond three\r\ntwo");
  QTest::keyClick(Find<QLineEdit>("txtFind"), Qt::Key_Escape);
  EXPECT_EQ(Editor().textCursor().selectedText(), "second\u2029second t");
  panel_.SetLetter(nullptr);
  EXPECT_FALSE(Find<QCheckBox>("chkInSelection")->isChecked());
  EXPECT_TRUE(panel_.isHidden());
  letters_.Active()->letter().members().Changed = false;
}

TEST_F(FindPanelTest, LeavesWhatIsInsideMergeCodesAndSaysSo) {
  const struct {
    const char *letter, *find, *told, *text;
  } cases[] = {
      {"rent rent rent <<Rent Due>> <<Rent Paid To>>", "rent",
       "3 were replaced; 2 inside merge codes were left as they are.",
       "fee fee fee <<Rent Due>> <<Rent Paid To>>"},
      {"rent <<Rent Due>> {\\protect rent}", "rent",
       "1 was replaced; 1 inside a merge code was left as it is. 1 in protected text stayed.",
       "fee <<Rent Due>> rent"},
      {"<<Rent Due>>", "rent", "None was replaced; 1 inside a merge code was left as it is.",
       "<<Rent Due>>"},
      {"<<Rent Due>>", "<<Rent Due>>", "1 was replaced.", "fee"},
  };
  for (const auto& c : cases) {
    OpenLetter(c.letter);
    panel_.Open();
    Type("txtFind", c.find);
    Type("txtReplaceWith", "fee");
    QTest::mouseClick(Find<QPushButton>("cmdReplaceAll"), Qt::LeftButton);
    EXPECT_EQ(Told(), c.told);
    EXPECT_EQ(Text(), c.text);
    letters_.Active()->letter().members().Changed = false;
    letters_.Active()->CloseNow();
  }
}

TEST_F(FindPanelTest, GoesOnFromAMergeCodeThatItLeaves) {
  OpenLetter("<<Rent Due>> rent");
  panel_.Open();
  Type("txtFind", "rent");
  Type("txtReplaceWith", "fee");
  const auto enter = [&](const char* field) {
    QTest::keyClick(Find<QLineEdit>(field), Qt::Key_Return);
  };
  enter("txtFind");
  enter("txtReplaceWith");
  EXPECT_EQ(Told(), "The one inside a merge code was left as it is.");
  EXPECT_EQ(Editor().textCursor().selectionStart(), 13);
  enter("txtReplaceWith");
  EXPECT_EQ(Text(), "<<Rent Due>> fee");
  letters_.Active()->letter().members().Changed = false;
}

// Without the panel, back from the caret by the letter's last search.
TEST_F(FindPanelTest, GoesBackByTheLastSearchAndSaysWhereThatEnds) {
  OpenLetter("rent rent");
  platform_.dialogs.WillType("rent");
  letters_.Active()->letter().Find();
  letters_.Active()->letter().FindAgain();
  EXPECT_EQ(letters_.Active()->letter().rtfLetter.SelStart(), 5);
  panel_.FindPrevious();
  EXPECT_EQ(letters_.Active()->letter().rtfLetter.SelStart(), 0);
  panel_.FindPrevious();
  EXPECT_EQ(platform_.dialogs.Texts().back(), "There is no earlier occurrence.");
}

}  // namespace
}  // namespace tenora
