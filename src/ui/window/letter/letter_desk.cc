#include "ui/window/letter/letter_desk.h"

#include <QAction>
#include <QLabel>
#include <QMdiSubWindow>
#include <QMenu>
#include <QTabBar>
#include <QVBoxLayout>

#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

constexpr double kUsualShare = 0.7;  // of the desk, for a letter among others

// Tells the user what to do while no letter is open.
QWidget* MakeWelcome(QWidget* desk) {
  auto* welcome = new QWidget(desk);
  welcome->setObjectName(QStringLiteral("welcome"));
  auto* picture = new QLabel(welcome);
  picture->setPixmap(LineIcon("tenora").pixmap(QSize(64, 64), desk->devicePixelRatioF()));
  auto* title = new QLabel(LetterDesk::tr("No letter is open"), welcome);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.5);
  title->setFont(large);
  auto* hint =
      new QLabel(LetterDesk::tr("Double-click a template on the left to edit it, or select one and "
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

}  // namespace

LetterDesk::LetterDesk(QWidget* parent)
    : QStackedWidget(parent), area_(new QMdiArea(this)), welcome_(MakeWelcome(this)) {
  setObjectName(QStringLiteral("letterDesk"));
  area_->setObjectName(QStringLiteral("mdiLetters"));
  area_->setTabsClosable(true);
  area_->setTabsMovable(true);
  area_->setDocumentMode(true);
  area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  addWidget(area_);
  addWidget(welcome_);
  ShowAsTabs(true);
  ShowWelcomeWhereEmpty();
  connect(area_, &QMdiArea::subWindowActivated, this, [this] {
    ShowWelcomeWhereEmpty();
    emit ActiveChanged();
  });
}

LetterDesk::~LetterDesk() {
  // Letters that are still open, or closed just now, are destroyed after this; their signals must
  // not reach the desk.
  disconnect(area_, nullptr, this, nullptr);
  for (QMdiSubWindow* frame : area_->findChildren<QMdiSubWindow*>()) {
    disconnect(frame, nullptr, this, nullptr);
  }
}

LetterWindow* LetterDesk::Active() const {
  // While another program is active there is no active window, but there is still a current one.
  const QMdiSubWindow* window = area_->currentSubWindow();
  if (window == nullptr) {
    const auto windows = area_->subWindowList(QMdiArea::ActivationHistoryOrder);
    if (windows.isEmpty()) return nullptr;
    window = windows.last();
  }
  return qobject_cast<LetterWindow*>(window->widget());
}

std::vector<LetterWindow*> LetterDesk::Letters() const {
  std::vector<LetterWindow*> letters;
  for (const QMdiSubWindow* window : area_->subWindowList()) {
    if (auto* letter = qobject_cast<LetterWindow*>(window->widget())) letters.push_back(letter);
  }
  return letters;
}

LetterWindow* LetterDesk::OfFile(const std::filesystem::path& path) const {
  for (LetterWindow* window : Letters()) {
    if (window->letter().members().FilePath == path.string()) return window;
  }
  return nullptr;
}

void LetterDesk::Add(LetterWindow* window) {
  QMdiSubWindow* frame = area_->addSubWindow(window);
  frame->setAttribute(Qt::WA_DeleteOnClose);
  frame->setWindowIcon(window->windowIcon());
  // The frame's own menu has the keys of ours, and of two commands with one key neither works.
  for (QAction* action : frame->systemMenu()->actions())
    action->setShortcuts(QList<QKeySequence>());
  connect(window, &LetterWindow::CaptionChanged, this, [this] {
    ShowTabTexts();
    emit ActiveChanged();
  });
  connect(frame, &QObject::destroyed, this, [this] {
    ShowWelcomeWhereEmpty();
    emit ActiveChanged();
  });
  setCurrentWidget(area_);
  if (Tabbed()) {
    frame->showMaximized();
  } else {
    frame->resize(area_->size() * kUsualShare);
    frame->show();
  }
  window->setFocus();
  ShowTabTexts();
  emit Added(window);
  emit ActiveChanged();
}

void LetterDesk::BringToFront(LetterWindow* window) {
  area_->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(window->parentWidget()));
  window->setFocus();
}

void LetterDesk::ShowAsTabs(bool tabs) {
  area_->setViewMode(tabs ? QMdiArea::TabbedView : QMdiArea::SubWindowView);
  if (!tabs) return;
  if (auto* bar = area_->findChild<QTabBar*>()) {
    bar->setExpanding(false);
    // Shortened, many names would be one letter each; the bar scrolls instead.
    bar->setElideMode(Qt::ElideNone);
    bar->setAccessibleName(tr("Open letters"));
  }
  ShowTabTexts();
}

// The area itself takes an "&" in a name for the mark of a mnemonic. The tabs are in the order of
// its windows, also once they were moved.
void LetterDesk::ShowTabTexts() {
  auto* const bar = Tabbed() ? area_->findChild<QTabBar*>() : nullptr;
  if (bar == nullptr) return;
  int tab = 0;
  for (const QMdiSubWindow* frame : area_->subWindowList()) {
    if (const auto* letter = qobject_cast<LetterWindow*>(frame->widget())) {
      bar->setTabText(tab, letter->TabText().replace(QLatin1Char('&'), QLatin1String("&&")));
    }
    ++tab;
  }
}

void LetterDesk::Tile() {
  ShowAsTabs(false);
  area_->tileSubWindows();
}

void LetterDesk::Cascade() {
  ShowAsTabs(false);
  area_->cascadeSubWindows();
  for (QMdiSubWindow* frame : area_->subWindowList()) frame->resize(area_->size() * kUsualShare);
}

bool LetterDesk::CloseAll() {
  const std::vector<LetterWindow*> letters = Letters();
  // All are asked for before the first one goes: cancelling keeps everything open.
  for (LetterWindow* letter : letters) {
    if (letter->letter().members().Changed) BringToFront(letter);
    if (!letter->MayClose()) return false;
  }
  for (LetterWindow* letter : letters) letter->CloseNow();
  return true;
}

void LetterDesk::ShowWelcomeWhereEmpty() {
  setCurrentWidget(area_->subWindowList().isEmpty() ? welcome_ : static_cast<QWidget*>(area_));
}

}  // namespace tenora
