#include "ui/window/main/frm_main.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "platform/dialogs/guard.h"
#include "ui/window/appearance/icons.h"

namespace tenora {

frmMain::frmMain(const CommandParts& parts, QWidget* parent)
    : QMainWindow(parent),
      parts_(parts),
      session_(parts.session),
      dark_desktop_(QApplication::palette().window().color().lightness() < 128) {
  setObjectName(QStringLiteral("frmMain"));
  setWindowTitle(QString::fromLatin1(kApplicationTitle));
  setWindowIcon(LineIcon("tenora"));
  // Room for the frame that a window manager puts around it.
  resize(QSize(1280, 800).boundedTo(screen()->availableGeometry().size() - QSize(8, 40)));

  splitter_ = new QSplitter(this);
  splitter_->setObjectName(QStringLiteral("SplitterVert"));
  splitter_->setChildrenCollapsible(false);
  tree_ = new ctlTree(session_, splitter_);
  desk_ = new LetterDesk(splitter_);
  splitter_->addWidget(tree_);
  splitter_->addWidget(desk_);
  splitter_->setStretchFactor(1, 1);
  splitter_->setSizes({300, 980});
  setCentralWidget(splitter_);
  desk_->SetWelcome(MakeWelcome());

  lint_panel_ = new LintPanel(this);
  addDockWidget(Qt::BottomDockWidgetArea, lint_panel_);
  lint_panel_->hide();

  editor_actions_ = new EditorActions(this);
  BuildMenus();
  BuildToolBar();
  BuildFormatBar();
  BuildStatusBar();
  tree_->FillContextMenu = [this](QMenu& menu, const TreeModel::Entry& entry) {
    FillTreeMenu(menu, entry);
  };
  connect(tree_, &ctlTree::Activated, this, &frmMain::OpenEntry);
  connect(desk_, &LetterDesk::ActiveChanged, this, &frmMain::ShowLetterState);
  ShowLetterState();
}

frmMain::~frmMain() {
  // The letters' last signals must not reach a window half gone.
  disconnect(desk_, nullptr, this, nullptr);
}

void frmMain::Guard(const char* procedure, const Body& body) {
  Guarded(dialogs(), std::string("frmMain - ") + procedure, body);
}

QAction* frmMain::Command(QMenu* menu, const char* name, const QString& text, const Look& look,
                          Body body) {
  auto* action = new QAction(text, this);
  action->setObjectName(QLatin1String(name));
  if (look.icon != nullptr) action->setIcon(LineIcon(look.icon));
  action->setShortcut(look.keys);
  if (!look.tip.isEmpty()) action->setStatusTip(look.tip);
  menu->addAction(action);
  const std::string label = std::string(name) + "_Click";
  connect(action, &QAction::triggered, this,
          [this, label, body = std::move(body)] { Guard(label.c_str(), body); });
  return action;
}

void frmMain::DisplayInsertMenu() {
  const LetterWindow* window = desk_->Active();
  const InsertList list = window == nullptr
                              ? InsertList::kTenant
                              : ListFor(const_cast<LetterWindow*>(window)->letter().members().Kind);
  insert_menus_->DisplayInsertMenu(list, session_.cheque_word);
}

void frmMain::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (std::exchange(displayed_, true)) return;
  // Once the window is on the screen, so that messages stand over it.
  QMetaObject::invokeMethod(
      this, [this] { Guard("MDIForm_Activate", [this] { FirstDisplay(); }); },
      Qt::QueuedConnection);
}

void frmMain::closeEvent(QCloseEvent* event) {
  bool closed = false;
  Guard("MDIForm_QueryUnload", [&] {
    closed = desk_->CloseAll();
    if (closed) StoreLayout();
  });
  event->setAccepted(closed);
}

QWidget* frmMain::MakeWelcome() {
  auto* welcome = new QWidget(desk_);
  welcome->setObjectName(QStringLiteral("welcome"));
  auto* picture = new QLabel(welcome);
  picture->setPixmap(LineIcon("tenora").pixmap(QSize(64, 64), devicePixelRatioF()));
  auto* title = new QLabel(tr("No letter is open"), welcome);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.5);
  title->setFont(large);
  auto* hint = new QLabel(tr("Double-click a template on the left to edit it, or select one and "
                             "choose Generate to write to tenants or owners."),
                          welcome);
  hint->setWordWrap(true);
  hint->setAlignment(Qt::AlignHCenter);
  hint->setFixedSize(420, hint->heightForWidth(420));
  hint->setForegroundRole(QPalette::PlaceholderText);
  auto* layout = new QVBoxLayout(welcome);
  layout->addStretch(2);
  layout->addWidget(picture, 0, Qt::AlignHCenter);
  layout->addSpacing(12);
  layout->addWidget(title, 0, Qt::AlignHCenter);
  layout->addSpacing(6);
  layout->addWidget(hint, 0, Qt::AlignHCenter);
  layout->addStretch(3);
  return welcome;
}

}  // namespace tenora
