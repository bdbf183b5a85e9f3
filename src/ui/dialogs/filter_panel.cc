#include "ui/dialogs/filter_panel.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "platform/runtime/error.h"
#include "platform/runtime/search_text.h"
#include "ui/dialogs/scrolled_page.h"

namespace tenora {
namespace {

constexpr int kLeastHeight = 70;        // pixels: of the open panel on a small screen
constexpr int kMostHeight = 230;        // the rest scrolls
constexpr int kNameWidth = 420;         // of the box with the filters' names
constexpr std::size_t kMostHint = 160;  // characters of what could stand there instead

// As high as what it holds, where there is room.
class Body : public ScrolledPage {
 public:
  using ScrolledPage::ScrolledPage;
  QSize sizeHint() const override {
    return {ScrolledPage::sizeHint().width(), widget()->sizeHint().height()};
  }
};

template <typename Widget>
Widget* Named(Widget* widget, const char* name) {
  widget->setObjectName(name);
  return widget;
}

}  // namespace

FilterPanel::FilterPanel(registry::Registry& registry, Dialogs& dialogs, std::string template_kind,
                         std::string template_name, std::vector<std::string> usual)
    : filters_(registry),
      dialogs_(dialogs),
      kind_(std::move(template_kind)),
      template_name_(std::move(template_name)),
      usual_(std::move(usual)),
      names_(std::make_shared<FactNames>()),
      named_box_(Named(new QComboBox, "cboFilter")),
      toggle_(Named(new QPushButton(tr("Fi&lter…")), "cmdFilter")),
      joined_(Named(new QComboBox, "cboJoined")),
      only_text_(new QLabel(tr("This condition can only be changed as text."))),
      text_(Named(new ConditionLine, "txtWhere")),
      problem_label_(Named(new QLabel, "lblWhere")),
      save_(Named(new QPushButton(tr("Save As…")), "cmdSaveFilter")),
      rename_(Named(new QPushButton(tr("Rename…")), "cmdRenameFilter")),
      delete_(Named(new QPushButton(tr("Delete")), "cmdDeleteFilter")) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(MakeBar());
  body_ = MakeBody();
  layout->addWidget(body_);
  body_->hide();
  ShowNamed({});
  connect(named_box_, &QComboBox::activated, this, &FilterPanel::ChooseNamed);
  connect(toggle_, &QPushButton::toggled, this, &FilterPanel::Open);
  connect(joined_, &QComboBox::activated, this, &FilterPanel::RowsChanged);
  connect(text_, &ConditionLine::textEdited, this, &FilterPanel::TextChanged);
  connect(save_, &QPushButton::clicked, this, &FilterPanel::SaveFilter);
  connect(rename_, &QPushButton::clicked, this, &FilterPanel::RenameFilter);
  connect(delete_, &QPushButton::clicked, this, &FilterPanel::DeleteFilter);
}

QWidget* FilterPanel::MakeBar() {
  auto* bar = new QWidget;
  auto* row = new QHBoxLayout(bar);
  row->setContentsMargins(0, 0, 0, 0);
  auto* label = new QLabel(tr("&Write to"));
  label->setBuddy(named_box_);
  named_box_->setPlaceholderText(tr("as below"));
  named_box_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  named_box_->setMinimumContentsLength(8);
  named_box_->setMaximumWidth(kNameWidth);
  toggle_->setCheckable(true);
  toggle_->setAutoDefault(false);
  row->addWidget(label);
  row->addWidget(named_box_, 1000);
  row->addWidget(toggle_);
  row->addStretch(1);
  return bar;
}

QScrollArea* FilterPanel::MakeBody() {
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  column->setContentsMargins(0, 0, 0, 0);
  joined_->addItems({tr("All of these"), tr("Any of these")});
  joined_->setAccessibleName(tr("How the lines are joined"));
  auto* add = Named(new QPushButton(tr("Add a Line")), "cmdAddRow");
  connect(add, &QPushButton::clicked, this, [this] {
    AddRow({.fact = usual_.empty() ? std::string() : usual_.front()});
    RowsChanged();
  });
  auto* top = new QHBoxLayout;
  top->addWidget(joined_);
  top->addWidget(add);
  top->addStretch();
  for (QPushButton* button : {add, save_, rename_, delete_}) button->setAutoDefault(false);
  for (QPushButton* button : {save_, rename_, delete_}) top->addWidget(button);
  column->addLayout(top);
  rows_layout_ = new QVBoxLayout;
  column->addLayout(rows_layout_);
  column->addWidget(only_text_);
  only_text_->hide();
  text_->setAccessibleName(tr("Condition"));
  text_->setPlaceholderText(tr("or type: Balance Owing > 50 and Days Behind >= 14"));
  text_->setClearButtonEnabled(true);
  problem_label_->setWordWrap(true);
  problem_label_->setTextFormat(Qt::PlainText);
  problem_label_->hide();
  column->addWidget(text_);
  column->addWidget(problem_label_);
  column->addStretch();
  QWidget* before = joined_;
  for (QWidget* stop : std::initializer_list<QWidget*>{add, save_, rename_, delete_, text_}) {
    setTabOrder(before, stop);
    before = stop;
  }
  auto* scrolled = new Body(page);
  scrolled->setMinimumSize(0, kLeastHeight);
  scrolled->setMaximumHeight(kMostHeight);
  scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  return scrolled;
}

QStringList FilterPanel::Facts() const {
  QStringList facts;
  for (const std::string& name : usual_) facts << QString::fromStdString(name);
  QStringList others;
  for (const FactNames::Name& name : names_->Names()) {
    const QString text = QString::fromStdString(name.name);
    if (!facts.contains(text)) others << text;
  }
  return facts + others;
}

void FilterPanel::SetNames(std::shared_ptr<const FactNames> names) {
  names_ = std::move(names);
  text_->SetNames(Facts());
  // Lines that are being filled in keep what they have, and the keyboard.
  for (FilterRowWidget* row : rows_) row->SetNames(names_, Facts());
  const auto read = ReadFilterRows(text_->text().toStdString(), *names_);
  if (rows_.empty() && read) ShowRows(*read);
  ReadCondition();
}

void FilterPanel::Open(bool open) {
  toggle_->setChecked(open);
  body_->setVisible(open);
  // What is wrong is told there or elsewhere.
  if (!problem_.empty()) emit Changed();
  if (!open) return;
  if (rows_.empty() && text_->text().isEmpty()) {
    AddRow({.fact = usual_.empty() ? std::string() : usual_.front()});
  }
  if (!rows_.empty()) {
    rows_.front()->setFocus();
    rows_.front()->findChild<QComboBox*>()->setFocus();
    // To where that is, on a screen that shows a part of the panel only.
    body_->horizontalScrollBar()->setValue(0);
    body_->verticalScrollBar()->setValue(0);
  }
}

void FilterPanel::ShowNamed(const std::string& current) {
  named_ = filters_.ListFor(kind_, template_name_);
  named_box_->clear();
  named_box_->addItem(tr("everyone"));
  chosen_.clear();
  bool used = true;
  for (const NamedFilter& filter : named_) {
    // Those that were used with this template stand apart.
    if (used && filter.template_name != template_name_) {
      used = false;
      if (named_box_->count() > 1) named_box_->insertSeparator(named_box_->count());
    }
    named_box_->addItem(QString::fromStdString(filter.name), QString::fromStdString(filter.name));
    if (FoldedForSearch(filter.name) == FoldedForSearch(current)) chosen_ = filter.name;
  }
  ShowWhichNamed();
}

void FilterPanel::ChooseNamed(int index) {
  chosen_ = named_box_->itemData(index).toString().toStdString();
  const auto found = std::ranges::find(named_, chosen_, &NamedFilter::name);
  const std::string text = found == named_.end() ? std::string() : found->condition;
  text_->setText(QString::fromStdString(text));
  text_->setCursorPosition(0);
  const auto rows = ReadFilterRows(text, *names_);
  ShowRows(rows ? *rows : FilterRows());
  ReadCondition();
  ShowWhichNamed();
}

void FilterPanel::ShowRows(const FilterRows& rows) {
  for (const FilterRowWidget* row : rows_) delete row;
  rows_.clear();
  joined_->setCurrentIndex(rows.any ? 1 : 0);
  for (const FilterRow& row : rows.rows) AddRow(row);
}

void FilterPanel::AddRow(const FilterRow& row) {
  auto* widget = new FilterRowWidget(names_, Facts(), row, static_cast<int>(rows_.size()) + 1);
  rows_.push_back(widget);
  rows_layout_->addWidget(widget);
  // At once, so that the panel's height counts it.
  widget->show();
  body_->updateGeometry();
  // A widget that comes later would be the window's last stop.
  QWidget* before = delete_;
  for (FilterRowWidget* one : rows_) before = one->TabBehind(before);
  setTabOrder(before, text_);
  connect(widget, &FilterRowWidget::Changed, this, &FilterPanel::RowsChanged);
  connect(widget, &FilterRowWidget::RemoveAsked, this, [this, widget] {
    std::erase(rows_, widget);
    widget->hide();
    widget->deleteLater();
    RowsChanged();
  });
}

FilterRows FilterPanel::Rows() const {
  FilterRows rows{.any = joined_->currentIndex() == 1};
  for (const FilterRowWidget* row : rows_) rows.rows.push_back(row->Row());
  return rows;
}

void FilterPanel::RowsChanged() {
  const QString text = QString::fromStdString(FilterText(Rows(), *names_));
  if (text == text_->text()) return;
  text_->setText(text);
  ReadCondition();
  ShowWhichNamed();
}

void FilterPanel::TextChanged() {
  const std::string text = text_->text().toStdString();
  const auto rows = ReadFilterRows(text, *names_);
  ShowRows(rows ? *rows : FilterRows());
  ReadCondition();
  ShowWhichNamed();
}

void FilterPanel::ReadCondition() {
  condition_.reset();
  problem_.clear();
  QString hint;
  const std::string text = text_->text().trimmed().toStdString();
  if (!text.empty()) {
    try {
      condition_.emplace(text, *names_);
    } catch (const ConditionError& error) {
      problem_ = error.what();
      hint = QString::fromStdString(error.possible());
    }
  }
  QString shown = QString::fromStdString(problem_);
  problem_label_->setToolTip(hint);
  if (hint.size() > static_cast<qsizetype>(kMostHint)) hint = hint.left(kMostHint) + "…";
  if (!hint.isEmpty()) shown += ": " + hint;
  problem_label_->setText(shown);
  problem_label_->setVisible(!shown.isEmpty());
  only_text_->setVisible(condition_ && rows_.empty());
  joined_->setEnabled(rows_.size() > 1);
  body_->updateGeometry();
  // When the lines have their places.
  QMetaObject::invokeMethod(this, &FilterPanel::KeepInView, Qt::QueuedConnection);
  emit Changed();
}

void FilterPanel::KeepInView() {
  QWidget* const focused = QApplication::focusWidget();
  if (focused == nullptr || !body_->widget()->isAncestorOf(focused)) return;
  if (focused == text_ && problem_label_->isVisible()) body_->ensureWidgetVisible(problem_label_);
  body_->ensureWidgetVisible(focused, 0, 0);
}

void FilterPanel::ShowWhichNamed() {
  const auto found = std::ranges::find(named_, chosen_, &NamedFilter::name);
  const std::string text = text_->text().toStdString();
  // A filter that is changed has no name until it is saved.
  int index = text.empty() ? 0 : -1;
  if (found != named_.end() && found->condition == text) {
    index = named_box_->findData(QString::fromStdString(chosen_));
  }
  named_box_->setCurrentIndex(index);
  const bool named = index > 0;
  save_->setEnabled(condition_.has_value());
  rename_->setEnabled(named);
  delete_->setEnabled(named);
}

void FilterPanel::SaveFilter() {
  const std::string current = chosen_;
  const auto name = dialogs_.AskText("Name of the filter", "Save Filter", current);
  if (!name || name->empty()) return;
  const auto other = filters_.Find(kind_, *name);
  if (other && FoldedForSearch(*name) != FoldedForSearch(current) &&
      dialogs_.Show({.text = "There is a filter \"" + other->name + "\" already. Replace it?",
                     .buttons = Buttons::kYesNo,
                     .icon = Icon::kQuestion}) != Answer::kYes) {
    return;
  }
  try {
    filters_.Save({.name = *name,
                   .template_kind = kind_,
                   .condition = text_->text().trimmed().toStdString(),
                   .template_name = template_name_});
    ShowNamed(*name);
  } catch (const RuntimeError& error) {
    dialogs_.Say(ErrorText(error));
  }
}

void FilterPanel::RenameFilter() {
  const std::string current = named_box_->currentData().toString().toStdString();
  const auto name = dialogs_.AskText("New name of the filter", "Rename Filter", current);
  if (!name || name->empty() || *name == current) return;
  try {
    if (!filters_.Rename(kind_, current, *name)) {
      return dialogs_.Say("There is a filter \"" + *name + "\" already.");
    }
    ShowNamed(*name);
  } catch (const RuntimeError& error) {
    dialogs_.Say(ErrorText(error));
  }
}

void FilterPanel::DeleteFilter() {
  const std::string current = named_box_->currentData().toString().toStdString();
  if (dialogs_.Show({.text = "Delete the filter \"" + current + "\"?",
                     .buttons = Buttons::kYesNo,
                     .icon = Icon::kQuestion}) != Answer::kYes) {
    return;
  }
  try {
    filters_.Delete(kind_, current);
    ShowNamed({});
  } catch (const RuntimeError& error) {
    dialogs_.Say(ErrorText(error));
  }
}

void FilterPanel::NoteUse() {
  const std::string current = named_box_->currentData().toString().toStdString();
  if (!current.empty() && condition_) filters_.NoteUse(kind_, current, template_name_);
}

}  // namespace tenora
