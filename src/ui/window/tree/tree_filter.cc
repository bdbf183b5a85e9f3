#include "ui/window/tree/tree_filter.h"

#include <algorithm>

namespace tenora {

TreeFilter::TreeFilter(TreeModel& model, QObject* parent)
    : QSortFilterProxyModel(parent), model_(model) {
  setRecursiveFilteringEnabled(true);
  setSourceModel(&model);
}

void TreeFilter::SetText(const QString& text) {
  words_ = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
  invalidateFilter();
}

bool TreeFilter::Fits(const QString& name) const {
  return std::ranges::all_of(
      words_, [&name](const QString& word) { return name.contains(word, Qt::CaseInsensitive); });
}

bool TreeFilter::filterAcceptsRow(int row, const QModelIndex& parent) const {
  if (words_.isEmpty()) return true;
  const QModelIndex index = model_.index(row, 0, parent);
  const TreeModel::Entry* entry = model_.EntryAt(index);
  switch (entry->type) {
    case TreeModel::Type::kGroup:
    case TreeModel::Type::kClosedFold:
      return false;  // shown only if one of its children is
    case TreeModel::Type::kLetter:
      if (Fits(model_.EntryAt(parent)->name)) return true;
      [[fallthrough]];
    default:
      return Fits(entry->name);
  }
}

}  // namespace tenora
