#include "ui/dialogs/recipient_list.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>
#include <set>
#include <utility>

namespace tenora {

void RecipientModel::SetRows(std::vector<RecipientRow> rows) {
  // Tenants of the same name differ by code, the rows of one owner by property.
  std::set<std::pair<std::string, std::string>> kept;
  for (const RecipientRow& row : TickedRows()) kept.emplace(row.recipient.code, row.text);
  beginResetModel();
  rows_ = std::move(rows);
  ticked_.assign(rows_.size(), false);
  ticked_count_ = 0;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    ticked_[i] = kept.contains({rows_[i].recipient.code, rows_[i].text});
    if (ticked_[i]) ++ticked_count_;
  }
  endResetModel();
  emit TicksChanged();
}

int RecipientModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant RecipientModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (role == Qt::DisplayRole) return QString::fromStdString(Row(index.row()).text);
  if (role == Qt::CheckStateRole) return IsTicked(index.row()) ? Qt::Checked : Qt::Unchecked;
  return {};
}

bool RecipientModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || role != Qt::CheckStateRole) return false;
  Tick({index.row()}, value.toInt() == Qt::Checked);
  return true;
}

std::vector<RecipientRow> RecipientModel::TickedRows() const {
  std::vector<RecipientRow> rows;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (ticked_[i]) rows.push_back(rows_[i]);
  }
  return rows;
}

void RecipientModel::Tick(const std::vector<int>& rows, bool ticked) {
  if (rows.empty()) return;
  for (const int row : rows) {
    auto tick = ticked_[static_cast<std::size_t>(row)];
    if (tick == ticked) continue;
    tick = ticked;
    ticked_count_ += ticked ? 1 : -1;
  }
  const auto [first, last] = std::ranges::minmax(rows);
  emit dataChanged(index(first), index(last), {Qt::CheckStateRole});
  emit TicksChanged();
}

void RecipientFilterModel::SetSearch(const QString& search) {
  search_ = search.toStdString();
  invalidateFilter();
}

bool RecipientFilterModel::filterAcceptsRow(int row, const QModelIndex& /*parent*/) const {
  return MatchesSearch(recipients_.Row(row).text, search_);
}

RecipientView::RecipientView(QWidget* parent) : QListView(parent) {
  setSelectionMode(ExtendedSelection);
  setUniformItemSizes(true);
  setAlternatingRowColors(true);
}

void RecipientView::mouseReleaseEvent(QMouseEvent* event) {
  QListView::mouseReleaseEvent(event);
  const QModelIndex line = indexAt(event->pos());
  if (event->button() != Qt::LeftButton || !line.isValid()) return;
  // A selection made by dragging, Shift or Ctrl is ticked with the space bar.
  if (selectionModel()->selectedRows().size() > 1 || event->modifiers() != Qt::NoModifier) return;
  const bool ticked = line.data(Qt::CheckStateRole).toInt() == Qt::Checked;
  model()->setData(line, ticked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

void RecipientView::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Space) return QListView::keyPressEvent(event);
  const QModelIndex line = currentIndex();
  if (!line.isValid()) return;
  // A row reached with Tab is current but not selected.
  if (!selectionModel()->hasSelection()) setCurrentIndex(line);
  TickMarked(line.data(Qt::CheckStateRole).toInt() != Qt::Checked);
}

void RecipientView::TickMarked(bool ticked) {
  for (const QModelIndex& line : selectionModel()->selectedRows()) {
    model()->setData(line, ticked ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
  }
}

}  // namespace tenora
