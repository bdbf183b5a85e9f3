#include "ui/window/tree/tree_filter.h"

#include "platform/runtime/search_text.h"

namespace tenora {

using Type = TreeModel::Type;

TreeFilter::TreeFilter(TreeModel& model, QObject* parent)
    : QSortFilterProxyModel(parent), model_(model) {
  setRecursiveFilteringEnabled(true);
  setSourceModel(&model);
}

void TreeFilter::SetText(const QString& text) {
  words_ = SearchWords(text.toStdString());
  invalidateFilter();
}

bool TreeFilter::Fits(const std::string& text) const {
  return HoldsWords(FoldedForSearch(text), words_);
}

bool TreeFilter::IsHit(const TreeModel::Entry& entry) const {
  switch (entry.type) {
    case Type::kGroup:
    case Type::kClosedFold:
      return false;
    case Type::kLetter:
      return Fits(entry.name.toStdString() + '\n' + entry.recipient + '\n' + entry.address);
    default:
      return Fits(entry.name.toStdString() + '\n' + entry.address);
  }
}

bool TreeFilter::IsName(const TreeModel::Entry& entry) const {
  return SearchWords(entry.name.toStdString()) == words_;
}

bool TreeFilter::filterAcceptsRow(int row, const QModelIndex& parent) const {
  if (words_.empty()) return true;
  return IsHit(*model_.EntryAt(model_.index(row, 0, parent)));
}

int TreeFilter::CountKept(const QModelIndex& parent) const {
  int count = 0;
  for (int row = 0; row < rowCount(parent); ++row) {
    const QModelIndex child = index(row, 0, parent);
    const bool fold = model_.EntryAt(mapToSource(child))->type == Type::kClosedFold;
    count += fold ? rowCount(child) : 1;
  }
  return count;
}

QVariant TreeFilter::data(const QModelIndex& index, int role) const {
  const QVariant whole = QSortFilterProxyModel::data(index, role);
  if (!Active() || !whole.isValid()) return whole;
  if (role == TreeModel::kCountRole) return CountKept(index);
  if (role == Qt::AccessibleDescriptionRole) {
    return tr("%n entries", nullptr, CountKept(index));
  }
  return whole;
}

}  // namespace tenora
