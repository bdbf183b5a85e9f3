// The recipients of a template as a table with check boxes: the list's text, and columns of their
// facts; searched, filtered and sorted.
#pragma once

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "letters/recipients.h"
#include "merge/condition.h"
#include "platform/locale/locale.h"
#include "ui/dialogs/recipient_reader.h"

namespace tenora {

// The column that says which branch's recipients the rows of a server are.
inline constexpr const char* kBranchColumn = "Branch";

// Column 0 is the list's text, the others are facts, or the branch.
class RecipientModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  // The locale must outlive the model.
  explicit RecipientModel(const Locale& locale, QObject* parent = nullptr)
      : QAbstractTableModel(parent), locale_(locale) {}

  // Recipients in both lists keep their ticks.
  void SetRows(std::vector<RecipientRow> rows);
  // The facts that stand in the columns behind the first, by their names.
  void SetColumns(std::vector<std::string> names);
  void SetNames(std::shared_ptr<const FactNames> names);
  // What kBranchColumn says; empty: there is no such column.
  void SetBranch(const std::string& branch) { branch_ = QString::fromStdString(branch); }
  // Until a column's fact has been read it is empty.
  void SetValues(std::shared_ptr<const RecipientValues> values);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  const std::vector<std::string>& Columns() const { return columns_; }
  const RecipientValues* Values() const { return values_.get(); }
  // The row in the values; none for a recipient that they do not have.
  std::optional<std::size_t> ValueRow(int row) const;
  // Each row's place when sorted by the fact, or by the list's text for an empty name.
  std::vector<std::size_t> Places(const std::string& name, bool descending) const;

  const RecipientRow& Row(int row) const { return rows_[static_cast<std::size_t>(row)]; }
  bool IsTicked(int row) const { return ticked_[static_cast<std::size_t>(row)]; }
  void Tick(const std::vector<int>& rows, bool ticked);

 signals:
  void TicksChanged();

 private:
  void MatchRows();
  QVariant ValueAt(std::size_t row, const std::string& name, int role) const;
  Qt::Alignment AlignmentOf(int column) const;

  const Locale& locale_;
  std::vector<RecipientRow> rows_;
  std::vector<bool> ticked_;
  std::vector<std::string> columns_;
  QString branch_;
  std::shared_ptr<const FactNames> names_;
  std::shared_ptr<const RecipientValues> values_;
  std::vector<std::optional<std::size_t>> value_rows_;
};

class RecipientFilterModel : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  // The recipients must outlive the filter.
  explicit RecipientFilterModel(RecipientModel& recipients)
      : QSortFilterProxyModel(&recipients), recipients_(recipients) {
    setSourceModel(&recipients);
    sort(0);
  }
  void SetSearch(const QString& search);
  // Without a condition everybody is left. To be called again when rows, values or the day change;
  // the condition's facts have been read.
  void SetCondition(const std::optional<Condition>& condition);
  // By the fact, or by the list's text for an empty name; none: the list's order.
  void SetOrder(const std::optional<std::string>& name, bool descending);

  void Tick(const QModelIndexList& lines, bool ticked);
  // Whether the condition leaves the row, the search aside.
  bool Leaves(int row) const;
  // Those of whom it cannot be said whether the condition holds: left out.
  std::size_t Undecided() const { return undecided_; }

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
  bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

 private:
  RecipientModel& recipients_;
  std::string search_;
  std::optional<std::vector<bool>> left_;  // by row; none: all
  std::size_t undecided_ = 0;
  std::vector<std::size_t> places_;  // by row; empty: the list's order
};

// Shows a RecipientFilterModel. A click anywhere on a row, or the space bar for the selected rows,
// toggles the ticks.
class RecipientView : public QTreeView {
  Q_OBJECT

 public:
  explicit RecipientView(QWidget* parent = nullptr);
  // By the list's text, whichever column is current.
  void keyboardSearch(const QString& search) override;

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Tick(const QModelIndexList& lines, bool ticked);
};

}  // namespace tenora
