// The recipients of a template with check boxes, filtered by a search.
#pragma once

#include <QAbstractListModel>
#include <QListView>
#include <QSortFilterProxyModel>
#include <string>
#include <vector>

#include "letters/recipients.h"

namespace tenora {

class RecipientModel : public QAbstractListModel {
  Q_OBJECT

 public:
  using QAbstractListModel::QAbstractListModel;

  // Recipients in both lists keep their ticks.
  void SetRows(std::vector<RecipientRow> rows);
  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  const RecipientRow& Row(int row) const { return rows_[static_cast<std::size_t>(row)]; }
  bool IsTicked(int row) const { return ticked_[static_cast<std::size_t>(row)]; }
  int TickedCount() const { return ticked_count_; }
  // In the order of the list.
  std::vector<RecipientRow> TickedRows() const;
  void Tick(const std::vector<int>& rows, bool ticked);

 signals:
  void TicksChanged();

 private:
  std::vector<RecipientRow> rows_;
  std::vector<bool> ticked_;
  int ticked_count_ = 0;
};

class RecipientFilterModel : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  // The recipients must outlive the filter.
  explicit RecipientFilterModel(RecipientModel& recipients)
      : QSortFilterProxyModel(&recipients), recipients_(recipients) {
    setSourceModel(&recipients);
  }
  void SetSearch(const QString& search);

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

 private:
  RecipientModel& recipients_;
  std::string search_;
};

// A click anywhere on a row, or the space bar for the selected rows, toggles the ticks.
class RecipientView : public QListView {
  Q_OBJECT

 public:
  explicit RecipientView(QWidget* parent = nullptr);

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void TickMarked(bool ticked);
};

}  // namespace tenora
