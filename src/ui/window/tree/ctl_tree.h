// The template tree with its search box, on the left of the main window.
#pragma once

#include <QFileSystemWatcher>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTimer>
#include <QTreeView>
#include <QWidget>
#include <functional>

#include "ui/window/tree/letter_finder.h"
#include "ui/window/tree/tree_filter.h"
#include "ui/window/tree/tree_model.h"

namespace tenora {

class ctlTree : public QWidget {
  Q_OBJECT

 public:
  using Entry = TreeModel::Entry;

  explicit ctlTree(Session& session, QWidget* parent = nullptr);

  TreeModel& model() { return model_; }
  QTreeView& view() { return *view_; }

  // Reloads from folders and caches; expanded and selected entries stay so.
  void RefreshTree();
  // The same, with the selection on a file that had another name in the selected one's place.
  void RefreshAfterRename(const std::filesystem::path& renamed);
  // Says so, and lists neither tenants nor owners from the next refresh on.
  void SetDatabaseMissing(bool missing);
  // While held, refreshing is postponed: work on another thread may be changing the caches.
  void Hold(bool hold);
  // The selected entry, or null.
  const Entry* Current() const;
  void FocusSearch();

  // Keys of the expanded entries, one per line, as stored in the settings.
  QString OpenEntries() const;
  void OpenAgain(const QString& keys);
  void ExpandGroups(const QStringList& names);

  // What the context menu offers for an entry; the main window fills it.
  std::function<void(QMenu& menu, const Entry& entry)> FillContextMenu;

 signals:
  void Activated(const tenora::TreeModel::Entry& entry);
  void SelectionChanged();

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void BuildView();
  void Filter(const QString& text);
  void FindLetters();
  void ListFound(const QStringList& keys);
  void TellWhatIsFound();
  // One of just this name before others, and an open tenancy before a closed one.
  void SelectFirstFound();
  void ExpandGroupsAndFolds();
  // Shows the letters of recipients who were found by these alone.
  void ExpandHolders(const QModelIndex& below);
  void ShowContextMenu(const QPoint& position);
  void Watch();
  QModelIndex Source(const QModelIndex& shown) const { return filter_.mapToSource(shown); }

  TreeModel model_;
  TreeFilter filter_;
  QLineEdit* search_;
  QLabel* nothing_found_;
  QLabel* missing_;
  QTreeView* view_;
  QFileSystemWatcher watcher_;
  QTimer refresh_soon_;
  LetterFinder finder_;
  QTimer find_soon_;
  bool more_letters_ = false;  // than were looked for
  QString open_before_search_;
  bool held_ = false, refresh_wanted_ = false;
};

}  // namespace tenora
