#include <gmock/gmock.h>

#include <QDialog>
#include <QDockWidget>
#include <QLabel>
#include <QListWidget>
#include <QStatusBar>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <iostream>
#include <set>

#include "application.h"
#include "letters/file_names.h"
#include "letters/generation.h"
#include "merge/merge_codes.h"
#include "platform/runtime/files.h"
#include "support/fake_platform.h"
#include "ui/window/background/background_work.h"
#include "ui/window/main/frm_main.h"

namespace tenora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// No printer where `count` is 0.
class FewPrinters : public printing::Printers {
 public:
  explicit FewPrinters(int count) : count_(count), real_(Create({})) {}
  int Count() const override { return count_; }
  std::vector<std::string> Names() const override { return real_->Names(); }
  void SetDataFolder(const std::filesystem::path& folder) override { real_->SetDataFolder(folder); }
  bool SetCurrent(std::string_view name) override { return real_->SetCurrent(name); }
  printing::Printer& Current() override { return real_->Current(); }
  void UseDefault() override { real_->UseDefault(); }
  bool Choose(Dialogs& dialogs, Offer offer, int page_count) override {
    return real_->Choose(dialogs, offer, page_count);
  }

 private:
  int count_;
  std::unique_ptr<Printers> real_;
};

class MainWindow : public ::testing::Test {
 protected:
  MainWindow() { session_.settings.SaveSettingText("Mail", "FormsAtStartup", "1"); }

  void Load() {
    parts_ = std::make_unique<CommandParts>(
        CommandParts{line_, session_, [this] { return std::make_unique<FewPrinters>(printers_); },
                     std::cout, std::cerr});
    window_ = std::make_unique<frmMain>(*parts_);
    window_->MDIForm_Load();
  }
  QStringList Groups() {
    QStringList names;
    for (int row = 0; row < window_->tree().model().rowCount(); ++row) {
      names << window_->tree().model().index(row, 0).data().toString();
    }
    return names;
  }
  void Trigger(const char* action) { window_->findChild<QAction*>(action)->trigger(); }

  test::FakePlatform platform_;
  Session session_{platform_.Parts()};
  CommandLine line_{"/NewFormsInstalled"};
  int printers_ = 1;
  std::unique_ptr<CommandParts> parts_;
  std::unique_ptr<frmMain> window_;
};

TEST_F(MainWindow, ComesUpWithItsGroupsWhereTheDatabaseIsMissing) {
  Load();
  EXPECT_EQ(Groups(), QStringList({"Templates", "Owner Templates", "Cheque", "Tenants", "Owners"}));
  ASSERT_EQ(platform_.dialogs.shown().size(), 1U);
  EXPECT_THAT(platform_.dialogs.shown()[0].text, HasSubstr("General Errors..."));
}

TEST_F(MainWindow, GoesOnPastAStepThatFails) {
  platform_.InstallSampleDatabase();
  session_.settings.SaveSettingText("Mail", "PrinterPageWidth", "wide");
  Load();
  ASSERT_EQ(platform_.dialogs.shown().size(), 1U);
  EXPECT_EQ(platform_.dialogs.shown()[0].title, "frmMain - MDIForm_Load");
  EXPECT_THAT(platform_.dialogs.shown()[0].text, HasSubstr("13 - "));
  EXPECT_FALSE(session_.caches.Tenants.empty());
  EXPECT_FALSE(session_.database.IsOpen());
}

TEST_F(MainWindow, ReadsThePageWidthOnlyWhereThereIsAPrinter) {
  platform_.InstallSampleDatabase();
  session_.settings.SaveSettingText("Mail", "PrinterPageWidth", "wide");
  printers_ = 0;
  Load();
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
}

TEST_F(MainWindow, TellsOfNewFormsOnce) {
  platform_.InstallSampleDatabase();
  Load();
  window_->show();
  QCoreApplication::processEvents();
  window_->hide();
  window_->show();
  QCoreApplication::processEvents();
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre("New template forms have been installed.  They are available on the left "
                          "side of the screen in the 'Templates' group"));
}

TEST_F(MainWindow, GivesNoKeyToTwoCommandsSinceNeitherWouldWork) {
  Load();
  Trigger("mnuNewTenantTemplate");
  std::set<QString> keys;
  for (const QAction* action : window_->findChildren<QAction*>()) {
    for (const QKeySequence& key : action->shortcuts()) {
      EXPECT_TRUE(keys.insert(key.toString()).second) << qPrintable(key.toString());
    }
  }
  EXPECT_TRUE(keys.contains("Ctrl+W"));
}

TEST_F(MainWindow, NamesTheLetterAndThePersonInItsTitleAndTheTab) {
  platform_.InstallSampleDatabase();
  const auto data = session_.database.DataFolder();
  Load();
  window_->show();
  const TenantRecord& tenant = session_.caches.Tenants.at(0);
  const auto folder = data / RecipientFolderName(tenant.KeyName);
  for (const auto& file : {folder / "Rent review.rtf", data / "Templates/Q & A [*].rtf"}) {
    std::filesystem::create_directories(file.parent_path());
    WriteWholeFile(file, "{\\rtf1 x}");
  }
  window_->tree().RefreshTree();
  const QString program = " - Tenora Mail Merge Facility";
  const auto expect = [&](const QString& name) {
    QCoreApplication::processEvents();
    const auto* tabs = window_->desk().findChild<QTabBar*>();
    // Of two "&" in a row a tab shows one, and of one none.
    EXPECT_EQ(tabs->tabText(tabs->currentIndex()), QString(name).replace("&", "&&"));
    // As the platform's own title bar has it.
    const QString mark = window_->isWindowModified() ? "*" : "";
    EXPECT_EQ(
        window_->windowTitle().replace("[*][*]", "\1").replace("[*]", mark).replace("\1", "[*]"),
        name + program);
  };
  EXPECT_EQ(window_->windowTitle() + " - ", program.mid(3) + " - ");
  window_->letters().OpenFile(folder / "Rent review.rtf");
  const QString letter = "Rent review - " + QString::fromStdString(tenant.KeyName);
  expect(letter);
  QTest::keyClick(&window_->desk().Active()->editor(), Qt::Key_X);
  expect("*" + letter);
  Trigger("mnuSave");
  expect(letter);
  window_->letters().OpenFile(data / "Templates/Q & A [*].rtf");
  expect("Q & A [*] : Templates");
  Trigger("mnuTile");
  Trigger("mnuTabs");
  expect("Q & A [*] : Templates");
  window_->desk().findChild<QTabBar*>()->moveTab(1, 0);
  QTest::keyClick(&window_->desk().Active()->editor(), Qt::Key_X);
  expect("*Q & A [*] : Templates");
  Trigger("mnuSave");
  expect("Q & A [*] : Templates");
  Trigger("mnuNewTenantTemplate");
  expect("New letter 1 : New Templates");
  Trigger("mnuNewOwnerTemplate");
  expect("New letter 2 : New Owner Templates");
  platform_.dialogs.WillCancel();
  Trigger("mnuSaveAs");
  expect("New letter 2 : New Owner Templates");
  WriteWholeFile(data / "Owner Templates", "a file where the folder should be");
  platform_.dialogs.WillType("Statement.rtf");
  Trigger("mnuSaveAs");
  expect("*New letter 2 : New Owner Templates");
  std::filesystem::remove(data / "Owner Templates");
  platform_.dialogs.WillType("Statement.rtf");
  Trigger("mnuSaveAs");
  EXPECT_EQ(platform_.dialogs.shown().back().default_answer, "Statement.rtf");
  expect("Statement : Owner Templates");
  window_->desk().CloseAll();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(window_->windowTitle() + " - ", program.mid(3) + " - ");
}

TEST_F(MainWindow, OpensTheFilesOfItsCommandLine) {
  const auto folder = platform_.ProgramFolder() / "Templates";
  std::filesystem::create_directories(folder);
  WriteWholeFile(folder / "Notice.rtf", "{\\rtf1 x}");
  session_.settings.SaveSettingText("Mail", "FormsAtStartup", "0");
  Load();
  platform_.dialogs.ForgetShown();
  parts_->files = {folder / "Notice.rtf", folder / "None.rtf"};
  window_ = std::make_unique<frmMain>(*parts_);
  window_->show();
  EXPECT_TRUE(QTest::qWaitFor([&] { return window_->desk().Active() != nullptr; }));
  EXPECT_EQ(window_->desk().Active()->letter().members().FilePath, folder / "Notice.rtf");
  EXPECT_TRUE(QTest::qWaitFor([&] { return platform_.dialogs.shown().size() == 2; }));
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("53 - File not found: "));
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("None.rtf"));
}

// A letter that was held back, and corrected before the program ended without saving it.
TEST_F(MainWindow, ShowsOneThingAfterTheOtherAtItsStartAndTheRecoveredLetterInFront) {
  platform_.InstallSampleDatabase();
  const auto data = session_.database.DataFolder();
  std::filesystem::create_directories(data / "Templates");
  WriteWholeFile(data / "Templates/Notice.rtf", "{\\rtf1 Dear <<Tenant Nmae>>}");
  session_.settings.SaveSettingText("Mail", "FormsAtStartup", "0");
  Load();
  GenerationRequest request;
  request.template_kind = "Templates";
  request.template_name = "Notice";
  request.recipients = {{"Mei Huang", "T00007"}};
  GenerationObserver observer;
  ASSERT_EQ(GenerateSelection(session_, request, observer).held.size(), 1U);
  ASSERT_TRUE((window_->tree().RefreshTree(),
               window_->letters().OpenListed(data / "Mei Huang/Notice.rtf")));
  window_->desk().Active()->letter().rtfLetter.SetText("Dear Mei");
  window_->KeepLetters();
  window_.reset();
  platform_.dialogs.ForgetShown();

  window_ = std::make_unique<frmMain>(*parts_);
  window_->MDIForm_Load();
  const std::pair<const char*, const char*> steps[] = {{"frmUnfinishedRuns", "cmdResume"},
                                                       {"frmUnfinishedRuns", "cmdLook"},
                                                       {"frmRunReport", "cmdOpen"},
                                                       {"frmUnsavedLetters", "cmdRecover"}};
  std::size_t done = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    QWidget* dialog = QApplication::activeModalWidget();
    if (dialog == nullptr || done == std::size(steps)) return;
    const auto [name, button] = steps[done++];
    EXPECT_EQ(dialog->objectName(), name);
    if (auto* letters = dialog->findChild<QTreeWidget*>("lstLetters")) {
      letters->topLevelItem(0)->setCheckState(0, Qt::Checked);
    }
    dialog->findChild<QAbstractButton*>(button)->click();
  });
  timer.start(0);
  window_->show();
  const auto in_front = [&] {
    const LetterWindow* letter = window_->desk().Active();
    return letter == nullptr ? "" : letter->letter().rtfLetter.Text();
  };
  EXPECT_TRUE(QTest::qWaitFor([&] { return in_front() == "Dear Mei"; }));
  EXPECT_EQ(done, std::size(steps));
  EXPECT_EQ(window_->desk().Letters().size(), 1U);
  EXPECT_EQ(window_->findChild<QDialog*>("frmForms"), nullptr);
  // Resumed, the run would have handed over the letter without its correction.
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre(HasSubstr("New template forms"), HasSubstr("Recover or discard them")));
  window_->desk().Active()->letter().members().Changed = false;
}

TEST_F(MainWindow, ShowsTheCheckOfTheLetterInFrontAndNoOther) {
  const auto folder = platform_.ProgramFolder() / "Templates";
  std::filesystem::create_directories(folder);
  WriteWholeFile(folder / "Wrong.rtf", "{\\rtf1 <<Tenant Nmae>>}");
  WriteWholeFile(folder / "Other.rtf", "{\\rtf1 x}");
  Load();
  window_->show();
  const auto open = [&](const char* key) {
    TreeModel& model = window_->tree().model();
    window_->letters().Open(*model.EntryAt(model.IndexOfKey(key)));
    QCoreApplication::processEvents();
  };
  auto* panel = window_->findChild<QDockWidget*>("dckTemplateCheck");
  auto* list = window_->findChild<QListWidget*>("lstFindings");
  const auto said = [&] {
    return panel->windowTitle().toStdString() + "|" + list->item(0)->text().toStdString();
  };
  open("Templates/Wrong");
  Trigger("mnuCheckTemplate");
  EXPECT_THAT(said(), HasSubstr("Wrong"));
  EXPECT_THAT(said(), HasSubstr("<<Tenant Nmae>>"));
  open("Templates/Other");
  EXPECT_THAT(said(), HasSubstr("Other"));
  EXPECT_THAT(said(), HasSubstr("has not been checked"));
  open("Templates/Wrong");
  EXPECT_THAT(said(), HasSubstr("<<Tenant Nmae>>"));
  window_->desk().Active()->CloseNow();
  EXPECT_TRUE(QTest::qWaitFor([&] { return window_->desk().Letters().size() == 1; }));
  EXPECT_THAT(said(), HasSubstr("has not been checked"));
  window_->desk().Active()->CloseNow();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !panel->isVisible(); }));
}

TEST_F(MainWindow, OffersTheFilesOpenedLastAndGreysThoseThatAreGone) {
  platform_.InstallSampleDatabase();
  const auto data = session_.database.DataFolder();
  Load();
  const TenantRecord& tenant = session_.caches.Tenants.at(1);
  const auto folder = data / RecipientFolderName(tenant.KeyName);
  const std::filesystem::path files[] = {data / "Templates/This & that.rtf", folder / "Rent.rtf",
                                         platform_.folder / "Elsewhere.rtf"};
  for (const auto& file : files) {
    std::filesystem::create_directories(file.parent_path());
    WriteWholeFile(file, "{\\rtf1 x}");
  }
  window_->tree().RefreshTree();
  auto* menu = window_->findChild<QMenu*>("mnuRecent");
  const auto listed = [&] {
    emit menu->aboutToShow();
    QStringList names;
    for (QAction* action : menu->actions()) {
      if (!action->isSeparator()) names << action->text() + (action->isEnabled() ? "" : " -");
    }
    return names;
  };
  EXPECT_EQ(listed(), QStringList({"No file has been opened yet -", "&Clear List -"}));
  window_->letters().OpenFile(files[0]);
  window_->letters().OpenFile(files[1]);
  platform_.dialogs.WillChoose(1);
  window_->letters().OpenFile(files[2]);
  const QString person = QString::fromStdString(tenant.KeyName);
  const QString place = QString::fromStdString(files[2].parent_path().filename().string());
  EXPECT_EQ(listed(), QStringList({"&1 Elsewhere - " + place, "&2 Rent - " + person,
                                   "&3 This && that - Templates", "&Clear List"}));
  window_->desk().CloseAll();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  std::filesystem::remove(files[0]);
  // As in a later run, and nobody is asked again what they are.
  Load();
  menu = window_->findChild<QMenu*>("mnuRecent");
  listed();
  menu->actions()[1]->trigger();
  EXPECT_EQ(window_->desk().Active()->letter().members().TenantCode, tenant.Reference);
  EXPECT_EQ(listed(), QStringList({"&1 Rent - " + person, "&2 Elsewhere - " + place,
                                   "&3 This && that - Templates -", "&Clear List"}));
  menu->actions()[1]->trigger();
  EXPECT_EQ(window_->desk().Active()->letter().members().Kind, "Owner Templates");
  platform_.dialogs.WillType("Another name");
  Trigger("mnuSaveAs");
  EXPECT_EQ(listed().front(), "&1 Another name - Owner Templates");
  menu->actions().back()->trigger();
  EXPECT_EQ(listed(), QStringList({"No file has been opened yet -", "&Clear List -"}));
}

TEST_F(MainWindow, OffersTheCodesThatFitTheLetterInFront) {
  platform_.InstallSampleDatabase();
  Load();
  EXPECT_TRUE(window_->findChild<QMenu*>("mnuTenantCustom")->menuAction()->isVisible());
  struct Case {
    const char* command;
    const char* list;
    const char* menu;
    std::size_t codes;
  };
  for (const Case& c : {Case{"mnuNewTenantTemplate", "Tenant", "mnuInsertItem",
                             MergeCodesOf(TemplateKind::kTenant).size()},
                        Case{"mnuNewOwnerTemplate", "Owner", "mnuInsertItemOwner",
                             MergeCodesOf(TemplateKind::kOwner).size()},
                        Case{"mnuNewChequeTemplate", "Cheque", "mnuInsertItemCheque",
                             MergeCodesOf(TemplateKind::kCheque).size()}}) {
    Trigger(c.command);
    EXPECT_EQ(window_->findChild<QAction*>("mnuFormat")->text(), QString(c.list) + " Format");
    auto* menu = window_->findChild<QMenu*>(c.menu);
    EXPECT_EQ(menu->title(), QString("Insert ") + c.list);
    EXPECT_EQ(static_cast<std::size_t>(menu->actions().size()), c.codes);
    for (const char* other : {"mnuInsertItem", "mnuInsertItemOwner", "mnuInsertItemCheque"}) {
      EXPECT_EQ(window_->findChild<QMenu*>(other)->menuAction()->isVisible(),
                std::string_view(other) == c.menu);
    }
    menu->actions()[1]->trigger();
    frmLetter& letter = window_->desk().Active()->letter();
    EXPECT_EQ(letter.rtfLetter.Text(), "<<" + menu->actions()[1]->text().toStdString() + ">>");
    letter.members().Changed = false;
  }
  EXPECT_FALSE(window_->findChild<QMenu*>("mnuTenantCustom")->isEmpty());
  EXPECT_FALSE(window_->findChild<QMenu*>("mnuInsertForms")->menuAction()->isVisible());
  auto* combo = window_->findChild<QComboBox*>("cboInsert");
  combo->setCurrentIndex(1);
  emit combo->activated(1);
  EXPECT_EQ(combo->currentIndex(), -1);
  EXPECT_EQ(window_->desk().Active()->letter().rtfLetter.Text(), "<<Payee Name>><<Payee Name>>");
  window_->desk().Active()->letter().members().Changed = false;
}

TEST_F(MainWindow, PutsConditionsAndListsAroundTheSelection) {
  platform_.InstallSampleDatabase();
  Load();
  Trigger("mnuNewTenantTemplate");
  frmLetter& letter = window_->desk().Active()->letter();
  letter.rtfLetter.SetText("you owe something");
  letter.rtfLetter.Select(0, 7);
  auto* menu = window_->findChild<QMenu*>("mnuInsertForms");
  EXPECT_TRUE(menu->menuAction()->isVisible());
  menu->actions()[0]->trigger();
  EXPECT_EQ(letter.rtfLetter.Text(), "<<If Balance Owing > 0>>you owe<<End If>> something");
  EXPECT_EQ(letter.rtfLetter.SelText(), "you owe");
  QMenu* payment = nullptr;
  for (QAction* action : menu->actions()) {
    if (action->text() == "Each Payment") payment = action->menu();
  }
  ASSERT_NE(payment, nullptr);
  payment->actions()[0]->trigger();
  EXPECT_EQ(letter.rtfLetter.Text(),
            "<<If Balance Owing > 0>><<Each Payment>>you owe<<End Each>><<End If>> something");
  payment->actions()[2]->trigger();
  EXPECT_EQ(letter.rtfLetter.Text(),
            "<<If Balance Owing > 0>><<Each Payment>><<Payment Date>><<End Each>><<End If>> "
            "something");
  letter.members().Changed = false;
}

TEST(RunInBackground, KeepsItsProgressFromCoveringAQuestionOfTheWork) {
  QWidget window;
  window.show();
  const QWidget* in_front = nullptr;
  RunInBackground(&window, "Generating", [&](WorkProgress&) {
    QMetaObject::invokeMethod(
        qApp,
        [&] {
          QDialog question(&window);
          // Set later than the progress's timer and longer, so that it rings behind it.
          QTimer::singleShot(1000, &question, [&] {
            in_front = QApplication::activeModalWidget();
            EXPECT_EQ(in_front, &question);
            question.accept();
          });
          question.exec();
        },
        Qt::BlockingQueuedConnection);
  });
  EXPECT_NE(in_front, nullptr);
}

TEST_F(MainWindow, RenamesOverNoFileAndTakesTheOpenLetterAlong) {
  platform_.InstallSampleDatabase();
  const auto folder = session_.database.DataFolder() / "Templates";
  std::filesystem::create_directories(folder);
  for (const char* name : {"One.rtf", "Two.rtf"}) WriteWholeFile(folder / name, "{\\rtf1 x}");
  Load();
  ctlTree& tree = window_->tree();
  TreeModel::Entry entry = *tree.model().EntryAt(tree.model().IndexOfKey("Templates/One"));
  window_->letters().Open(entry);
  QAbstractItemModel& listed = *tree.view().model();
  tree.view().setCurrentIndex(
      listed.match(listed.index(0, 0), Qt::DisplayRole, "One", 1, Qt::MatchRecursive).value(0));
  const auto rename = [&] {
    QMenu menu;
    tree.FillContextMenu(menu, entry);
    for (QAction* action : menu.actions()) {
      if (action->text() == "&Rename…") return action->trigger();
    }
    FAIL() << "nothing to rename with";
  };
  for (const char* taken : {"Two", "two"}) {
    platform_.dialogs.WillType(taken);
    rename();
    EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("Two.rtf\r\nNothing was renamed."));
    EXPECT_TRUE(std::filesystem::exists(folder / "One.rtf"));
  }
  platform_.dialogs.WillType("../Three.rtf").WillPress(Answer::kYes);
  rename();
  EXPECT_FALSE(std::filesystem::exists(folder / "One.rtf"));
  const LetterMembers& open = window_->desk().Active()->letter().members();
  EXPECT_EQ(std::filesystem::path(open.FilePath).parent_path(), folder);
  EXPECT_TRUE(std::filesystem::exists(open.FilePath));
  EXPECT_EQ(open.Kind, "Templates");
  ASSERT_NE(tree.Current(), nullptr);
  EXPECT_EQ(tree.Current()->path, open.FilePath);
}

// T00005 and T00006 are called Tama O'Brien: whom a letter is for shows in its name only.
TEST_F(MainWindow, GivesNoLetterTheNameOfANamesakes) {
  platform_.InstallSampleDatabase();
  const auto data = session_.database.DataFolder();
  std::filesystem::create_directories(data / "Templates");
  WriteWholeFile(data / "Templates" / "Notice.rtf", "{\\rtf1 <<Tenant Code>>}");
  Load();
  GenerationRequest request;
  request.template_kind = "Templates";
  request.template_name = "Notice";
  request.recipients = {{"Tama O'Brien", "T00005"}, {"Tama O'Brien", "T00006"}};
  GenerationObserver observer;
  ASSERT_TRUE(GenerateSelection(session_, request, observer).complete());
  const auto folder = data / "Tama O'Brien";
  std::filesystem::rename(folder / "Notice.rtf", folder / "Hers.rtf");
  TreeModel::Entry entry;
  entry.type = TreeModel::Type::kLetter;
  entry.name = "Notice(1)";
  entry.recipient = "Tama O'Brien";
  entry.path = folder / "Notice(1).rtf";
  QMenu menu;
  window_->tree().FillContextMenu(menu, entry);
  platform_.dialogs.WillType("Notice");
  for (QAction* action : menu.actions()) {
    if (action->text() == "&Rename…") action->trigger();
  }
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("was made for another one called"));
  EXPECT_TRUE(std::filesystem::exists(entry.path));
}

class RentalDataInTheWindow : public MainWindow {
 protected:
  int Tenants() {
    TreeModel& model = window_->tree().model();
    return model.rowCount(model.Group("Tenants"));
  }
  bool HasTenant(const char* name) {
    TreeModel& model = window_->tree().model();
    return !model
                .match(model.index(0, 0), Qt::DisplayRole, QString(name), 1,
                       Qt::MatchExactly | Qt::MatchRecursive)
                .isEmpty();
  }
  // As another program does.
  void Rename(const char* code, const std::string& name) {
    query::Workspace::Create()
        ->OpenDatabase(platform_.ProgramFolder() / "property.mdb")
        ->Execute("update tenancy set name = '" + name + "' where reference = '" + code + "'");
  }
};

TEST_F(RentalDataInTheWindow, FindsADatabaseThatTurnsUp) {
  const auto folder = platform_.ProgramFolder(), database = folder / "property.mdb";
  std::filesystem::remove_all(folder);
  Load();
  ASSERT_EQ(platform_.dialogs.shown().size(), 1U);
  EXPECT_EQ(platform_.dialogs.shown()[0].other_button, "&Browse…");
  EXPECT_EQ(Tenants(), 0);
  std::filesystem::create_directories(folder);
  // The first part of a slow copy.
  WriteWholeFile(database, ReadWholeFile(test::SampleDatabase()).substr(0, 10'000));
  EXPECT_TRUE(QTest::qWaitFor([&] { return !window_->findChild<QTimer*>("tmrLook")->isActive(); }));
  platform_.InstallSampleDatabase();
  EXPECT_TRUE(QTest::qWaitFor([&] { return Tenants() > 0; }));
  EXPECT_EQ(platform_.dialogs.shown().size(), 1U) << "nothing was tried aloud";
}

TEST_F(RentalDataInTheWindow, NoLongerSaysThatTheDatabaseIsMissingOnceItIsReadAtF5) {
  const auto database = platform_.ProgramFolder() / "property.mdb";
  platform_.InstallSampleDatabase();
  Load();
  const auto status = [&] { return window_->statusBar()->currentMessage().toStdString(); };
  const auto* told = window_->findChild<QLabel*>("lblDatabaseMissing");
  const int tenants = Tenants();
  EXPECT_GT(tenants, 0);
  EXPECT_TRUE(told->isHidden());
  std::filesystem::rename(database, platform_.folder / "away");
  Trigger("mnuRefresh");
  EXPECT_THAT(status(), HasSubstr("tenants and owners are missing"));
  EXPECT_EQ(Tenants(), 0);
  EXPECT_FALSE(told->isHidden());
  std::filesystem::rename(platform_.folder / "away", database);
  Trigger("mnuRefresh");
  EXPECT_THAT(status(), HasSubstr("tenants and owners were read"));
  EXPECT_EQ(Tenants(), tenants);
  EXPECT_TRUE(told->isHidden());
}

TEST_F(RentalDataInTheWindow, LetsTheUserBrowseForAMissingDatabase) {
  const auto elsewhere = platform_.folder / "server";
  std::filesystem::create_directories(elsewhere / "Templates");
  std::filesystem::copy_file(test::SampleDatabase(), elsewhere / "property.mdb");
  WriteWholeFile(elsewhere / "Templates/Notice.rtf", "{\\rtf1 x}");
  platform_.dialogs.WillPress(Answer::kOther).WillType((elsewhere / "property.mdb").string());
  Load();
  EXPECT_GT(Tenants(), 0);
  EXPECT_TRUE(window_->tree().model().IndexOfKey("Templates/Notice").isValid());
  EXPECT_EQ(session_.database.Location(), elsewhere / "property.mdb");
}

TEST_F(RentalDataInTheWindow, TellsWhichOfSeveralTenanciesOfANameALetterIsFor) {
  platform_.InstallSampleDatabase();
  const auto folder = platform_.ProgramFolder() / "Tama O'Brien";
  std::filesystem::create_directories(folder);
  WriteWholeFile(folder / "Notice.rtf", "{\\rtf1 x}");
  Load();
  ASSERT_TRUE(window_->letters().OpenListed(folder / "Notice.rtf"));
  const auto told = [&] {
    QCoreApplication::processEvents();
    return window_->findChild<QLabel*>("lblRecipient")->text().toStdString();
  };
  EXPECT_EQ(told(), "Letter to tenant Tama O'Brien (2 tenancies have this name)");
  // A code is filled in for one of them, who is asked for.
  const auto insert_code = [&] {
    const auto actions = window_->findChild<QMenu*>("mnuInsertItem")->actions();
    for (QAction* action : actions) {
      if (action->text() == "Tenant Code") action->trigger();
    }
    return window_->letters().Active()->editor().toPlainText().toStdString();
  };
  platform_.dialogs.WillCancel();
  EXPECT_EQ(insert_code(), "x");
  platform_.dialogs.WillChoose(1);
  EXPECT_EQ(insert_code(), "T00005x");
  EXPECT_THAT(told(), HasSubstr("Letter to tenant Tama O'Brien (T00005, "));
}

TEST_F(RentalDataInTheWindow, ReadsTenantsAgainAtF5AndBeforeLettersWhenTheFileHasChanged) {
  platform_.InstallSampleDatabase();
  std::filesystem::create_directories(platform_.ProgramFolder() / "Templates");
  WriteWholeFile(platform_.ProgramFolder() / "Templates/Notice.rtf", "{\\rtf1 x}");
  Load();
  ASSERT_TRUE(HasTenant("Ben Young"));
  Rename("T00028", "Benedict Young");
  EXPECT_TRUE(HasTenant("Ben Young"));
  Trigger("mnuRefresh");
  EXPECT_TRUE(HasTenant("Benedict Young"));
  EXPECT_FALSE(HasTenant("Ben Young"));

  Rename("T00028", "Benjamin Young");
  window_->letters().Open(
      *window_->tree().model().EntryAt(window_->tree().model().IndexOfKey("Templates/Notice")));
  bool offered = false;
  QTimer::singleShot(0, [&] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    for (const TenantRecord& tenant : session_.caches.Tenants) {
      offered = offered || tenant.KeyName == "Benjamin Young";
    }
    dialog->reject();
  });
  Trigger("cmdGenerate");
  EXPECT_TRUE(offered);
  EXPECT_TRUE(HasTenant("Benjamin Young"));
}

}  // namespace
}  // namespace tenora
