#include "ui/window/tree/ctl_tree.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

constexpr int kRefreshDelay = 250;  // milliseconds: a batch saves many letters at once
constexpr int kFindDelay = 200;     // milliseconds: until typing has paused
constexpr int kHintLength = 60;     // characters of the search text
constexpr int kBesideCount = 8;     // pixels, on either side of a count

// Draws the count after a name, fainter than the name, which is shortened before it reaches it.
class CountDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    const QString count = index.data(TreeModel::kCountRole).toString();
    if (count.isEmpty()) return QStyledItemDelegate::paint(painter, option, index);
    QStyleOptionViewItem shown = option;
    initStyleOption(&shown, index);
    const QStyle& style = *option.widget->style();
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &shown, shown.widget) + 1;
    const int name_width =
        style.subElementRect(QStyle::SE_ItemViewItemText, &shown, shown.widget).width() -
        2 * margin - option.fontMetrics.horizontalAdvance(count) - 2 * kBesideCount;
    shown.text = shown.fontMetrics.elidedText(shown.text, shown.textElideMode, name_width);
    style.drawControl(QStyle::CE_ItemViewItem, &shown, painter, shown.widget);
    const QPalette::ColorRole role = option.state & QStyle::State_Selected
                                         ? QPalette::HighlightedText
                                         : QPalette::PlaceholderText;
    painter->setPen(option.palette.color(role));
    painter->setFont(option.font);
    painter->drawText(option.rect.adjusted(0, 0, -kBesideCount, 0),
                      Qt::AlignRight | Qt::AlignVCenter, count);
  }

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QSize size = QStyledItemDelegate::sizeHint(option, index);
    return {size.width() + option.fontMetrics.horizontalAdvance(QStringLiteral(" 0000")),
            option.fontMetrics.height() + 8};
  }
};

}  // namespace

ctlTree::ctlTree(Session& session, QWidget* parent)
    : QWidget(parent),
      model_(session),
      filter_(model_),
      search_(new QLineEdit(this)),
      nothing_found_(new QLabel(this)),
      missing_(new QLabel(this)),
      view_(new QTreeView(this)) {
  setObjectName(QStringLiteral("ctlTree"));
  BuildView();
  search_->setObjectName(QStringLiteral("txtTreeSearch"));
  search_->setPlaceholderText(tr("Search names, addresses, letters"));
  search_->setAccessibleName(tr("Search the tree"));
  search_->setClearButtonEnabled(true);
  search_->addAction(LineIcon("find"), QLineEdit::LeadingPosition)->setText(tr("Search"));
  search_->installEventFilter(this);
  nothing_found_->setObjectName(QStringLiteral("lblNothingFound"));
  nothing_found_->setTextFormat(Qt::PlainText);
  nothing_found_->setWordWrap(true);
  nothing_found_->setMargin(6);
  nothing_found_->hide();
  missing_->setObjectName(QStringLiteral("lblDatabaseMissing"));
  missing_->setTextFormat(Qt::PlainText);
  missing_->setWordWrap(true);
  missing_->setMargin(6);
  missing_->hide();

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(6, 6, 0, 0);
  layout->setSpacing(6);
  layout->addWidget(search_);
  layout->addWidget(nothing_found_);
  layout->addWidget(missing_);
  layout->addWidget(view_);

  refresh_soon_.setSingleShot(true);
  refresh_soon_.setInterval(kRefreshDelay);
  connect(&refresh_soon_, &QTimer::timeout, this, &ctlTree::RefreshTree);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this,
          [this] { refresh_soon_.start(); });
  connect(search_, &QLineEdit::textChanged, this, &ctlTree::Filter);
  find_soon_.setSingleShot(true);
  find_soon_.setInterval(kFindDelay);
  connect(&find_soon_, &QTimer::timeout, this, &ctlTree::FindLetters);
  connect(&finder_, &LetterFinder::Found, this, &ctlTree::ListFound);
  connect(&finder_, &LetterFinder::Ended, this, [this](bool all) {
    more_letters_ = !all;
    TellWhatIsFound();
  });
}

void ctlTree::BuildView() {
  view_->setObjectName(QStringLiteral("tvwTemplates"));
  view_->setAccessibleName(tr("Templates, tenants and owners"));
  view_->setModel(&filter_);
  view_->setItemDelegate(new CountDelegate(view_));
  view_->setHeaderHidden(true);
  view_->setUniformRowHeights(true);
  view_->setFrameShape(QFrame::NoFrame);
  view_->setIndentation(18);
  view_->setIconSize(QSize(18, 18));
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setContextMenuPolicy(Qt::CustomContextMenu);
  view_->setTextElideMode(Qt::ElideRight);
  view_->header()->setStretchLastSection(true);
  view_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  view_->setExpandsOnDoubleClick(true);
  connect(view_, &QTreeView::activated, this, [this](const QModelIndex& index) {
    const Entry* entry = model_.EntryAt(Source(index));
    if (entry == nullptr) return;
    if (entry->path.empty()) {
      // The view expands it on a double click, but not on Enter.
      if (view_->property("byKey").toBool()) view_->setExpanded(index, !view_->isExpanded(index));
      return;
    }
    emit Activated(Entry(*entry));
  });
  connect(view_, &QTreeView::expanded, this, [this](const QModelIndex& index) {
    model_.SetOpen(Source(index), true);
    Watch();
  });
  connect(view_, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
    model_.SetOpen(Source(index), false);
    Watch();
  });
  connect(view_, &QTreeView::customContextMenuRequested, this, &ctlTree::ShowContextMenu);
  connect(view_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          &ctlTree::SelectionChanged);
  view_->installEventFilter(this);
}

bool ctlTree::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (object == view_) view_->setProperty("byKey", key == Qt::Key_Return || key == Qt::Key_Enter);
    if (object == search_ && key == Qt::Key_Escape) {
      search_->clear();
      return true;
    }
    if (object == search_ && (key == Qt::Key_Down || key == Qt::Key_Return)) {
      view_->setFocus();
      if (filter_.Active()) SelectFirstFound();
      return true;
    }
  } else if (object == view_ && event->type() == QEvent::KeyRelease) {
    view_->setProperty("byKey", false);
  }
  return QWidget::eventFilter(object, event);
}

void ctlTree::SelectFirstFound() {
  QModelIndex best;
  int best_rank = 4;
  for (QModelIndex at = filter_.index(0, 0); at.isValid() && best_rank > 0;
       at = view_->indexBelow(at)) {
    const Entry& entry = *model_.EntryAt(Source(at));
    if (!filter_.IsHit(entry)) continue;
    // The fold of closed tenancies is above the open ones.
    const int rank = (filter_.IsName(entry) ? 0 : 2) + (entry.closed ? 1 : 0);
    if (rank >= best_rank) continue;
    best = at;
    best_rank = rank;
  }
  if (best.isValid()) view_->setCurrentIndex(best);
}

void ctlTree::Hold(bool hold) {
  held_ = hold;
  if (!held_ && std::exchange(refresh_wanted_, false)) RefreshTree();
}

void ctlTree::RefreshTree() {
  if (held_) {
    refresh_wanted_ = true;
    return;
  }
  model_.Refresh();
  Watch();
  finder_.Forget();
  if (filter_.Active()) find_soon_.start();
  TellWhatIsFound();
}

void ctlTree::SetDatabaseMissing(bool missing) {
  model_.ListRecipients(!missing);
  missing_->setVisible(missing);
  if (!missing) return;
  missing_->setText(
      tr("The rental database is not there. Tenants and owners are listed again once "
         "it is."));
}

void ctlTree::RefreshAfterRename(const std::filesystem::path& renamed) {
  const QPersistentModelIndex folder = Source(view_->currentIndex()).parent();
  RefreshTree();
  for (int row = 0; folder.isValid() && row < model_.rowCount(folder); ++row) {
    const QModelIndex index = model_.index(row, 0, folder);
    // A search may leave it out now.
    const QModelIndex shown = filter_.mapFromSource(index);
    if (model_.EntryAt(index)->path == renamed && shown.isValid()) view_->setCurrentIndex(shown);
  }
}

const ctlTree::Entry* ctlTree::Current() const {
  return model_.EntryAt(Source(view_->currentIndex()));
}

void ctlTree::FocusSearch() {
  search_->setFocus(Qt::ShortcutFocusReason);
  search_->selectAll();
}

void ctlTree::ExpandGroups(const QStringList& names) {
  for (const QString& name : names) view_->expand(filter_.mapFromSource(model_.Group(name)));
}

QString ctlTree::OpenEntries() const {
  // Entries expanded by a search are not the user's choice.
  if (filter_.Active()) return open_before_search_;
  QStringList keys;
  for (QModelIndex index = filter_.index(0, 0); index.isValid(); index = view_->indexBelow(index)) {
    if (view_->isExpanded(index)) keys.append(model_.KeyOf(Source(index)));
  }
  return keys.join(QLatin1Char('\n'));
}

void ctlTree::OpenAgain(const QString& keys) {
  // The view emits no signals for entries collapsed this way.
  view_->collapseAll();
  model_.SetAllClosed();
  for (const QString& key : keys.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
    view_->expand(filter_.mapFromSource(model_.IndexOfKey(key)));
  }
}

void ctlTree::Filter(const QString& text) {
  const bool was_active = filter_.Active();
  if (!was_active) open_before_search_ = OpenEntries();
  view_->setUpdatesEnabled(false);
  filter_.SetText(text);
  finder_.Cancel();
  more_letters_ = false;
  if (filter_.Active()) {
    ExpandGroupsAndFolds();
    ExpandHolders({});
    view_->scrollToTop();
    find_soon_.start();
  } else if (was_active) {
    OpenAgain(open_before_search_);
    find_soon_.stop();
  }
  view_->setUpdatesEnabled(true);
  TellWhatIsFound();
}

void ctlTree::FindLetters() {
  if (!filter_.Active()) return;
  if (held_) return find_soon_.start();
  finder_.Start(model_.data_folder(), model_.UnlistedRecipients(), filter_.words());
  TellWhatIsFound();
}

void ctlTree::ListFound(const QStringList& keys) {
  if (held_) return find_soon_.start();
  view_->setUpdatesEnabled(false);
  for (const QString& key : keys) model_.fetchMore(model_.IndexOfKey(key));
  ExpandGroupsAndFolds();
  ExpandHolders({});
  view_->setUpdatesEnabled(true);
  TellWhatIsFound();
}

void ctlTree::ExpandHolders(const QModelIndex& below) {
  // For the view's signals they would count as opened by the user, and be watched.
  const QSignalBlocker quiet(view_);
  for (int row = 0; row < filter_.rowCount(below); ++row) {
    const QModelIndex shown = filter_.index(row, 0, below);
    const Entry& entry = *model_.EntryAt(Source(shown));
    if (entry.type == TreeModel::Type::kGroup || entry.type == TreeModel::Type::kClosedFold) {
      ExpandHolders(shown);
    } else if (filter_.rowCount(shown) > 0 && !filter_.IsHit(entry)) {
      view_->expand(shown);
    }
  }
}

void ctlTree::TellWhatIsFound() {
  const bool nothing = filter_.Active() && filter_.rowCount() == 0;
  if (nothing && (find_soon_.isActive() || finder_.Running())) {
    nothing_found_->setText(tr("Looking through the saved letters…"));
  } else if (nothing) {
    nothing_found_->setText(
        tr("No template, tenant, owner, address or letter is called \"%1\". Escape in the search "
           "box shows them all again.")
            .arg(search_->text().trimmed().left(kHintLength)));
  } else if (more_letters_) {
    nothing_found_->setText(
        tr("More than %1 people have such letters; type more of the name to see the others.")
            .arg(LetterFinder::kMostFound));
  }
  nothing_found_->setVisible(nothing || more_letters_);
}

void ctlTree::ExpandGroupsAndFolds() {
  for (int row = 0; row < filter_.rowCount(); ++row) {
    const QModelIndex group = filter_.index(row, 0);
    view_->expand(group);
    const QModelIndex fold = filter_.index(0, 0, group);
    const Entry* entry = model_.EntryAt(Source(fold));
    if (entry != nullptr && entry->type == TreeModel::Type::kClosedFold) view_->expand(fold);
  }
}

void ctlTree::ShowContextMenu(const QPoint& position) {
  const QModelIndex index = view_->indexAt(position);
  const Entry* entry = model_.EntryAt(Source(index));
  if (entry == nullptr || !FillContextMenu) return;
  QMenu menu(this);
  FillContextMenu(menu, *entry);
  if (!menu.isEmpty()) menu.exec(view_->viewport()->mapToGlobal(position));
}

// Watches the folders whose files are shown. Where the system cannot watch a folder (a network
// share), F5 refreshes.
void ctlTree::Watch() {
  QStringList wanted;
  for (const auto& folder : model_.ShownFolders()) {
    wanted.append(QString::fromStdString(folder.string()));
  }
  const QStringList watched = watcher_.directories();
  QStringList gone;
  for (const QString& folder : watched) {
    if (!wanted.contains(folder)) gone.append(folder);
  }
  if (!gone.isEmpty()) watcher_.removePaths(gone);
  for (const QString& folder : wanted) {
    if (!watched.contains(folder)) watcher_.addPath(folder);
  }
}

}  // namespace tenora
