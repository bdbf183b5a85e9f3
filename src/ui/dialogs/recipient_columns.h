// Which columns the recipients' table shows, how wide, in which order, and by which it is sorted.
#pragma once

#include <QMenu>
#include <QObject>
#include <optional>
#include <string>
#include <vector>

#include "platform/dialogs/dialogs.h"
#include "ui/dialogs/recipient_layout.h"
#include "ui/dialogs/recipient_list.h"

namespace tenora {

class RecipientColumns : public QObject {
  Q_OBJECT

 public:
  // All outlive this. `usual`: the facts that are columns where the user has chosen none.
  RecipientColumns(RecipientView& view, RecipientModel& model, Dialogs& dialogs,
                   std::vector<std::string> usual);

  // Shows the layout's columns as far as `names` has them.
  void Restore(const RecipientLayout& layout, const FactNames& names);
  void SetNames(std::shared_ptr<const FactNames> names) { names_ = std::move(names); }
  // The columns and the order as they are now.
  RecipientLayout Layout() const;

  // None: the list's order; empty: by its text; else by the fact.
  const std::optional<std::string>& SortedBy() const { return sorted_by_; }
  bool Descending() const { return descending_; }

  // To choose columns and order; also shown for a right click on the header.
  QMenu& Menu() { return menu_; }

 signals:
  void ColumnsChanged();
  void OrderChanged();

 private:
  void FillMenu();
  void FillSortMenu(QMenu& menu);
  void Show(const std::vector<RecipientLayout::Column>& columns);
  void ShowFact(const std::string& name, bool shown);
  void ShowOther();
  void Sort(std::optional<std::string> name, bool descending);
  void MarkSorted();
  int UsualWidth(const std::string& name) const;
  std::string NameOf(int section) const;

  RecipientView& view_;
  RecipientModel& model_;
  Dialogs& dialogs_;
  const std::vector<std::string> usual_;
  std::shared_ptr<const FactNames> names_;
  std::optional<std::string> sorted_by_;
  bool descending_ = false;
  bool marking_ = false;  // the mark in the header follows the order, not the other way round
  QMenu menu_;
};

}  // namespace tenora
