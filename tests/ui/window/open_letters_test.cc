#include "ui/window/letter/open_letters.h"

#include <QScrollBar>
#include <QTest>
#include <cmath>

#include "window_fixture.h"

namespace tenora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class OpenLettersTest : public WindowPartsTest {};

TEST_F(OpenLettersTest, OpensATemplateOnceAndBringsItBackToTheFront) {
  SaveTemplate("One", "first");
  SaveTemplate("Two", "second");
  for (const char* key : {"Templates/One", "Templates/Two", "Templates/One"}) {
    letters_.Open(Entry(key));
  }
  EXPECT_EQ(desk_.Letters().size(), 2U);
  EXPECT_EQ(InFront().LetterTitle, "One");
  EXPECT_EQ(InFront().Kind, "Templates");
  EXPECT_THAT(letters_.Active()->editor().toPlainText().toStdString(), HasSubstr("first"));
}

TEST_F(OpenLettersTest, ShowsWhyAFileDoesNotOpenAndLeavesNoWindow) {
  TreeModel::Entry entry = (SaveTemplate("One", "x"), Entry("Templates/One"));
  std::filesystem::remove(entry.path);
  letters_.Open(entry);
  EXPECT_THAT(desk_.Letters(), IsEmpty());
  ASSERT_EQ(platform_.dialogs.shown().size(), 1U);
  EXPECT_EQ(platform_.dialogs.shown()[0].title, "frmMain - ctlTree_DblClick");
  EXPECT_THAT(platform_.dialogs.shown()[0].text, HasSubstr("One.rtf"));
}

TEST_F(OpenLettersTest, RefusesTextThatWouldFreezeTheWindow) {
  std::string blanks;
  for (int i = 0; i < 2'500'001; ++i) blanks += "a ";
  const std::pair<std::string, const char*> cases[] = {
      {std::string(100'001, 'x'), "a word of more than 100000 characters"},
      {blanks, "a paragraph of more than 5000000 characters"},
  };
  for (const auto& [text, message] : cases) {
    SaveTemplate("Long", text);
    letters_.Open(Entry("Templates/Long"));
    EXPECT_THAT(desk_.Letters(), IsEmpty());
    ASSERT_FALSE(platform_.dialogs.shown().empty());
    EXPECT_THAT(platform_.dialogs.shown().back().text, HasSubstr(message));
  }
}

// What a chosen file is follows from its folder; from elsewhere the user is asked, and a text file
// becomes a letter that has no file yet.
TEST_F(OpenLettersTest, TellsWhatAChosenFileIs) {
  LoadTenants();
  const std::string tenant = session_.caches.Tenants.at(0).KeyName;
  const std::string code = session_.caches.Tenants.at(0).Reference;
  struct Case {
    std::filesystem::path file;
    int answer;  // to the question for its kind; -1 where it is not asked
    std::string kind, title, tenant_code;
    bool has_file;
  };
  const Case cases[] = {
      {Data() / "Templates/Notice.rtf", -1, "Templates", "Notice", "", true},
      {Data() / "Owner Templates/Statement.rtf", -1, "Owner Templates", "Statement", "", true},
      {Data() / tenant / "Arrears.rtf", -1, "Tenant Letter", "Arrears", code, true},
      {platform_.folder / "Elsewhere.rtf", 1, "Owner Templates", "Elsewhere", "", true},
      {platform_.folder / "Plain.TXT", 2, "Cheque", "Plain", "", false},
  };
  session_.cheque_word = "Cheque";
  for (const Case& c : cases) {
    std::filesystem::create_directories(c.file.parent_path());
    WriteWholeFile(c.file, c.has_file ? "{\\rtf1 text}" : "{\\b text}");
    tree_.RefreshTree();
    if (c.answer >= 0) platform_.dialogs.WillChoose(static_cast<std::size_t>(c.answer));
    letters_.OpenFile(c.file);
    EXPECT_EQ(InFront().Kind, c.kind) << c.file;
    EXPECT_EQ(InFront().LetterTitle, c.title) << c.file;
    EXPECT_EQ(InFront().TenantCode, c.tenant_code) << c.file;
    EXPECT_EQ(InFront().FilePath, c.has_file ? c.file.string() : "") << c.file;
    EXPECT_FALSE(InFront().Changed) << c.file;
  }
  EXPECT_THAT(letters_.Active()->editor().toPlainText().toStdString(), HasSubstr("{\\b text}"));
}

TEST_F(OpenLettersTest, AsksBeforeASaveReplacesAFileAndShowsTheNewLetterInTheTree) {
  const auto taken = SaveTemplate("Taken", "another's");
  letters_.StartNew("Templates");
  letters_.Active()->letter().rtfLetter.SetText("mine");
  platform_.dialogs.WillType("Taken").WillPress(Answer::kNo).WillCancel();
  EXPECT_FALSE(letters_.Active()->letter().Save());
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre("Enter the name for this Letter", HasSubstr("Replace it?"),
                          "Enter the name for this Letter"));
  EXPECT_THAT(ReadWholeFile(taken), HasSubstr("another's"));
  platform_.dialogs.WillType("Fresh");
  EXPECT_TRUE(letters_.Active()->letter().Save());
  EXPECT_TRUE(tree_.model().IndexOfKey("Templates/Fresh").isValid());
  letters_.Active()->letter().rtfLetter.SetText("mine again");
  WriteWholeFile(Data() / "Templates/Fresh.rtf", "{\\rtf1 changed by another program}");
  platform_.dialogs.WillPress(Answer::kNo);
  EXPECT_FALSE(letters_.Active()->letter().Save());
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("Write over it?"));
  letters_.Active()->letter().members().Changed = false;
}

TEST_F(OpenLettersTest, ALetterTakesNoNameOfOneThatIsOpen) {
  SaveTemplate("Taken", "another's");
  letters_.Open(Entry("Templates/Taken"));
  letters_.StartNew("Templates");
  platform_.dialogs.WillType("Taken").WillCancel();
  EXPECT_FALSE(letters_.Active()->letter().Save());
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre("Enter the name for this Letter", HasSubstr("is open; close it"),
                          "Enter the name for this Letter"));
  letters_.Active()->letter().members().Changed = false;
}

TEST_F(OpenLettersTest, ANewLetterGetsANumberThatNoOpenLetterHas) {
  letters_.StartNew("Templates");
  InFront().LetterTitle = "New letter 2";  // as one that was recovered
  letters_.StartNew("Templates");
  EXPECT_EQ(InFront().LetterTitle, "New letter 3");
}

// The tab then says what the tree does.
TEST_F(OpenLettersTest, TellsWhichNameALetterReallyGetsAndAsksAgainWhereThatIsRefused) {
  letters_.StartNew("Templates");
  platform_.dialogs.WillType("Rent: why?").WillPress(Answer::kNo);
  platform_.dialogs.WillType("Rent: 3/4").WillPress(Answer::kYes);
  letters_.WithActive([](frmLetter& letter) { letter.SaveAs(); });
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre("Enter the name for this Letter", HasSubstr("it contains : ?."),
                          "Enter the name for this Letter",
                          "\"Rent: 3/4\" cannot be the name of a file on every system: it contains "
                          ": /.\r\nIt will be called \"Rent- 3-4\". Use this name?"));
  EXPECT_EQ(platform_.dialogs.shown()[2].default_answer, "Rent: why?");
  EXPECT_EQ(Entry("Templates/Rent- 3-4").name, "Rent- 3-4");
  EXPECT_EQ(letters_.Active()->ShownName(), "Rent- 3-4 : Templates");
}

TEST_F(OpenLettersTest, ADraggedMarginIsTheLettersOwnUnlessThePrinterSetUpHasIt) {
  const auto own_margins = [&] {
    const richtext::PageSetup& page = letters_.Active()->letter().rtfLetter.Document().page;
    return std::pair(page.left, page.right);
  };
  letters_.StartNew("Templates");
  EXPECT_EQ(own_margins(), std::pair(1134, 1134));
  emit letters_.Active()->view().MarginsDragged(1701, 1134);
  EXPECT_EQ(own_margins(), std::pair(1701, 1134));
  EXPECT_TRUE(InFront().Changed);
  EXPECT_EQ(StoredMargins(session_.settings), PageMargins());

  session_.settings.SaveSettingText("Mail\\PrinterSetup", "RightMargin", "850");
  emit letters_.Active()->view().MarginsDragged(1701, 900);
  EXPECT_EQ(own_margins(), std::pair(1701, 1134));
  EXPECT_EQ(StoredMargins(session_.settings), (PageMargins{.right = 900}));
  letters_.Active()->letter().members().Changed = false;
}

// Beside the window's work, some time after a change.
TEST_F(OpenLettersTest, FindsWhereThePagesEndOnPaper) {
  letters_.ShowAsPages(true);
  SaveTemplate("Long", "\\margt1440\\margb1440 one\\par\\page two\\par three\\page four");
  letters_.Open(Entry("Templates/Long"));
  LetterEditor& editor = letters_.Active()->editor();
  const auto sheet_ends_below = [&](const char* text) {
    QTextCursor line = editor.document()->find(QLatin1String(text));
    const double top = editor.cursorRect(line).top() + editor.verticalScrollBar()->value();
    const PaperLook& look = editor.paper().Look();
    const double end = top + PixelsOfTwips(look.height - look.top + kDesk);
    const int shown = editor.verticalScrollBar()->maximum() + editor.viewport()->height();
    // Within the height of a break's line, with which the page may begin.
    return std::abs(shown - end) < 40;
  };
  EXPECT_TRUE(QTest::qWaitFor([&] { return sheet_ends_below("four"); }, 20'000));
  QTextCursor end(editor.document());
  end.movePosition(QTextCursor::End);
  editor.setTextCursor(end);
  editor.InsertPageBreak();
  QTest::keyClicks(&editor, "five");
  EXPECT_TRUE(QTest::qWaitFor([&] { return sheet_ends_below("five"); }, 20'000));
  letters_.Active()->letter().members().Changed = false;
}

TEST_F(OpenLettersTest, DeletesALetterWhetherItIsOpenOrNot) {
  for (const bool open : {false, true}) {
    const auto path = SaveTemplate("Old", "x");
    const TreeModel::Entry entry = Entry("Templates/Old");
    if (open) {
      letters_.Open(entry);
      letters_.Active()->letter().rtfLetter.SetText("changed, and nobody asks to save it");
    }
    platform_.dialogs.WillPress(Answer::kNo).WillPress(Answer::kYes);
    letters_.Delete(entry);
    EXPECT_TRUE(std::filesystem::exists(path));
    letters_.Delete(entry);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(tree_.model().IndexOfKey("Templates/Old").isValid());
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_THAT(desk_.Letters(), IsEmpty());
  }
}

TEST_F(OpenLettersTest, CancellingOneQuestionKeepsAllLettersOpen) {
  for (const char* name : {"One", "Two"}) {
    SaveTemplate(name, "text");
    letters_.Open(Entry(QString("Templates/") + name));
    QTest::keyClicks(&letters_.Active()->editor(), "new");
  }
  platform_.dialogs.WillPress(Answer::kNo).WillPress(Answer::kCancel);
  EXPECT_FALSE(desk_.CloseAll());
  EXPECT_EQ(desk_.Letters().size(), 2U);
  EXPECT_TRUE(desk_.Letters()[0]->letter().members().Changed);
  platform_.dialogs.WillPress(Answer::kNo).WillPress(Answer::kYes);
  EXPECT_TRUE(desk_.CloseAll());
  EXPECT_THAT(desk_.Letters(), IsEmpty());
  EXPECT_THAT(ReadWholeFile(Data() / "Templates/One.rtf"), Not(HasSubstr("new")));
  EXPECT_THAT(ReadWholeFile(Data() / "Templates/Two.rtf"), HasSubstr("newtext"));
}

// The marks of a changed letter go when what changed it is undone, and come back.
TEST_F(OpenLettersTest, AnUndoneLetterIsUnchangedAgain) {
  SaveTemplate("One", "text");
  letters_.Open(Entry("Templates/One"));
  LetterWindow& window = *letters_.Active();
  const auto marked = [&] {
    QCoreApplication::processEvents();
    EXPECT_EQ(InFront().Changed, window.isWindowModified());
    return window.isWindowModified();
  };
  EXPECT_FALSE(marked());
  QTest::keyClicks(&window.editor(), "x");
  EXPECT_TRUE(marked());
  window.editor().Undo();
  EXPECT_FALSE(marked());
  window.editor().Redo();
  EXPECT_TRUE(marked());
  EXPECT_TRUE(window.letter().Save());
  EXPECT_FALSE(marked());
  window.editor().Undo();
  EXPECT_TRUE(marked());
  window.letter().rtfLetter.SetTextRTF("{\\rtf1 merged}");
  EXPECT_TRUE(window.letter().Save());  // before it is shown
  EXPECT_FALSE(marked());
  window.editor().Undo();
  EXPECT_TRUE(marked());
  window.letter().members().Changed = false;
}

TEST_F(OpenLettersTest, WritesTheLettersOfTheFolderThatTheInsertListIsNamedFor) {
  session_.cheque_word = "Cheque";
  letters_.StartNew("Cheque");
  EXPECT_EQ(letters_.CurrentList(), TemplateKind::kCheque);
  platform_.dialogs.WillType("Trust account");
  letters_.WithActive([](frmLetter& letter) { letter.SaveAs(); });
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre("Enter the name for this Cheque"));
  EXPECT_TRUE(std::filesystem::exists(Data() / "Cheque/Trust account.rtf"));
  EXPECT_EQ(letters_.Active()->windowTitle().toStdString(), "[*]Trust account : Cheque");
}

}  // namespace
}  // namespace tenora
