// One row of a filter: fact, comparison and value.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QToolButton>
#include <QWidget>
#include <memory>

#include "merge/fact.h"
#include "ui/dialogs/day_field.h"
#include "ui/dialogs/filter_rows.h"

namespace tenora {

class FilterRowWidget : public QWidget {
  Q_OBJECT

 public:
  // The facts in the order in which they are offered; `number`: of the row, from 1, for those who
  // hear it read out.
  FilterRowWidget(std::shared_ptr<const FactNames> names, const QStringList& facts,
                  const FilterRow& row, int number);

  FilterRow Row() const;
  // Other facts are on offer now; the chosen one stays.
  void SetNames(std::shared_ptr<const FactNames> names, const QStringList& facts);
  // Tab goes from `before` through the row; its last stop is returned.
  QWidget* TabBehind(QWidget* before);

 signals:
  void Changed();
  void RemoveAsked();

 private:
  std::span<const FilterComparison> Comparisons() const;
  void ShowComparisons(std::size_t current);
  void ShowValues();

  std::shared_ptr<const FactNames> names_;
  QComboBox* fact_;
  QComboBox* comparison_;
  DayField* first_;
  QLabel* and_;
  DayField* second_;
  QToolButton* remove_;
};

}  // namespace tenora
