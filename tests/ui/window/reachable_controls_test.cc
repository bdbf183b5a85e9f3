// What people need of every window who hear it read out, or who use no mouse: a name for each
// control, a way to it by Tab, mnemonics that mean one thing, Escape and Enter. And that the window
// fits a small screen.
#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QSet>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <functional>
#include <iostream>
#include <map>

#include "application.h"
#include "platform/dialogs/printer_settings_box.h"
#include "platform/dialogs/window_dialogs.h"
#include "support/fake_platform.h"
#include "ui/dialogs/frm_answers.h"
#include "ui/dialogs/frm_future_date.h"
#include "ui/dialogs/frm_generate.h"
#include "ui/dialogs/frm_queue.h"
#include "ui/dialogs/frm_run_report.h"
#include "ui/dialogs/frm_spell_check.h"
#include "ui/dialogs/frm_unfinished_runs.h"
#include "ui/editor/colour_dialog.h"
#include "ui/editor/commands/editor_dialogs.h"
#include "ui/editor/commands/picture_dialog.h"
#include "ui/window/background/progress_dialog.h"
#include "ui/window/help/frm_guide.h"
#include "ui/window/main/frm_main.h"
#include "ui/window/recovery/frm_unsaved_letters.h"

namespace tenora {
namespace {

// A screen of 1280 by 800 pixels at scale 2, without the window's frame.
constexpr QSize kSmallScreen(640 - 8, 400 - 40);

QString NameOf(QWidget& control) {
  QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(&control);
  return spoken == nullptr ? QString() : spoken->text(QAccessible::Name).trimmed();
}

QString Described(const QWidget& control) {
  return QString::fromLatin1(control.metaObject()->className()) + " " + control.objectName();
}

// The controls that a person works with; the parts that Qt makes some of are no more than those.
QList<QWidget*> ControlsOf(QWidget& window) {
  QList<QWidget*> controls;
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    const bool button = qobject_cast<QAbstractButton*>(widget) != nullptr;
    if (widget->window() != &window || !widget->isVisible()) continue;
    const QWidget* whole = widget->parentWidget();
    // The field of a combo box is told by itself.
    const bool part = widget->focusProxy() != nullptr && !qobject_cast<const QComboBox*>(whole);
    if (part || qobject_cast<const QTabBar*>(whole) != nullptr) continue;
    const auto* text = qobject_cast<QLabel*>(widget);
    if (text != nullptr && text->text().isEmpty()) continue;
    if (button || widget->focusPolicy() != Qt::NoFocus) controls << widget;
  }
  return controls;
}

QStringList FaultsOfNames(QWidget& window) {
  QStringList faults;
  std::map<std::pair<QAccessible::Role, QString>, QWidget*> named;
  for (QWidget* control : ControlsOf(window)) {
    const QString name = NameOf(*control);
    if (name.isEmpty()) {
      faults << "no name: " + Described(*control);
      continue;
    }
    const auto role = QAccessible::queryAccessibleInterface(control)->role();
    const auto [same, first] = named.insert({{role, name}, control});
    if (!first)
      faults << "one name, \"" + name + "\": " + Described(*control) + ", " +
                    Described(*same->second);
  }
  return faults;
}

class Mnemonics {
 public:
  void Add(const QString& text) {
    const QKeySequence key = QKeySequence::mnemonic(text);
    if (key.isEmpty()) return;
    const auto [same, first] = texts_.insert({key.toString(), text});
    if (!first) faults_ << "one mnemonic: \"" + text + "\", \"" + same->second + "\"";
  }
  void AddActions(const QList<QAction*>& actions) {
    for (const QAction* action : actions) {
      if (action->isVisible() && !action->isSeparator()) Add(action->text());
    }
  }
  const QStringList& Faults() const { return faults_; }

 private:
  std::map<QString, QString> texts_;
  QStringList faults_;
};

QStringList FaultsOfMnemonics(QWidget& window) {
  Mnemonics mnemonics;
  QStringList faults;
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    if (widget->window() != &window || !widget->isVisible()) continue;
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) mnemonics.Add(button->text());
    if (auto* bar = qobject_cast<QMenuBar*>(widget)) mnemonics.AddActions(bar->actions());
    if (auto* tabs = qobject_cast<QTabBar*>(widget)) {
      for (int i = 0; i < tabs->count(); ++i) mnemonics.Add(tabs->tabText(i));
    }
    auto* label = qobject_cast<QLabel*>(widget);
    if (label == nullptr || QKeySequence::mnemonic(label->text()).isEmpty()) continue;
    if (label->textFormat() == Qt::PlainText) continue;
    mnemonics.Add(label->text());
    if (label->buddy() == nullptr) faults << "a mnemonic that leads nowhere: " + label->text();
  }
  return faults + mnemonics.Faults();
}

QStringList FaultsOfMenus(QWidget& window) {
  QStringList faults;
  for (QMenu* menu : window.findChildren<QMenu*>()) {
    emit menu->aboutToShow();
    Mnemonics mnemonics;
    mnemonics.AddActions(menu->actions());
    for (const QString& fault : mnemonics.Faults()) faults << menu->title() + ": " + fault;
  }
  return faults;
}

// Presses Tab until the first control comes again.
QStringList FaultsOfTabOrder(QWidget& window) {
  constexpr int kMostControls = 100;
  QSet<QWidget*> reached;
  for (int i = 0; i < kMostControls; ++i) {
    QWidget* at = window.focusWidget();
    if (at == nullptr || reached.contains(at)) break;
    reached << at;
    QTest::keyClick(at, Qt::Key_Tab);
  }
  QStringList faults;
  for (QWidget* control : ControlsOf(window)) {
    const bool wanted = control->isEnabled() && (control->focusPolicy() & Qt::TabFocus) != 0;
    if (wanted && !reached.contains(control)) faults << "not by Tab: " + Described(*control);
  }
  return faults;
}

QStringList FaultsOfSize(QWidget& window) {
  window.resize(kSmallScreen);
  QCoreApplication::processEvents();
  QSize least = window.size();
  if (const QLayout* layout = window.layout(); layout != nullptr && layout->hasHeightForWidth()) {
    least.setHeight(std::max(least.height(), layout->minimumHeightForWidth(least.width())));
  }
  if (least.boundedTo(kSmallScreen) == least) return {};
  return {QString("needs %1 x %2 pixels").arg(least.width()).arg(least.height())};
}

// All of a window or dialog, each of its tabs in turn.
QStringList Faults(QWidget& window) {
  QStringList faults;
  auto* tabs = window.findChild<QTabWidget*>();
  for (int tab = 0; tab < (tabs == nullptr ? 1 : tabs->count()); ++tab) {
    if (tabs != nullptr) tabs->setCurrentIndex(tab);
    faults += FaultsOfNames(window) + FaultsOfMnemonics(window);
    if (qobject_cast<QDialog*>(&window) != nullptr) faults += FaultsOfTabOrder(window);
  }
  return faults + FaultsOfSize(window);
}

class ReachableControls : public ::testing::Test {
 protected:
  ReachableControls() {
    platform_.InstallSampleDatabase();
    session_.settings.SaveSettingText("Mail", "FormsAtStartup", "1");
    window_ = std::make_unique<frmMain>(parts_);
    window_->MDIForm_Load();
    window_->show();
    Trigger("mnuNewTenantTemplate");
    QCoreApplication::processEvents();
  }
  ~ReachableControls() override {
    for (LetterWindow* letter : window_->desk().Letters()) delete letter->parentWidget();
  }
  void Trigger(const char* action) { window_->findChild<QAction*>(action)->trigger(); }

  // Whether Enter is for the same button when each has had the keyboard in turn.
  static bool KeepsDefault(const QDialog& dialog) {
    const auto buttons = dialog.findChildren<QPushButton*>();
    const auto is_default = [](const auto* each) { return each->isDefault(); };
    const auto before = std::ranges::find_if(buttons, is_default);
    for (QPushButton* button : buttons) button->setFocus(Qt::TabFocusReason);
    for (QWidget* other : dialog.findChildren<QWidget*>()) {
      const bool takes = (other->focusPolicy() & Qt::TabFocus) != 0 && other->isEnabled();
      if (!takes || !other->isVisible() || qobject_cast<QPushButton*>(other) != nullptr) continue;
      other->setFocus(Qt::TabFocusReason);
      return std::ranges::find_if(buttons, is_default) == before;
    }
    return true;
  }

  // The faults of the dialog that `open` shows until it is left by Escape.
  static QStringList FaultsOfDialog(const std::function<void()>& open, bool escape_leaves) {
    QStringList faults{"it did not come up"};
    QTimer::singleShot(0, [&] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (dialog == nullptr) return;
      QCoreApplication::processEvents();
      faults = Faults(*dialog);
      const auto buttons = dialog->findChildren<QPushButton*>();
      if (std::ranges::none_of(buttons, [](const auto* each) { return each->isDefault(); }))
        faults << "nothing for Enter";
      if (!KeepsDefault(*dialog)) faults << "Enter is for a button that Tab has passed";
      if (escape_leaves) {
        QTest::keyClick(dialog, Qt::Key_Escape);
        if (dialog->isVisible()) faults << "Escape does not leave it";
      }
      if (dialog->isVisible()) dialog->done(QDialog::Rejected);
    });
    open();
    return faults;
  }

  test::FakePlatform platform_;
  Session session_{platform_.Parts()};
  CommandLine line_{""};
  CommandParts parts_{line_, session_, [] { return printing::Printers::Create({}); }, std::cout,
                      std::cerr};
  std::unique_ptr<frmMain> window_;
};

template <typename Dialog, typename... Parts>
void Show(Parts&&... parts) {
  Dialog(std::forward<Parts>(parts)...).exec();
}

GenerationSummary SummaryWithAllKinds() {
  GenerationSummary summary;
  std::size_t number = 0;
  for (auto* reports : {&summary.held, &summary.no_address, &summary.in_doubt, &summary.failed}) {
    LetterReport report;
    report.number = ++number;
    report.recipient = {"Jane Smith", "T00001"};
    report.problem = "the code was not filled in";
    reports->push_back(report);
  }
  summary.asked = 9;
  return summary;
}

TEST_F(ReachableControls, InEveryDialogByNameTabAndMnemonicWithEscapeAndEnter) {
  WindowDialogs dialogs;
  const auto speller = spelling::Speller::Open(
      {.language = "en_GB", .user_words = platform_.folder / "words.txt", .folders = {}});
  RichTextBox letter;
  UnfinishedRun run;
  run.started = "2026-11-21 09:30:00";
  run.summary = SummaryWithAllKinds();
  const std::vector<UnfinishedRun> runs{run};
  UnsavedStore::Left left;
  left.letter.title = "Notice";
  const std::vector<UnsavedStore::Left> unsaved{left};
  const CustomFieldCodes custom_fields;
  richtext::ParagraphFormat paragraph;
  const auto settings = [] {
    return std::vector<PrinterSetting>{
        {"media-source", "Paper tray", {{"upper", "Upper"}}, "Upper"},
        {"media-type", "Kind of paper", {{"plain", "Plain"}}, ""}};
  };
  const std::vector<OfferedPrinter> printers{{"Office", true, settings}};
  PrintChoice pages;
  pages.pages.emplace();
  const auto command = [this](const char* action) { return [this, action] { Trigger(action); }; };
  const struct {
    const char* name;
    std::function<void()> open;
    bool escape_leaves = true;  // others ask, or wait for work to stop
  } cases[] = {
      {"settings", command("mnuSettings")},
      {"margins", command("mnuPrinterSetup")},
      {"receipts", command("mnuReceiptOptions")},
      {"inspections", command("mnuInspectionOptions")},
      {"colours", command("mnuCustom")},
      {"about", command("mnuAbout")},
      {"future date", [&] { Show<frmFutureDate>(letter, nullptr); }},
      {"answers for a preview",
       [&] {
         Show<frmAnswers>(std::vector<std::string>{"Who inspects", "Tea & biscuits"},
                          PromptAnswers(), frmAnswers::Purpose::kPreview);
       }},
      {"answers for the queue",
       [&] {
         Show<frmAnswers>(std::vector<std::string>{"Who inspects"}, PromptAnswers(),
                          frmAnswers::Purpose::kQueue);
       }},
      {"queue",
       [&] { Show<frmQueue>(dialogs, platform_.locale, "no service", platform_.ProgramFolder()); }},
      {"tenants", [&] { Show<frmGenerate>(session_, "Templates", "Rent review"); }},
      {"owners", [&] { Show<frmGenerate>(session_, "Owner Templates", "Statement"); }},
      {"run report", [&] { Show<frmRunReport>(run.summary, Destination::kEmail); }},
      {"printed run", [&] { Show<frmRunReport>(run.summary, Destination::kPrinter); }},
      {"unfinished runs", [&] { Show<frmUnfinishedRuns>(platform_.locale, runs); }},
      {"spelling", [&] { Show<frmSpellCheck>("recieve", *speller, dialogs, nullptr); }},
      {"unsaved letters",
       [&] {
         Show<frmUnsavedLetters>(platform_.locale, custom_fields, unsaved,
                                 frmUnsavedLetters::Actions(), nullptr);
       }},
      {"progress", [&] { Show<ProgressDialog>("Letters", nullptr); }, false},
      {"tab stops", [&] { AskTabStops(nullptr, {{}}); }},
      {"spacing", [&] { AskSpacing(nullptr, &paragraph); }},
      {"table", [&] { AskTableSize(nullptr); }},
      {"colour", [&] { AskColour(nullptr, Qt::red, "Colour"); }},
      {"picture", [&] { AskPictureLook(nullptr, {}, {}); }},
      {"text", [&] { dialogs.AskText("Enter the name", "Rename", "Notice"); }},
      {"letter's question", [&] { dialogs.AskForLetter({.prompt = "Who inspects?"}); }},
      {"question in a run",
       [&] { dialogs.AskForLetter({.prompt = "Who inspects?", .progress = "3 of 9"}); }, false},
      {"choice",
       [&] {
         dialogs.Choose("Which one?", {"a", "b"}, 0);
       }},
      {"print", [&] { dialogs.ChoosePrinter(printers, pages); }},
      {"printer's properties",
       [&] { Show<PrinterSettingsBox>("Office", settings(), ChosenSettings(), nullptr); }},
      {"message",
       [&] { dialogs.Show({.text = "Save changes?", .buttons = Buttons::kYesNoCancel}); }},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FaultsOfDialog(c.open, c.escape_leaves).join("\n").toStdString(), "") << c.name;
  }
}

TEST_F(ReachableControls, InTheMainWindowWithItsPanelsMenusPreviewAndGuide) {
  EXPECT_EQ(FaultsOfSize(*window_).join("\n").toStdString(), "");
  Trigger("mnuPreviewLetters");
  EXPECT_EQ(FaultsOfSize(*window_).join("\n").toStdString(), "");
  Trigger("mnuPreviewLetters");
  window_->resize(1200, 800);
  Trigger("mnuReplace");
  Trigger("mnuCheckTemplate");
  QCoreApplication::processEvents();
  EXPECT_EQ(FaultsOfSize(*window_).join("\n").toStdString(), "");
  window_->resize(1200, 800);
  QCoreApplication::processEvents();
  EXPECT_EQ((FaultsOfNames(*window_) + FaultsOfMnemonics(*window_) + FaultsOfMenus(*window_))
                .join("\n")
                .toStdString(),
            "");
  Trigger("mnuPreviewLetters");
  QCoreApplication::processEvents();
  EXPECT_EQ((FaultsOfNames(*window_) + FaultsOfMnemonics(*window_)).join("\n").toStdString(), "");
  Trigger("mnuPrintPreview");
  Trigger("mnuForms");
  WriteWholeFile(platform_.folder / "page.md", "# Page");
  (new frmGuide(platform_.folder / "page.md", window_.get()))->show();
  QCoreApplication::processEvents();
  for (const char* name : {"frmPreview", "frmForms", "frmGuide"}) {
    QPointer<QWidget> opened;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->objectName() == name) opened = widget;
    }
    ASSERT_NE(opened, nullptr) << name;
    EXPECT_EQ(Faults(*opened).join("\n").toStdString(), "") << name;
    opened->activateWindow();
    QCoreApplication::processEvents();
    QTest::keyClick(opened, Qt::Key_Escape);
    EXPECT_TRUE(opened == nullptr || !opened->isVisible()) << name;
  }
}

}  // namespace
}  // namespace tenora
