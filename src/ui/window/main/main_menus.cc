#include "ui/window/main/main_menus.h"

#include <QActionGroup>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>
#include <string>
#include <utility>

#include "letters/template_library.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/clock.h"
#include "ui/window/appearance/colour_scheme.h"
#include "ui/window/appearance/icons.h"
#include "ui/window/letter/letter_recipient.h"

namespace tenora {
namespace {

// The button for what a narrow bar has no space for; Qt leaves it without a name.
void NameMoreButton(QToolBar& bar, const QString& name) {
  auto* more = bar.findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"));
  if (more != nullptr) more->setAccessibleName(name);
}

}  // namespace

MainMenus::MainMenus(QMainWindow& window, const MenuParts& parts) : window_(window), parts_(parts) {
  BuildFileMenu();
  BuildEditMenu();
  BuildViewMenu();
  BuildInsertMenu();
  BuildFormatMenu();
  BuildToolsMenu();
  BuildWindowMenu();
  BuildHelpMenu();
  BuildToolBar();
  BuildFormatBar();
}

void MainMenus::ShowLetter(const LetterWindow* front) {
  const bool previewing = front != nullptr && front->Previewing();
  for (QAction* action : std::as_const(letter_commands_)) action->setEnabled(front != nullptr);
  for (QAction* action : std::as_const(writing_commands_)) {
    action->setEnabled(front != nullptr && !previewing);
  }
  for (QAction* action : std::as_const(preview_commands_)) action->setEnabled(previewing);
  preview_action_->setEnabled(front != nullptr && front->CanPreview());
  preview_action_->setChecked(previewing);
  insert_menus_->SetEnabled(front != nullptr && !previewing);
  const std::string kind = front == nullptr ? "" : front->letter().members().Kind;
  mail_action_->setEnabled(kind == kTenantLetter || kind == kOwnerLetter);
  DisplayInsertMenu();
}

void MainMenus::DisplayInsertMenu() {
  insert_menus_->DisplayInsertMenu(parts_.letters.CurrentList(), parts_.session.cheque_word);
}

QAction* MainMenus::Command(QMenu* menu, const char* name, const QString& text, const Look& look,
                            Body body) {
  auto* action = new QAction(text, &window_);
  action->setObjectName(QLatin1String(name));
  if (look.icon != nullptr) action->setIcon(LineIcon(look.icon));
  action->setShortcut(look.keys);
  if (!look.tip.isEmpty()) action->setStatusTip(look.tip);
  menu->addAction(action);
  connect(action, &QAction::triggered, this,
          [this, label = "frmMain - " + std::string(name) + "_Click", body = std::move(body)] {
            Guarded(parts_.session.platform.dialogs, label, body);
          });
  return action;
}

QMenu* MainMenus::AddMenu(const char* name, const QString& title) {
  QMenu* menu = window_.menuBar()->addMenu(title);
  menu->setObjectName(QLatin1String(name));
  return menu;
}

QAction* MainMenus::LetterCommand(QMenu* menu, const char* name, const QString& text,
                                  const Look& look,
                                  const std::function<void(frmLetter& letter)>& command) {
  QAction* action =
      Command(menu, name, text, look, [this, command] { parts_.letters.WithActive(command); });
  letter_commands_ << action;
  return action;
}

QAction* MainMenus::ReadingCommand(QMenu* menu, const char* name, const QString& text,
                                   const Look& look,
                                   const std::function<void(frmLetter& letter)>& command) {
  QAction* action =
      Command(menu, name, text, look, [this, command] { parts_.letters.WithShown(command); });
  letter_commands_ << action;
  return action;
}

QAction* MainMenus::WritingCommand(QMenu* menu, const char* name, const QString& text,
                                   const Look& look,
                                   const std::function<void(frmLetter& letter)>& command) {
  QAction* action = LetterCommand(menu, name, text, look, command);
  writing_commands_ << action;
  return action;
}

void MainMenus::BuildFileMenu() {
  QMenu* file = AddMenu("mnuFile", tr("&File"));
  QMenu* fresh = file->addMenu(LineIcon("new"), tr("&New"));
  fresh->setObjectName(QStringLiteral("mnuNew"));
  format_action_ =
      Command(fresh, "mnuFormat", {}, {"new", QKeySequence::New}, [this] { StartNewInList(); });
  fresh->addSeparator();
  Command(fresh, "mnuNewTenantTemplate", tr("&Tenant Letter Template"), {"template"},
          [this] { parts_.letters.StartNew(kTemplates); });
  Command(fresh, "mnuNewOwnerTemplate", tr("&Owner Letter Template"), {"template"},
          [this] { parts_.letters.StartNew(kOwnerTemplates); });
  Command(fresh, "mnuNewChequeTemplate", tr("&Cheque Template"), {"cheque"},
          [this] { parts_.letters.StartNew(parts_.session.cheque_word); });
  Command(file, "mnuOpen", tr("&Open…"), {"open", QKeySequence::Open}, [this] {
    const auto path =
        parts_.session.platform.dialogs.ChooseFileToOpen("Open Letter", "Letters|*.rtf;*.txt");
    if (path) parts_.letters.OpenFile(*path);
  });
  BuildRecentMenu(*file);
  Command(file, "mnuImportTemplate", tr("Import Temp&late…"), {},
          [this] { parts_.imports.Import(); });
  file->addSeparator();
  LetterCommand(file, "mnuSave", tr("&Save"), {"save", QKeySequence::Save},
                [](frmLetter& letter) { letter.Save(); });
  LetterCommand(file, "mnuSaveAs", tr("Save &As…"), {nullptr, QKeySequence::SaveAs},
                [](frmLetter& letter) { letter.SaveAs(); });
  LetterCommand(file, "mnuDelete", tr("&Delete…"), {"delete"},
                [](frmLetter& letter) { letter.Delete(); });
  LetterCommand(file, "mnuClose", tr("&Close"), {"close", QKeySequence::Close},
                [](frmLetter& letter) { letter.CloseForm(); })
      ->setShortcuts(QKeySequence::Close);
  file->addSeparator();
  print_action_ =
      Command(file, "mnuPrint", tr("&Print…"), {"print", QKeySequence::Print}, [this] { Print(); });
  letter_commands_ << print_action_;
  ReadingCommand(file, "mnuPrintPreview", tr("Print Pre&view"),
                 {"preview", QKeySequence(tr("Ctrl+Shift+P"))},
                 [this](frmLetter& letter) { parts_.output.Preview(letter, &window_); });
  WritingCommand(file, "mnuExportPdf", tr("Expor&t as PDF…"), {"pdf"},
                 [this](frmLetter& letter) { parts_.output.ExportPdf(letter); });
  mail_action_ = LetterCommand(file, "mnuEmail", tr("E-&mail this Letter…"),
                               {"mail", QKeySequence(tr("Ctrl+Shift+E"))},
                               [this](frmLetter& letter) { parts_.output.Email(letter); });
  file->addSeparator();
  Command(file, "mnuPrinterSetup", tr("Printer Set-&up…"), {},
          [this] { parts_.settings.ShowPrinterSetup(); });
  Command(file, "mnuReceiptOptions", tr("&Receipt Options…"), {},
          [this] { parts_.settings.ShowReceiptOptions(frmReceipt::DocumentKind::kReceipt); });
  Command(file, "mnuInspectionOptions", tr("&Inspection Letter Options…"), {}, [this] {
    parts_.settings.ShowReceiptOptions(frmReceipt::DocumentKind::kInspectionLetter);
  });
  Command(file, "mnuSettings", tr("S&ettings…"), {"settings", QKeySequence::Preferences}, [this] {
    parts_.settings.ShowSettings();
  })->setMenuRole(QAction::PreferencesRole);
  file->addSeparator();
  Command(file, "mnuExit", tr("E&xit"), {nullptr, QKeySequence::Quit}, [this] {
    window_.close();
  })->setMenuRole(QAction::QuitRole);
}

void MainMenus::Print() {
  const LetterWindow* front = parts_.letters.Active();
  if (front == nullptr) return;
  if (const auto previewed = front->PreviewedRecipient()) {
    return parts_.generate.GenerateFront(*previewed);
  }
  parts_.letters.WithActive([this](frmLetter& letter) { parts_.output.Print(letter); });
}

void MainMenus::BuildRecentMenu(QMenu& file) {
  QMenu* recent = file.addMenu(tr("Recent &Files"));
  recent->setObjectName(QStringLiteral("mnuRecent"));
  recent->setToolTipsVisible(true);
  connect(recent, &QMenu::aboutToShow, this, [this, recent] { ListRecent(*recent); });
}

void MainMenus::ListRecent(QMenu& recent) {
  recent.clear();
  int number = 0;
  for (const RecentLetter& letter : parts_.letters.recent().List()) {
    const std::filesystem::path& path = letter.path;
    QString name = QString::fromStdString(path.stem().string() + " - " +
                                          path.parent_path().filename().string());
    name.replace(QLatin1Char('&'), QLatin1String("&&"));
    ++number;
    // The tenth has the mnemonic 0.
    const QString counted = number < 10 ? QStringLiteral("&%1 %2") : QStringLiteral("1&%1 %2");
    QAction* action =
        Command(&recent, "mnuRecentFile", counted.arg(QString::number(number % 10), name), {},
                [this, letter] { parts_.letters.OpenRecent(letter); });
    // It goes with the list.
    action->setParent(&recent);
    action->setToolTip(QString::fromStdString(path.string()));
    action->setStatusTip(action->toolTip());
    std::error_code error;
    action->setEnabled(std::filesystem::exists(path, error));
  }
  if (number == 0) recent.addAction(tr("No file has been opened yet"))->setEnabled(false);
  recent.addSeparator();
  QAction* clear = Command(&recent, "mnuClearRecent", tr("&Clear List"), {},
                           [this] { parts_.letters.recent().Clear(); });
  clear->setParent(&recent);
  clear->setEnabled(number > 0);
}

void MainMenus::StartNewInList() {
  switch (parts_.letters.CurrentList()) {
    case TemplateKind::kOwner:
      return parts_.letters.StartNew(kOwnerTemplates);
    case TemplateKind::kCheque:
      return parts_.letters.StartNew(parts_.session.cheque_word);
    default:
      return parts_.letters.StartNew(kTemplates);
  }
}

void MainMenus::BuildEditMenu() {
  QMenu* edit = AddMenu("mnuEdit", tr("&Edit"));
  edit->addActions(parts_.editor_actions.EditActions());
  edit->addSeparator();
  ReadingCommand(edit, "mnuFind", tr("&Find…"), {"find", QKeySequence::Find},
                 [this](frmLetter& letter) {
                   letter.Find();
                   parts_.find_panel.SetText(QString::fromStdString(letter.members().SearchText));
                 });
  ReadingCommand(edit, "mnuFindAgain", tr("Find A&gain"), {nullptr, QKeySequence(tr("F3"))},
                 [this](frmLetter& letter) {
                   if (parts_.find_panel.isVisible()) return parts_.find_panel.FindNext();
                   letter.FindAgain();
                 });
  LetterCommand(edit, "mnuFindPrevious", tr("Find Pre&vious"),
                {nullptr, QKeySequence(tr("Shift+F3"))},
                [this](frmLetter&) { parts_.find_panel.FindPrevious(); });
  LetterCommand(edit, "mnuReplace", tr("R&eplace…"), {nullptr, QKeySequence(tr("Ctrl+H"))},
                [this](frmLetter&) { parts_.find_panel.Open(); });
}

void MainMenus::BuildViewMenu() {
  QMenu* view = AddMenu("mnuView", tr("&View"));
  view->addAction(&parts_.page_layout);
  view->addAction(&parts_.page_width);
  view->addSeparator();
  view->addActions(parts_.editor_actions.ViewActions());
  view->addSeparator();
  BuildPreviewMenu(*view);
  Command(view, "mnuRefresh", tr("&Refresh Tree"), {"refresh", QKeySequence::Refresh}, [this] {
    parts_.rental_data.LoadIfChanged();
    parts_.tree.RefreshTree();
    parts_.letters.RefreshPreviews();
  });
  Command(view, "mnuSearchTree", tr("&Search Tree"), {"find", QKeySequence(tr("Ctrl+Shift+F"))},
          [this] { parts_.tree.FocusSearch(); });
}

void MainMenus::BuildPreviewMenu(QMenu& view) {
  QMenu* preview = view.addMenu(LineIcon("merged"), tr("&Preview of Letters"));
  preview->setObjectName(QStringLiteral("mnuPreview"));
  preview_action_ =
      Command(preview, "mnuPreviewLetters", tr("&Show Letters"),
              {nullptr, QKeySequence(tr("F9")), tr("The letters that the template in front makes")},
              [this] {
                LetterWindow* letter = parts_.letters.Active();
                if (letter != nullptr) letter->ShowPreview(!letter->Previewing());
                // Where it could not be shown.
                ShowLetter(letter);
              });
  preview_action_->setCheckable(true);
  preview->addSeparator();
  const auto add = [&](const char* name, const QString& text, const QString& keys,
                       PreviewBar::Step step) {
    preview_commands_ << Command(preview, name, text, {nullptr, QKeySequence(keys)}, [this, step] {
      if (LetterWindow* letter = parts_.letters.Active()) letter->StepPreview(step);
    });
  };
  add("mnuFirstRecipient", tr("&First Recipient"), tr("Alt+Home"), PreviewBar::Step::kFirst);
  add("mnuPreviousRecipient", tr("&Previous Recipient"), tr("Alt+PgUp"),
      PreviewBar::Step::kPrevious);
  add("mnuNextRecipient", tr("&Next Recipient"), tr("Alt+PgDown"), PreviewBar::Step::kNext);
  add("mnuLastRecipient", tr("&Last Recipient"), tr("Alt+End"), PreviewBar::Step::kLast);
}

void MainMenus::BuildInsertMenu() {
  QMenu* insert = AddMenu("mnuInsert", tr("&Insert"));
  insert_combo_ = new QComboBox(&window_);
  insert_combo_->setObjectName(QStringLiteral("cboInsert"));
  insert_combo_->setAccessibleName(tr("Insert merge code"));
  insert_combo_->setMinimumContentsLength(20);
  insert_combo_->setMaxVisibleItems(20);
  insert_combo_->setFocusPolicy(Qt::ClickFocus);
  insert_menus_ = std::make_unique<InsertMenus>(
      *insert, *insert_combo_, *format_action_,
      InsertMenus::Inserts{
          .item =
              [this](const std::string& item) {
                Guarded(parts_.session.platform.dialogs, "frmMain - mnuInsertItem_Click", [&] {
                  parts_.letters.WithActive([&](frmLetter& letter) {
                    if (AskForRecipient(parts_.session, letter, "Fill the code in for")) {
                      letter.InsertItem(item);
                    }
                  });
                });
              },
          .form =
              [this](const std::string& open, const std::string& close) {
                Guarded(parts_.session.platform.dialogs, "frmMain - mnuInsertForms_Click", [&] {
                  parts_.letters.WithActive(
                      [&](frmLetter& letter) { letter.InsertForm(open, close); });
                });
              }});
  insert->addSeparator();
  insert->addAction(parts_.editor_actions.InsertActions().first());  // a table
  WritingCommand(insert, "mnuInsertPicture", tr("Pi&cture…"), {},
                 [](frmLetter& letter) { letter.InsertPicture(); });
  WritingCommand(insert, "mnuInsertExcel", tr("&Spreadsheet…"), {},
                 [](frmLetter& letter) { letter.InsertExcel(); });
  WritingCommand(insert, "mnuInsertObject", tr("&File as Object…"), {},
                 [](frmLetter& letter) { letter.InsertOLEObject(); });
  LetterCommand(insert, "mnuSaveEmbedded", tr("Sa&ve Embedded File…"), {},
                [](frmLetter& letter) { letter.SaveEmbeddedFile(); });
  insert->addAction(parts_.editor_actions.InsertActions().last());  // a page break
}

void MainMenus::BuildFormatMenu() {
  QMenu* format = AddMenu("mnuFormatMenu", tr("F&ormat"));
  format->addActions(parts_.editor_actions.FormatActions());
  format->addSeparator();
  format->addAction(parts_.editor_actions.PictureAction());
  QMenu* table = format->addMenu(tr("&Table"));
  table->setObjectName(QStringLiteral("mnuTable"));
  table->addActions(parts_.editor_actions.TableActions());
}

void MainMenus::BuildToolsMenu() {
  QMenu* tools = AddMenu("mnuTools", tr("&Tools"));
  generate_action_ =
      Command(tools, "cmdGenerate", tr("&Generate Letter(s)…"),
              {"generate", QKeySequence(tr("Ctrl+G")), tr("Letters from the selected template")},
              [this] { parts_.generate.Generate(); });
  Command(tools, "mnuUnfinishedRuns", tr("&Unfinished Runs…"),
          {nullptr, {}, tr("Runs of letters that did not finish: resume, look or forget")}, [this] {
            if (parts_.runs.ShowUnfinished()) return;
            parts_.session.platform.dialogs.Say("Every run of letters is finished.");
          });
  QAction* queue =
      Command(tools, "mnuQueue", tr("&Queue…"),
              {nullptr, {}, tr("Letters that workers make: how they stand on the server")},
              [this] { parts_.queued_runs.ShowQueue(); });
  connect(tools, &QMenu::aboutToShow, queue,
          [this, queue] { queue->setEnabled(parts_.queued_runs.HasServer()); });
  Command(tools, "mnuUnsavedLetters", tr("&Recover Unsaved Letters…"),
          {nullptr, {}, tr("Letters that were not saved when Tenora last ended")}, [this] {
            if (parts_.keeper.OfferLeft(&window_)) return;
            parts_.session.platform.dialogs.Say("There are no unsaved letters.");
          });
  WritingCommand(tools, "mnuSpelling", tr("&Spelling…"), {"spelling", QKeySequence(tr("F7"))},
                 [this](frmLetter& letter) { parts_.spelling.Check(letter); });
  letter_commands_ << Command(
      tools, "mnuCheckTemplate", tr("&Check Template"), {"check", QKeySequence(tr("F8"))}, [this] {
        LetterWindow* letter = parts_.letters.Active();
        if (letter == nullptr) return;
        parts_.lint_panel.Check(*letter, parts_.session.platform.clock.Today(),
                                parts_.letters.custom_fields());
      });
  tools->addSeparator();
  BuildColourMenu(*tools);
}

void MainMenus::BuildColourMenu(QMenu& tools) {
  QMenu* schemes = tools.addMenu(tr("Co&lour Scheme"));
  schemes->setObjectName(QStringLiteral("mnuColourScheme"));
  auto* group = new QActionGroup(this);
  const QStringList titles{tr("&Blue"),  tr("&Gold"), tr("&Silver"),
                           tr("G&reen"), tr("Gr&ey"), tr("&Custom…")};
  for (std::size_t i = 0; i < kColourSchemes.size(); ++i) {
    const char* scheme = kColourSchemes[i];
    const QByteArray name = QByteArray("mnu") + scheme;
    QAction* action = Command(schemes, name.constData(), titles[static_cast<qsizetype>(i)], {},
                              [this, scheme] { parts_.colours.Choose(scheme); });
    action->setCheckable(true);
    action->setData(QLatin1String(scheme));
    group->addAction(action);
  }
  connect(schemes, &QMenu::aboutToShow, group, [this, group] {
    const QString stored = QString::fromStdString(StoredScheme(parts_.session.settings));
    for (QAction* action : group->actions()) action->setChecked(action->data() == stored);
  });
}

void MainMenus::BuildWindowMenu() {
  QMenu* windows = AddMenu("mnuWindow", tr("&Window"));
  Command(windows, "mnuTabs", tr("Ta&bs"), {"tabs"}, [this] { parts_.desk.ShowAsTabs(true); });
  Command(windows, "mnuTile", tr("&Tile"), {"tile"}, [this] { parts_.desk.Tile(); });
  Command(windows, "mnuCascade", tr("&Cascade"), {"cascade"}, [this] { parts_.desk.Cascade(); });
  windows->addSeparator();
  Command(windows, "mnuNext", tr("&Next Letter"), {nullptr, QKeySequence(tr("Ctrl+Tab"))},
          [this] { parts_.desk.Next(); });
  Command(windows, "mnuPrevious", tr("&Previous Letter"),
          {nullptr, QKeySequence(tr("Ctrl+Shift+Tab"))}, [this] { parts_.desk.Previous(); });
  windows->addSeparator();
  connect(windows, &QMenu::aboutToShow, this, [this, windows] { ListLetters(*windows); });
}

void MainMenus::ListLetters(QMenu& windows) {
  for (QAction* old : std::as_const(listed_letters_)) delete old;
  listed_letters_.clear();
  for (LetterWindow* letter : parts_.desk.Letters()) {
    const auto number = listed_letters_.size() + 1;
    const QString changed = letter->isWindowModified() ? QStringLiteral(" *") : QString();
    QString title = letter->ShownName() + changed;
    title.replace(QLatin1Char('&'), QLatin1String("&&"));
    // The first nine have a mnemonic.
    QAction* action =
        windows.addAction((number < 10 ? QStringLiteral("&%1 %2") : QStringLiteral("%1 %2"))
                              .arg(QString::number(number), title));
    action->setObjectName(QStringLiteral("mnuLetter%1").arg(number));
    action->setCheckable(true);
    action->setChecked(letter == parts_.desk.Active());
    connect(action, &QAction::triggered, letter,
            [this, letter] { parts_.desk.BringToFront(letter); });
    listed_letters_ << action;
  }
}

void MainMenus::BuildHelpMenu() {
  QMenu* help = AddMenu("mnuHelp", tr("&Help"));
  Command(help, "mnuUserGuide", tr("&User Guide"), {"help", QKeySequence::HelpContents},
          [this] { parts_.help.ShowGuide("user-guide.md"); });
  Command(help, "mnuMergeCodes", tr("&Merge Codes"), {},
          [this] { parts_.help.ShowGuide("merge-codes.md"); });
  help->addSeparator();
  Command(help, "mnuForms", tr("Template &Forms…"), {"template"},
          [this] { parts_.help.ShowForms(); });
  help->addSeparator();
  Command(help, "mnuAbout", tr("&About…"), {}, [this] {
    parts_.help.ShowAbout();
  })->setMenuRole(QAction::AboutRole);
}

void MainMenus::BuildToolBar() {
  QToolBar* bar = window_.addToolBar(tr("Letter"));
  bar->setObjectName(QStringLiteral("tlbMain"));
  bar->setMovable(false);
  bar->setIconSize(QSize(20, 20));
  bar->addAction(format_action_);
  for (const char* name :
       {"mnuOpen", "mnuSave", "", "mnuPrint", "mnuPrintPreview", "mnuExportPdf", "mnuEmail", "",
        "cmdGenerate", "", "mnuFind", "mnuSpelling", "mnuCheckTemplate", ""}) {
    QAction* action = window_.findChild<QAction*>(QLatin1String(name));
    if (*name == '\0') {
      bar->addSeparator();
    } else if (action != nullptr) {
      bar->addAction(action);
    }
  }
  bar->addWidget(insert_combo_);
  NameMoreButton(*bar, tr("More commands"));
}

void MainMenus::BuildFormatBar() {
  window_.addToolBarBreak();
  QToolBar* bar = window_.addToolBar(tr("Format"));
  bar->setObjectName(QStringLiteral("tlbFormat"));
  bar->setMovable(false);
  bar->setIconSize(QSize(20, 20));
  bar->addWidget(parts_.editor_actions.FontBox(bar));
  bar->addWidget(parts_.editor_actions.SizeBox(bar));
  bar->addActions(parts_.editor_actions.FormatActions());
  NameMoreButton(*bar, tr("More formats"));
}

}  // namespace tenora
