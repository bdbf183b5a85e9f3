// A template's letters looked at in its window, as a person does it with keys and mouse.
#include <gmock/gmock.h>

#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QTabBar>
#include <QTest>
#include <QTextBlock>
#include <QTimer>
#include <QToolButton>
#include <iostream>

#include "application.h"
#include "platform/runtime/files.h"
#include "support/fake_platform.h"
#include "ui/dialogs/frm_generate.h"
#include "ui/window/main/frm_main.h"

namespace tenora {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class PreviewInTheWindow : public ::testing::Test {
 protected:
  PreviewInTheWindow() {
    platform_.InstallSampleDatabase();
    session_.settings.SaveSettingText("Mail", "FormsAtStartup", "1");
    window_ = std::make_unique<frmMain>(parts_);
    window_->resize(1200, 800);
    window_->MDIForm_Load();
    window_->show();
    QCoreApplication::processEvents();
  }
  ~PreviewInTheWindow() override {
    for (LetterWindow* letter : window_->desk().Letters()) delete letter->parentWidget();
  }
  void Open(const std::string& text, const char* folder = "Templates") {
    const auto path = platform_.ProgramFolder() / folder / "Notice.rtf";
    std::filesystem::create_directories(path.parent_path());
    WriteWholeFile(path, "{\\rtf1\\ansi " + text + "\\par}");
    window_->tree().RefreshTree();
    window_->letters().OpenFile(path);
    QCoreApplication::processEvents();
  }
  LetterWindow& Front() { return *window_->desk().Active(); }
  void Press(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
    window_->activateWindow();  // again, where a dialog was in front
    QCoreApplication::processEvents();
    QTest::keyClick(window_->focusWidget(), key, with);
    QCoreApplication::processEvents();
    WaitForRecipients();
  }
  void Click(const char* button) {
    The<QAbstractButton>(button)->click();
    WaitForRecipients();
  }
  // They are read beside the window.
  void WaitForRecipients() {
    while (Place().starts_with("Reading")) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
  }
  template <typename Widget>
  Widget* The(const char* name) {
    return Front().findChild<Widget*>(QLatin1String(name));
  }
  std::string Seen() { return Front().shown_editor().toPlainText().trimmed().toStdString(); }
  std::string Place() { return The<QLabel>("lblPreviewed")->text().toStdString(); }
  std::string Finding(int row) {
    return The<QListWidget>("lstPreviewFindings")->item(row)->text().toStdString();
  }
  QAction* Command(const char* name) { return window_->findChild<QAction*>(name); }

  test::FakePlatform platform_;
  Session session_{platform_.Parts()};
  CommandLine line_{""};
  CommandParts parts_{line_, session_, [] { return printing::Printers::Create({}); }, std::cout,
                      std::cerr};
  std::unique_ptr<frmMain> window_;
};

TEST_F(PreviewInTheWindow, StepsFromPersonToPersonAndBackToTheCodes) {
  std::string text;
  for (int i = 0; i < 80; ++i) text += "Line " + std::to_string(i) + "\\par ";
  Open("Dear <<Tenant Name>> of <<Tenant Code>>\\par " + text);
  LetterEditor& codes = Front().editor();
  // Unsaved words are in the preview too.
  QTest::keyClicks(&codes, "Kia ora. ");
  QTextCursor caret(codes.document()->findBlockByNumber(60));
  codes.setTextCursor(caret);
  codes.paper().SetZoom(1.5);
  QCoreApplication::processEvents();
  const int scrolled = codes.verticalScrollBar()->value();
  ASSERT_GT(scrolled, 0);
  const int undo_steps = codes.document()->availableUndoSteps();

  Press(Qt::Key_F9);
  const std::vector<TenantRecord>& tenants = session_.caches.Tenants;
  std::vector<const TenantRecord*> open;
  for (const TenantRecord& tenant : tenants) {
    if (!tenant.Closed) open.push_back(&tenant);
  }
  const auto expect = [&](std::size_t number, std::size_t count, const TenantRecord& tenant) {
    EXPECT_EQ(Place(), std::to_string(number) + " of " + std::to_string(count) + ": " +
                           (tenant.Closed ? "(Closed) " : "") + tenant.KeyName + " (" +
                           tenant.PropertyCode + ")");
    EXPECT_THAT(Seen(), testing::StartsWith("Kia ora. Dear " + tenant.KeyName + " of " +
                                            tenant.Reference + "\n"));
    const auto* tabs = window_->desk().findChild<QTabBar*>();
    EXPECT_THAT(tabs->tabText(tabs->currentIndex()).toStdString(),
                HasSubstr(" – preview of " + tenant.KeyName));
  };
  expect(1, open.size(), *open[0]);
  EXPECT_EQ(Front().shown_editor().paper().Zoom(), 1.5);
  Press(Qt::Key_PageDown, Qt::AltModifier);
  Press(Qt::Key_PageDown, Qt::AltModifier);
  expect(3, open.size(), *open[2]);
  The<QToolButton>("cmdPrevious")->click();
  expect(2, open.size(), *open[1]);
  Press(Qt::Key_End, Qt::AltModifier);
  expect(open.size(), open.size(), *open.back());
  EXPECT_FALSE(The<QToolButton>("cmdNext")->isEnabled());
  The<QCheckBox>("chkClosedToo")->click();
  expect(open.size(), tenants.size(), *open.back());
  Press(Qt::Key_End, Qt::AltModifier);
  EXPECT_THAT(Place(), HasSubstr(": (Closed) "));
  The<QCheckBox>("chkClosedToo")->click();
  expect(1, open.size(), *open[0]);

  // The letter is not to be written in, but read: typing tells so and changes nothing.
  QTest::keyClicks(&Front().shown_editor(), "x");
  expect(1, open.size(), *open[0]);
  Front().shown_editor().paper().SetZoom(1.2);
  Press(Qt::Key_Escape);
  EXPECT_FALSE(Front().Previewing());
  EXPECT_EQ(&Front().shown_editor(), QApplication::focusWidget());
  EXPECT_THAT(Seen(), testing::StartsWith("Kia ora. Dear <<Tenant Name>>"));
  EXPECT_EQ(codes.textCursor().position(), caret.position());
  EXPECT_EQ(codes.paper().Zoom(), 1.2);
  codes.paper().SetZoom(1.5);
  EXPECT_EQ(codes.verticalScrollBar()->value(), scrolled);
  EXPECT_TRUE(Front().letter().members().Changed);
  Command("mnuPreviewLetters")->trigger();
  EXPECT_TRUE(Front().Previewing());
  Command("mnuPreviewLetters")->trigger();
  codes.Undo();
  EXPECT_THAT(Seen(), testing::StartsWith("Dear <<Tenant Name>>"));
  EXPECT_LT(codes.document()->availableUndoSteps(), undo_steps + 4);
  EXPECT_FALSE(Front().letter().members().Changed);
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
}

TEST_F(PreviewInTheWindow, FindsPeopleAndWordsAndLetsNothingBeChanged) {
  Open("Dear <<Tenant Name>>, dear all");
  const std::string source = Front().letter().rtfLetter.TextRTF();
  Click("cmdPreview");
  auto* search = The<QLineEdit>("txtRecipientSearch");
  search->setFocus();
  QTest::keyClicks(search, "ELODIE");
  EXPECT_THAT(Place(), HasSubstr("1 of 2: Élodie "));
  EXPECT_THAT(Seen(), HasSubstr("Dear Élodie "));
  const std::string first = Place();
  Press(Qt::Key_Down);
  EXPECT_THAT(Place(), HasSubstr("2 of 2: Élodie "));
  Press(Qt::Key_Up);
  EXPECT_EQ(Place(), first);
  QTest::keyClicks(search, " nobody");
  EXPECT_EQ(Place(), "Nobody is found");
  EXPECT_EQ(Seen(), "Dear <<Tenant Name>>, dear all");
  search->clear();
  // Who was shown last is still there.
  EXPECT_THAT(Seen(), HasSubstr("Dear Élodie "));

  platform_.dialogs.WillType("Dear");
  Command("mnuFind")->trigger();
  EXPECT_EQ(Front().shown_editor().textCursor().selectedText(), "Dear");
  EXPECT_EQ(Front().shown_editor().textCursor().selectionStart(), 0);
  Command("mnuFindAgain")->trigger();
  EXPECT_GT(Front().shown_editor().textCursor().selectionStart(), 0);
  Command("mnuReplace")->trigger();
  EXPECT_EQ(window_->findChild<QLineEdit*>("txtFind")->text(), "dear");
  window_->findChild<QPushButton*>("cmdFindNext")->click();
  EXPECT_EQ(Front().shown_editor().textCursor().selectedText(), "Dear");
  for (const char* button : {"cmdReplace", "cmdReplaceAll"}) {
    EXPECT_FALSE(window_->findChild<QPushButton*>(button)->isEnabled()) << button;
  }
  for (const char* command : {"mnuInsertPicture", "mnuInsertExcel", "mnuInsertObject",
                              "mnuSpelling", "mnuExportPdf", "mnuEmail"}) {
    EXPECT_FALSE(Command(command)->isEnabled()) << command;
  }
  EXPECT_FALSE(window_->findChild<QWidget*>("cboInsert")->isEnabled());
  for (QAction* action : window_->findChild<EditorActions*>()->FormatActions()) {
    EXPECT_TRUE(action->isSeparator() || !action->isEnabled()) << qPrintable(action->text());
  }
  QTest::keyClicks(search, "ELODIE");
  Click("cmdPreview");
  // The next preview is of everyone again.
  EXPECT_EQ(search->text(), "");
  EXPECT_TRUE(Command("mnuInsertPicture")->isEnabled());
  EXPECT_TRUE(window_->findChild<QPushButton*>("cmdReplaceAll")->isEnabled());
  EXPECT_EQ(Front().letter().rtfLetter.TextRTF(), source);
  EXPECT_FALSE(Front().letter().members().Changed);
}

TEST_F(PreviewInTheWindow, AsksItsQuestionsOnceAndListsWhatIsWrong) {
  Open("<<?Which day?>> <<?Greeting?>> <<Tenant Nmae>>");
  int asked = 0;
  const auto answer = [&](const char* field, const char* text) {
    auto* wait = new QTimer(window_.get());
    wait->start();
    QObject::connect(wait, &QTimer::timeout, [&asked, wait, field, text] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (dialog == nullptr) return;
      wait->deleteLater();
      wait->stop();
      ++asked;
      dialog->findChild<QLineEdit*>(QLatin1String(field))->setText(text);
      QTest::keyClick(dialog, Qt::Key_Return);
    });
  };
  answer("txtAnswer1", "Friday");
  Press(Qt::Key_F9);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(Seen(), "Friday <<?Greeting?>> <<Tenant Nmae>>");
  EXPECT_THAT(Finding(0), HasSubstr("Would be held back: Tenant Nmae: "));
  EXPECT_THAT(Finding(1), HasSubstr("Greeting: this question has no answer yet"));
  auto* findings = The<QListWidget>("lstPreviewFindings");
  window_->resize(900, 700);  // where they are below the letter
  const int height = findings->height();
  findings->setFocus();
  findings->setCurrentRow(1);
  Press(Qt::Key_Return);
  EXPECT_EQ(Front().shown_editor().textCursor().selectedText(), "<<?Greeting?>>");

  Press(Qt::Key_PageDown, Qt::AltModifier);
  EXPECT_EQ(Seen(), "Friday <<?Greeting?>> <<Tenant Nmae>>");
  answer("txtAnswer2", "Kia ora");
  The<QPushButton>("cmdAnswers")->click();
  EXPECT_EQ(Seen(), "Friday Kia ora <<Tenant Nmae>>");
  // The answers are there the next time, and nothing is asked again.
  Press(Qt::Key_Escape);
  Press(Qt::Key_F9);
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(Seen(), "Friday Kia ora <<Tenant Nmae>>");
  Press(Qt::Key_Escape);
  Front().letter().rtfLetter.SetText("Nothing to ask.");
  Front().ShowLetter();
  Press(Qt::Key_F9);
  EXPECT_TRUE(The<QPushButton>("cmdAnswers")->isHidden());
  EXPECT_EQ(Finding(0), "Nothing is wrong with this letter.");
  // Which takes a line, and no more of the letter's room.
  EXPECT_LT(findings->height(), height);
}

TEST_F(PreviewInTheWindow, SaysInItsBarThatTheDatabaseIsMissing) {
  Open("Dear <<Tenant Name>>");
  const auto database = platform_.ProgramFolder() / "property.mdb";
  Press(Qt::Key_F9);
  std::filesystem::rename(database, platform_.folder / "away.mdb");
  Press(Qt::Key_PageDown, Qt::AltModifier);
  EXPECT_THAT(The<QLabel>("lblPreviewed")->toolTip().toStdString(),
              HasSubstr("The rental database could not be read: "));
  EXPECT_THAT(Finding(0), HasSubstr("property.mdb"));
  EXPECT_EQ(Seen(), "Dear <<Tenant Name>>");
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
  std::filesystem::rename(platform_.folder / "away.mdb", database);
  Press(Qt::Key_F5);
  EXPECT_THAT(Place(), testing::StartsWith("2 of "));
  EXPECT_THAT(Seen(), testing::Not(HasSubstr("<<")));
}

TEST_F(PreviewInTheWindow, IsPrintedByGeneratingTheLetter) {
  Open("Dear <<Name>>", "Owner Templates");
  Press(Qt::Key_F9);
  Press(Qt::Key_PageDown, Qt::AltModifier);
  const std::string owner = Front().PreviewedRecipient()->name;
  EXPECT_EQ(Seen(), "Dear " + owner);
  // The print preview shows the letter, and its title whose.
  Command("mnuPrintPreview")->trigger();
  QPointer<QWidget> pages;
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (widget->objectName() == "frmPreview") pages = widget;
  }
  ASSERT_NE(pages, nullptr);
  EXPECT_THAT(pages->windowTitle().toStdString(), HasSubstr("Notice – preview of " + owner));

  std::vector<std::string> ticked;
  QTimer::singleShot(0, [&] {
    auto* dialog = qobject_cast<frmGenerate*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    for (const Recipient& recipient : dialog->Request().recipients) {
      ticked.push_back(recipient.name);
    }
    dialog->reject();
  });
  pages->findChild<QAction*>("mnuPrint")->trigger();
  EXPECT_EQ(ticked, std::vector<std::string>{owner});
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
  // Behind the preview, the template is still one.
  Press(Qt::Key_Escape);
  Command("mnuPrint")->trigger();
  EXPECT_THAT(platform_.dialogs.Texts(),
              testing::ElementsAre(HasSubstr("This letter should be 'Generated'")));
}

}  // namespace
}  // namespace tenora
