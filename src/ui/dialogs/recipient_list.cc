#include "ui/dialogs/recipient_list.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyledItemDelegate>
#include <algorithm>
#include <numeric>
#include <set>
#include <utility>

#include "platform/runtime/search_text.h"

namespace tenora {
namespace {

// Keeps amounts, which are on the right, off the text of the next column.
class Delegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    // Other blanks at the end of a line do not count where it is put.
    if (option->displayAlignment.testFlag(Qt::AlignRight)) option->text += "\u00A0\u00A0";
  }
};

}  // namespace

void RecipientModel::SetRows(std::vector<RecipientRow> rows) {
  // Tenants of the same name differ by code, the rows of one owner by property.
  std::set<std::pair<std::string, std::string>> kept;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    if (ticked_[i]) kept.emplace(rows_[i].recipient.code, rows_[i].text);
  }
  beginResetModel();
  rows_ = std::move(rows);
  ticked_.assign(rows_.size(), false);
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    ticked_[i] = kept.contains({rows_[i].recipient.code, rows_[i].text});
  }
  MatchRows();
  endResetModel();
  emit TicksChanged();
}

void RecipientModel::SetColumns(std::vector<std::string> names) {
  beginResetModel();
  columns_ = std::move(names);
  endResetModel();
}

void RecipientModel::SetNames(std::shared_ptr<const FactNames> names) { names_ = std::move(names); }

void RecipientModel::SetValues(std::shared_ptr<const RecipientValues> values) {
  values_ = std::move(values);
  MatchRows();
  if (rows_.empty() || columns_.empty()) return;
  emit dataChanged(index(0, 1), index(rowCount() - 1, columnCount() - 1));
}

void RecipientModel::MatchRows() {
  value_rows_.clear();
  for (const RecipientRow& row : rows_) {
    value_rows_.push_back(values_ ? values_->Find(row) : std::nullopt);
  }
}

int RecipientModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int RecipientModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : 1 + static_cast<int>(columns_.size());
}

std::optional<std::size_t> RecipientModel::ValueRow(int row) const {
  return value_rows_[static_cast<std::size_t>(row)];
}

QVariant RecipientModel::ValueAt(std::size_t row, const std::string& name, int role) const {
  const RecipientTable::Cell cell = values_->table.At(row, name);
  if (role == Qt::ToolTipRole && !cell.problem.empty()) return QString::fromStdString(cell.problem);
  if (!cell.problem.empty()) return QStringLiteral("?");
  return QString::fromStdString(FactText(locale_, cell.fact));
}

QVariant RecipientModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (index.column() == 0) {
    if (role == Qt::DisplayRole) return QString::fromStdString(Row(index.row()).text);
    if (role == Qt::CheckStateRole) return IsTicked(index.row()) ? Qt::Checked : Qt::Unchecked;
    return {};
  }
  if (role == Qt::TextAlignmentRole) return QVariant(AlignmentOf(index.column()));
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  const std::string& name = columns_[static_cast<std::size_t>(index.column() - 1)];
  if (!branch_.isEmpty() && name == kBranchColumn) return branch_;
  const std::optional<std::size_t> row = ValueRow(index.row());
  if (!row || !values_->names.contains(name)) return {};
  return ValueAt(*row, name, role);
}

Qt::Alignment RecipientModel::AlignmentOf(int column) const {
  const FactNames::Name* name = column == 0 || !names_
                                    ? nullptr
                                    : names_->Find(columns_[static_cast<std::size_t>(column - 1)]);
  const bool amount =
      name != nullptr && (name->type == FactType::kNumber || name->type == FactType::kMoney);
  return (amount ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

QVariant RecipientModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section >= columnCount()) return {};
  if (role == Qt::TextAlignmentRole) return QVariant(AlignmentOf(section));
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  if (section == 0) return tr("Recipient");
  return QString::fromStdString(columns_[static_cast<std::size_t>(section - 1)]);
}

std::vector<std::size_t> RecipientModel::Places(const std::string& name, bool descending) const {
  std::vector<std::size_t> order(rows_.size());
  std::iota(order.begin(), order.end(), 0U);
  if (name.empty()) {
    std::vector<std::string> folded;
    for (const RecipientRow& row : rows_) folded.push_back(FoldedForSearch(row.text));
    std::ranges::stable_sort(order, [&](std::size_t left, std::size_t right) {
      return descending ? folded[right] < folded[left] : folded[left] < folded[right];
    });
  } else if (values_ && values_->names.contains(name)) {
    // By value, and those without a row of values behind all others.
    std::vector<std::size_t> sorted;
    for (const auto& row : value_rows_) {
      if (row) sorted.push_back(*row);
    }
    values_->table.Sort(sorted, name, descending);
    std::vector<std::size_t> place(values_->table.size(), sorted.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) place[sorted[i]] = i;
    const auto place_of = [&](std::size_t row) {
      return value_rows_[row] ? place[*value_rows_[row]] : sorted.size();
    };
    std::ranges::stable_sort(order, {}, place_of);
  }
  std::vector<std::size_t> places(rows_.size());
  for (std::size_t i = 0; i < order.size(); ++i) places[order[i]] = i;
  return places;
}

void RecipientModel::Tick(const std::vector<int>& rows, bool ticked) {
  if (rows.empty()) return;
  for (const int row : rows) ticked_[static_cast<std::size_t>(row)] = ticked;
  const auto [first, last] = std::ranges::minmax(rows);
  emit dataChanged(index(first, 0), index(last, 0), {Qt::CheckStateRole});
  emit TicksChanged();
}

void RecipientFilterModel::SetSearch(const QString& search) {
  search_ = search.toStdString();
  invalidateFilter();
}

void RecipientFilterModel::SetCondition(const std::optional<Condition>& condition) {
  left_.reset();
  undecided_ = 0;
  if (condition) {
    left_.emplace(static_cast<std::size_t>(recipients_.rowCount()), false);
    RecipientTable::Selection selection;
    std::vector<bool> holds, open;
    if (const RecipientValues* values = recipients_.Values()) {
      selection = values->table.Select({.closed = true}, &*condition);
      holds.assign(values->table.size(), false);
      open.assign(values->table.size(), false);
      for (const std::size_t row : selection.rows) holds[row] = true;
      for (const auto& [row, problem] : selection.undecided) open[row] = true;
    }
    for (int row = 0; row < recipients_.rowCount(); ++row) {
      const std::optional<std::size_t> in_values = recipients_.ValueRow(row);
      (*left_)[static_cast<std::size_t>(row)] = in_values && holds[*in_values];
      if (!in_values || open[*in_values]) ++undecided_;
    }
  }
  invalidateFilter();
}

void RecipientFilterModel::SetOrder(const std::optional<std::string>& name, bool descending) {
  places_.clear();
  if (name) places_ = recipients_.Places(*name, descending);
  invalidate();
}

void RecipientFilterModel::Tick(const QModelIndexList& lines, bool ticked) {
  std::vector<int> rows;
  for (const QModelIndex& line : lines) rows.push_back(mapToSource(line).row());
  recipients_.Tick(rows, ticked);
}

bool RecipientFilterModel::Leaves(int row) const {
  const auto at = static_cast<std::size_t>(row);
  return !left_ || (at < left_->size() && (*left_)[at]);
}

bool RecipientFilterModel::filterAcceptsRow(int row, const QModelIndex& /*parent*/) const {
  return Leaves(row) && MatchesSearch(recipients_.Row(row), search_);
}

bool RecipientFilterModel::lessThan(const QModelIndex& left, const QModelIndex& right) const {
  const auto first = static_cast<std::size_t>(left.row());
  const auto second = static_cast<std::size_t>(right.row());
  // Between new rows and their order the list's own counts.
  if (std::max(first, second) >= places_.size()) return first < second;
  return places_[first] < places_[second];
}

RecipientView::RecipientView(QWidget* parent) : QTreeView(parent) {
  setItemDelegate(new Delegate(this));
  setSelectionMode(ExtendedSelection);
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  setAlternatingRowColors(true);
  header()->setFocusPolicy(Qt::NoFocus);
  header()->setStretchLastSection(false);
  header()->setSectionsClickable(true);
  header()->setSectionsMovable(true);
  header()->setFirstSectionMovable(false);
  header()->setSortIndicatorShown(true);
  header()->setSortIndicatorClearable(true);
  header()->setSortIndicator(-1, Qt::AscendingOrder);
}

void RecipientView::keyboardSearch(const QString& search) {
  if (currentIndex().isValid() && currentIndex().column() != 0) {
    selectionModel()->setCurrentIndex(currentIndex().siblingAtColumn(0),
                                      QItemSelectionModel::NoUpdate);
  }
  QTreeView::keyboardSearch(search);
}

void RecipientView::mouseReleaseEvent(QMouseEvent* event) {
  QTreeView::mouseReleaseEvent(event);
  const QModelIndex line = indexAt(event->pos()).siblingAtColumn(0);
  if (event->button() != Qt::LeftButton || !line.isValid()) return;
  // A selection made by dragging, Shift or Ctrl is ticked with the space bar.
  if (selectionModel()->selectedRows().size() > 1 || event->modifiers() != Qt::NoModifier) return;
  Tick({line}, line.data(Qt::CheckStateRole).toInt() != Qt::Checked);
}

void RecipientView::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Space) return QTreeView::keyPressEvent(event);
  const QModelIndex line = currentIndex().siblingAtColumn(0);
  if (!line.isValid()) return;
  // A row reached with Tab is current but not selected.
  if (!selectionModel()->hasSelection()) setCurrentIndex(line);
  Tick(selectionModel()->selectedRows(), line.data(Qt::CheckStateRole).toInt() != Qt::Checked);
}

void RecipientView::Tick(const QModelIndexList& lines, bool ticked) {
  static_cast<RecipientFilterModel*>(model())->Tick(lines, ticked);
}

}  // namespace tenora
