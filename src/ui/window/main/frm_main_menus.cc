// The main window's menus, tool bar and status bar.
#include <QActionGroup>
#include <QCheckBox>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

#include "letters/template_library.h"
#include "ui/window/appearance/colour_scheme.h"
#include "ui/window/appearance/icons.h"
#include "ui/window/help/frm_about.h"
#include "ui/window/main/frm_main.h"

namespace tenora {

QMenu* frmMain::AddMenu(const char* name, const QString& title) {
  QMenu* menu = menuBar()->addMenu(title);
  menu->setObjectName(QLatin1String(name));
  return menu;
}

void frmMain::BuildMenus() {
  BuildFileMenu();
  BuildEditMenu();
  BuildViewMenu();
  BuildInsertMenu();
  BuildFormatMenu();
  BuildToolsMenu();
  BuildWindowMenu();
  BuildHelpMenu();
}

QAction* frmMain::LetterCommand(QMenu* menu, const char* name, const QString& text,
                                const Look& look,
                                const std::function<void(frmLetter& letter)>& command) {
  QAction* action = Command(menu, name, text, look, [this, command] { WithLetter(command); });
  letter_commands_ << action;
  return action;
}

void frmMain::BuildFileMenu() {
  QMenu* file = AddMenu("mnuFile", tr("&File"));
  QMenu* fresh = file->addMenu(LineIcon("new"), tr("&New"));
  fresh->setObjectName(QStringLiteral("mnuNew"));
  format_action_ = Command(fresh, "mnuFormat", {}, {"new", QKeySequence::New}, [this] {
    switch (ListFor(desk_->Active() ? desk_->Active()->letter().members().Kind
                                    : std::string(kTemplates))) {
      case InsertList::kOwner:
        return StartNew(kOwnerTemplates);
      case InsertList::kCheque:
        return StartNew(session_.cheque_word);
      default:
        return StartNew(kTemplates);
    }
  });
  fresh->addSeparator();
  Command(fresh, "mnuNewTenantTemplate", tr("&Tenant Letter Template"), {"template"},
          [this] { StartNew(kTemplates); });
  Command(fresh, "mnuNewOwnerTemplate", tr("&Owner Letter Template"), {"template"},
          [this] { StartNew(kOwnerTemplates); });
  Command(fresh, "mnuNewChequeTemplate", tr("&Cheque Template"), {"cheque"},
          [this] { StartNew(session_.cheque_word); });
  Command(file, "mnuOpen", tr("&Open…"), {"open", QKeySequence::Open}, [this] {
    const auto path = dialogs().ChooseFileToOpen("Open Letter", "Letters|*.rtf;*.txt");
    if (path) OpenFile(*path);
  });
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
  LetterCommand(file, "mnuPrint", tr("&Print…"), {"print", QKeySequence::Print},
                [this](frmLetter& letter) { Output().Print(letter); });
  LetterCommand(file, "mnuPrintPreview", tr("Print Pre&view"),
                {"preview", QKeySequence(tr("Ctrl+Shift+P"))},
                [this](frmLetter& letter) { Output().Preview(letter, this); });
  LetterCommand(file, "mnuExportPdf", tr("Expor&t as PDF…"), {"pdf"},
                [this](frmLetter& letter) { Output().ExportPdf(letter); });
  mail_action_ = LetterCommand(file, "mnuEmail", tr("E-&mail this Letter…"),
                               {"mail", QKeySequence(tr("Ctrl+Shift+E"))},
                               [this](frmLetter& letter) { Output().Email(letter); });
  file->addSeparator();
  Command(file, "mnuPrinterSetup", tr("Printer Set-&up…"), {}, [this] { ShowPrinterSetup(); });
  Command(file, "mnuReceiptOptions", tr("&Receipt Options…"), {},
          [this] { ShowReceiptOptions(true); });
  Command(file, "mnuInspectionOptions", tr("&Inspection Letter Options…"), {},
          [this] { ShowReceiptOptions(false); });
  Command(file, "mnuSettings", tr("S&ettings…"), {"settings", QKeySequence::Preferences}, [this] {
    ShowSettings();
  })->setMenuRole(QAction::PreferencesRole);
  file->addSeparator();
  Command(file, "mnuExit", tr("E&xit"), {nullptr, QKeySequence::Quit}, [this] {
    close();
  })->setMenuRole(QAction::QuitRole);
}

void frmMain::BuildEditMenu() {
  QMenu* edit = AddMenu("mnuEdit", tr("&Edit"));
  edit->addActions(editor_actions_->EditActions());
  edit->addSeparator();
  LetterCommand(edit, "mnuFind", tr("&Find…"), {"find", QKeySequence::Find},
                [](frmLetter& letter) { letter.Find(); });
  LetterCommand(edit, "mnuFindAgain", tr("Find A&gain"), {nullptr, QKeySequence::FindNext},
                [](frmLetter& letter) { letter.FindAgain(); });
}

void frmMain::BuildViewMenu() {
  QMenu* view = AddMenu("mnuView", tr("&View"));
  page_width_action_ = new QAction(tr("Wrap at Printer's Page &Width"), this);
  page_width_action_->setObjectName(QStringLiteral("mnuPageWidth"));
  page_width_action_->setCheckable(true);
  view->addAction(page_width_action_);
  connect(page_width_action_, &QAction::toggled, this, [this](bool page_width) {
    Guard("chkPageWidth_Click", [&] { ApplyPageWidth(page_width); });
  });
  view->addSeparator();
  view->addActions(editor_actions_->ViewActions());
  view->addSeparator();
  Command(view, "mnuRefresh", tr("&Refresh Tree"), {"refresh", QKeySequence::Refresh},
          [this] { tree_->RefreshTree(); });
  Command(view, "mnuSearchTree", tr("&Search Tree"), {"find", QKeySequence(tr("Ctrl+Shift+F"))},
          [this] { tree_->FocusSearch(); });
}

void frmMain::BuildInsertMenu() {
  QMenu* insert = AddMenu("mnuInsert", tr("&Insert"));
  insert_combo_ = new QComboBox(this);
  insert_combo_->setObjectName(QStringLiteral("cboInsert"));
  insert_combo_->setAccessibleName(tr("Insert merge code"));
  insert_combo_->setMinimumContentsLength(20);
  insert_combo_->setMaxVisibleItems(20);
  insert_combo_->setFocusPolicy(Qt::ClickFocus);
  insert_menus_ = std::make_unique<InsertMenus>(
      *insert, *insert_combo_, *format_action_, [this](const std::string& item) {
        Guard("mnuInsertItem_Click",
              [&] { WithLetter([&item](frmLetter& letter) { letter.InsertItem(item); }); });
      });
  insert->addSeparator();
  insert->addAction(editor_actions_->InsertActions().first());  // a table
  LetterCommand(insert, "mnuInsertPicture", tr("Pi&cture…"), {},
                [](frmLetter& letter) { letter.InsertPicture(); });
  LetterCommand(insert, "mnuInsertExcel", tr("&Spreadsheet…"), {},
                [](frmLetter& letter) { letter.InsertExcel(); });
  LetterCommand(insert, "mnuInsertObject", tr("&File as Object…"), {},
                [](frmLetter& letter) { letter.InsertOLEObject(); });
  LetterCommand(insert, "mnuSaveEmbedded", tr("Sa&ve Embedded File…"), {},
                [](frmLetter& letter) { letter.SaveEmbeddedFile(); });
  insert->addAction(editor_actions_->InsertActions().last());  // a page break
}

void frmMain::BuildFormatMenu() {
  QMenu* format = AddMenu("mnuFormatMenu", tr("F&ormat"));
  format->addActions(editor_actions_->FormatActions());
  format->addSeparator();
  QMenu* table = format->addMenu(tr("&Table"));
  table->setObjectName(QStringLiteral("mnuTable"));
  table->addActions(editor_actions_->TableActions());
}

void frmMain::BuildToolsMenu() {
  QMenu* tools = AddMenu("mnuTools", tr("&Tools"));
  Command(tools, "cmdGenerate", tr("&Generate Letter(s)…"),
          {"generate", QKeySequence(tr("Ctrl+G")), tr("Letters from the selected template")},
          [this] { GenerateLetters(); });
  LetterCommand(tools, "mnuSpelling", tr("&Spelling…"), {"spelling", QKeySequence(tr("F7"))},
                [this](frmLetter& letter) { CheckSpelling(letter); });
  letter_commands_ << Command(tools, "mnuCheckTemplate", tr("&Check Template"),
                              {"check", QKeySequence(tr("F8"))}, [this] { CheckTemplate(); });
  tools->addSeparator();
  QMenu* schemes = tools->addMenu(tr("Co&lour Scheme"));
  schemes->setObjectName(QStringLiteral("mnuColourScheme"));
  auto* group = new QActionGroup(this);
  const QStringList titles{tr("&Blue"),  tr("&Gold"), tr("&Silver"),
                           tr("G&reen"), tr("Gr&ey"), tr("&Custom…")};
  for (std::size_t i = 0; i < kColourSchemes.size(); ++i) {
    const char* scheme = kColourSchemes[i];
    const QByteArray name = QByteArray("mnu") + scheme;
    QAction* action = Command(schemes, name.constData(), titles[static_cast<qsizetype>(i)], {},
                              [this, scheme] { ChooseScheme(scheme); });
    action->setCheckable(true);
    action->setData(QLatin1String(scheme));
    group->addAction(action);
  }
  connect(schemes, &QMenu::aboutToShow, group, [this, group] {
    const QString stored = QString::fromStdString(StoredScheme(session_.settings));
    for (QAction* action : group->actions()) action->setChecked(action->data() == stored);
  });
}

void frmMain::BuildWindowMenu() {
  QMenu* windows = AddMenu("mnuWindow", tr("&Window"));
  Command(windows, "mnuTabs", tr("Ta&bs"), {"tabs"}, [this] { desk_->ShowAsTabs(true); });
  Command(windows, "mnuTile", tr("&Tile"), {"tile"}, [this] { desk_->Tile(); });
  Command(windows, "mnuCascade", tr("&Cascade"), {"cascade"}, [this] { desk_->Cascade(); });
  windows->addSeparator();
  Command(windows, "mnuNext", tr("&Next Letter"), {nullptr, QKeySequence(tr("Ctrl+Tab"))},
          [this] { desk_->Next(); });
  Command(windows, "mnuPrevious", tr("&Previous Letter"),
          {nullptr, QKeySequence(tr("Ctrl+Shift+Tab"))}, [this] { desk_->Previous(); });
  windows->addSeparator();
  connect(windows, &QMenu::aboutToShow, this, [this, windows] { ListLetters(*windows); });
}

void frmMain::ListLetters(QMenu& windows) {
  for (QAction* old : std::as_const(listed_letters_)) delete old;
  listed_letters_.clear();
  for (LetterWindow* letter : desk_->Letters()) {
    const auto number = listed_letters_.size() + 1;
    const QString changed = letter->isWindowModified() ? QStringLiteral(" *") : QString();
    QString title = QString::fromStdString(letter->letter().members().Caption) + changed;
    title.replace(QLatin1Char('&'), QLatin1String("&&"));
    // One key reaches the first nine.
    QAction* action =
        windows.addAction((number < 10 ? QStringLiteral("&%1 %2") : QStringLiteral("%1 %2"))
                              .arg(QString::number(number), title));
    action->setObjectName(QStringLiteral("mnuLetter%1").arg(number));
    action->setCheckable(true);
    action->setChecked(letter == desk_->Active());
    connect(action, &QAction::triggered, letter, [this, letter] { desk_->BringToFront(letter); });
    listed_letters_ << action;
  }
}

void frmMain::BuildHelpMenu() {
  QMenu* help = AddMenu("mnuHelp", tr("&Help"));
  Command(help, "mnuUserGuide", tr("&User Guide"), {"help", QKeySequence::HelpContents},
          [this] { ShowGuide("user-guide.md"); });
  Command(help, "mnuMergeCodes", tr("&Merge Codes"), {}, [this] { ShowGuide("merge-codes.md"); });
  help->addSeparator();
  Command(help, "mnuForms", tr("Template &Forms…"), {"template"}, [this] { ShowForms(); });
  help->addSeparator();
  Command(help, "mnuAbout", tr("&About…"), {}, [this] {
    frmAbout(session_.database.DataFolder(), this).exec();
  })->setMenuRole(QAction::AboutRole);
}

void frmMain::BuildToolBar() {
  QToolBar* bar = addToolBar(tr("Letter"));
  bar->setObjectName(QStringLiteral("tlbMain"));
  bar->setMovable(false);
  bar->setIconSize(QSize(20, 20));
  bar->addAction(format_action_);
  for (const char* name :
       {"mnuOpen", "mnuSave", "", "mnuPrint", "mnuPrintPreview", "mnuExportPdf", "mnuEmail", "",
        "cmdGenerate", "", "mnuFind", "mnuSpelling", "mnuCheckTemplate", ""}) {
    QAction* action = findChild<QAction*>(QLatin1String(name));
    if (*name == '\0') {
      bar->addSeparator();
    } else if (action != nullptr) {
      bar->addAction(action);
    }
  }
  bar->addWidget(insert_combo_);
}

void frmMain::BuildFormatBar() {
  addToolBarBreak();
  QToolBar* bar = addToolBar(tr("Format"));
  bar->setObjectName(QStringLiteral("tlbFormat"));
  bar->setMovable(false);
  bar->setIconSize(QSize(20, 20));
  bar->addWidget(editor_actions_->FontBox(bar));
  bar->addWidget(editor_actions_->SizeBox(bar));
  bar->addActions(editor_actions_->FormatActions());
}

void frmMain::BuildStatusBar() {
  recipient_ = AddState("lblRecipient");
  letter_state_ = AddState("lblLetterState");
  auto* page_width = new QCheckBox(tr("Page width"), this);
  page_width->setObjectName(QStringLiteral("chkPageWidth"));
  page_width->setAccessibleName(tr("Wrap at the printer's page width"));
  page_width->setToolTip(page_width->accessibleName());
  page_width->setChecked(page_width_action_->isChecked());
  connect(page_width, &QCheckBox::toggled, page_width_action_, &QAction::setChecked);
  connect(page_width_action_, &QAction::toggled, page_width, &QCheckBox::setChecked);
  statusBar()->addPermanentWidget(page_width);
}

QLabel* frmMain::AddState(const char* name) {
  auto* label = new QLabel(this);
  label->setObjectName(QLatin1String(name));
  label->setContentsMargins(8, 0, 8, 0);
  label->setFrameShape(QFrame::StyledPanel);
  statusBar()->addPermanentWidget(label);
  return label;
}

}  // namespace tenora
