// What of the tree the search box leaves: entries whose names hold the text, with the groups they
// stand in; a recipient that fits keeps all its letters.
#pragma once

#include <QSortFilterProxyModel>

#include "ui/window/tree/tree_model.h"

namespace tenora {

class TreeFilter : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  explicit TreeFilter(TreeModel& model, QObject* parent = nullptr);

  // Letter case and blanks around do not count; all words must be there, in any order.
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
