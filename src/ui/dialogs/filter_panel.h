// Which recipients are listed: a named filter, rows of fact, comparison and value, or the condition
// typed.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QWidget>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "letters/named_filters.h"
#include "merge/condition.h"
#include "platform/dialogs/dialogs.h"
#include "platform/registry/registry.h"
#include "ui/dialogs/condition_line.h"
#include "ui/dialogs/filter_row_widget.h"

namespace tenora {

class FilterPanel : public QWidget {
  Q_OBJECT

 public:
  // Registry and dialogs outlive this. `usual`: the facts offered first.
  FilterPanel(registry::Registry& registry, Dialogs& dialogs, std::string template_kind,
              std::string template_name, std::vector<std::string> usual);

  // The facts there are; the condition is read again.
  void SetNames(std::shared_ptr<const FactNames> names);

  // None without a filter, and while what is typed is no condition.
  const std::optional<Condition>& condition() const { return condition_; }
  // What is wrong with what is typed; empty for nothing.
  const std::string& Problem() const { return problem_; }
  // The condition as it is typed.
  QString Text() const { return text_->text().trimmed(); }
  bool IsOpen() const { return toggle_->isChecked(); }
  // Shows the rows and the line to type in.
  void Open(bool open);
  // Remembers that the chosen filter was used with the template.
  void NoteUse();

 signals:
  void Changed();

 private:
  QWidget* MakeBar();
  QScrollArea* MakeBody();
  QStringList Facts() const;
  void ShowNamed(const std::string& current);
  void ChooseNamed(int index);
  void ShowRows(const FilterRows& rows);
  void AddRow(const FilterRow& row);
  FilterRows Rows() const;
  void RowsChanged();
  void TextChanged();
  void ReadCondition();
  // The field in which somebody types, and what is said of it, wherever the lines have moved it.
  void KeepInView();
  void SaveFilter();
  void RenameFilter();
  void DeleteFilter();
  // In the box, and which buttons go with it.
  void ShowWhichNamed();

  NamedFilters filters_;
  Dialogs& dialogs_;
  const std::string kind_, template_name_;
  const std::vector<std::string> usual_;
  std::shared_ptr<const FactNames> names_;
  std::optional<Condition> condition_;
  std::string problem_;
  std::vector<NamedFilter> named_;
  std::string chosen_;  // the name of the filter that the text began with
  QComboBox* named_box_;
  QPushButton* toggle_;
  QScrollArea* body_;
  QComboBox* joined_;
  QVBoxLayout* rows_layout_;
  std::vector<FilterRowWidget*> rows_;
  QLabel* only_text_;
  ConditionLine* text_;
  QLabel* problem_label_;
  QPushButton* save_;
  QPushButton* rename_;
  QPushButton* delete_;
};

}  // namespace tenora
