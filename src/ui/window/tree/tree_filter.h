// Filters the tree by the search box: keeps the entries whose names contain the text and the groups
// they belong to; a recipient that matches keeps all its letters.
#pragma once

#include <QSortFilterProxyModel>

#include "ui/window/tree/tree_model.h"

namespace tenora {

class TreeFilter : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  explicit TreeFilter(TreeModel& model, QObject* parent = nullptr);

  // Ignores letter case and surrounding blanks; all words must occur, in any order.
  void SetText(const QString& text);
  bool Active() const { return !words_.isEmpty(); }

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

 private:
  bool Fits(const QString& name) const;

  TreeModel& model_;
  QStringList words_;
};

}  // namespace tenora
