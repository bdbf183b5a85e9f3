// Filters the tree by the search box: keeps the entries whose names contain the text and the groups
// they belong to; a recipient that matches keeps all its letters. Counts are of what is kept.
#pragma once

#include <QSortFilterProxyModel>
#include <string>
#include <vector>

#include "ui/window/tree/tree_model.h"

namespace tenora {

class TreeFilter : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  explicit TreeFilter(TreeModel& model, QObject* parent = nullptr);

  // Ignores letter case, accents and surrounding blanks; all words must occur, in any order, for a
  // tenant in the name or the property's address, for a letter in its name or its recipient's.
  void SetText(const QString& text);
  bool Active() const { return !words_.empty(); }
  const std::vector<std::string>& words() const { return words_; }
  // True for a template, recipient or letter that was searched for by its own name; groups, and
  // recipients who are only shown because of their letters, are none.
  bool IsHit(const TreeModel::Entry& entry) const;
  // Whether the search is the whole of the entry's own name.
  bool IsName(const TreeModel::Entry& entry) const;

  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

 private:
  bool Fits(const std::string& text) const;
  int CountKept(const QModelIndex& parent) const;

  TreeModel& model_;
  std::vector<std::string> words_;
};

}  // namespace tenora
