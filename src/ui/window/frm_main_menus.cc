// The main window's menus, tool bar and status bar.
#include <QDesktopServices>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>

#include "letters/template_library.h"
#include "ui/window/frm_main.h"
#include "ui/window/icons.h"

namespace tenora {

QMenu* frmMain::AddMenu(const char* name, const QString& title) {
  QMenu* menu = menuBar()->addMenu(title);
  menu->setObjectName(QLatin1String(name));
  return menu;
}

void frmMain::BuildMenus() {
  BuildFileMenu();
  BuildViewMenu();
  BuildInsertMenu();
  BuildWindowMenu();
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
  letter_commands_ << Command(file, "mnuClose", tr("&Close"), {"close", QKeySequence::Close},
                              [this] { desk_->CloseActive(); });
  file->addSeparator();
  Command(file, "mnuExit", tr("E&xit"), {nullptr, QKeySequence::Quit}, [this] {
    close();
  })->setMenuRole(QAction::QuitRole);
}

void frmMain::BuildViewMenu() {
  QMenu* view = AddMenu("mnuView", tr("&View"));
  page_width_action_ = new QAction(tr("Wrap at Printer's Page &Width"), this);
  page_width_action_->setObjectName(QStringLiteral("chkPageWidth"));
  page_width_action_->setCheckable(true);
  view->addAction(page_width_action_);
  connect(page_width_action_, &QAction::toggled, this, [this](bool page_width) {
    Guard("chkPageWidth_Click", [&] { ApplyPageWidth(page_width); });
  });
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
}

void frmMain::BuildToolBar() {
  QToolBar* bar = addToolBar(tr("Letter"));
  bar->setObjectName(QStringLiteral("tlbMain"));
  bar->setMovable(false);
  bar->setIconSize(QSize(20, 20));
  bar->addAction(format_action_);
  bar->addAction(findChild<QAction*>(QStringLiteral("mnuOpen")));
  bar->addSeparator();
  bar->addWidget(insert_combo_);
}

void frmMain::BuildStatusBar() {
  letter_state_ = new QLabel(this);
  letter_state_->setObjectName(QStringLiteral("lblLetterState"));
  recipient_ = new QLabel(this);
  recipient_->setObjectName(QStringLiteral("lblRecipient"));
  page_width_state_ = new QLabel(this);
  page_width_state_->setObjectName(QStringLiteral("lblPageWidth"));
  for (QLabel* label : {recipient_, letter_state_, page_width_state_}) {
    statusBar()->addPermanentWidget(label);
  }
}

void frmMain::FillTreeMenu(QMenu& menu, const TreeModel::Entry& entry) {
  if (!entry.path.empty()) {
    menu.addAction(LineIcon("open"), tr("&Open"), this, [this, entry] { OpenEntry(entry); });
  }
  if (!entry.folder.empty()) {
    menu.addAction(LineIcon("folder"), tr("Show &Folder"), this, [this, entry] {
      const auto folder = session_.database.DataFolder() / entry.folder;
      QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(folder.string())));
    });
  }
}

}  // namespace tenora
