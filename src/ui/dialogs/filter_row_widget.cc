#include "ui/dialogs/filter_row_widget.h"

#include <QHBoxLayout>
#include <utility>

namespace tenora {
namespace {

QString Text(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

FilterRowWidget::FilterRowWidget(std::shared_ptr<const FactNames> names, const QStringList& facts,
                                 const FilterRow& row, int number)
    : names_(std::move(names)),
      fact_(new QComboBox),
      comparison_(new QComboBox),
      first_(new DayField(QString::fromStdString(row.first))),
      and_(new QLabel(tr("and"))),
      second_(new DayField(QString::fromStdString(row.second))),
      remove_(new QToolButton) {
  fact_->setObjectName("cboFact");
  comparison_->setObjectName("cboComparison");
  first_->setObjectName("txtFirst");
  second_->setObjectName("txtSecond");
  fact_->setAccessibleName(tr("Fact %1").arg(number));
  comparison_->setAccessibleName(tr("Comparison %1").arg(number));
  first_->setAccessibleName(tr("Value %1").arg(number));
  second_->setAccessibleName(tr("Second value %1").arg(number));
  remove_->setObjectName("cmdRemoveRow");
  remove_->setText(QStringLiteral("×"));
  remove_->setToolTip(tr("Remove this line"));
  remove_->setAccessibleName(tr("Remove line %1").arg(number));
  remove_->setFocusPolicy(Qt::StrongFocus);

  fact_->addItems(facts);
  fact_->setCurrentText(QString::fromStdString(row.fact));
  ShowComparisons(row.comparison);
  for (QComboBox* box : {fact_, comparison_}) {
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(10);
  }
  for (DayField* box : {first_, second_}) box->setMinimumWidth(50);

  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(fact_, 3);
  layout->addWidget(comparison_, 3);
  layout->addWidget(first_, 2);
  layout->addWidget(and_);
  layout->addWidget(second_, 2);
  layout->addWidget(remove_);

  connect(fact_, &QComboBox::currentIndexChanged, this, [this] {
    ShowComparisons(0);
    emit Changed();
  });
  connect(comparison_, &QComboBox::currentIndexChanged, this, [this] {
    ShowValues();
    emit Changed();
  });
  for (DayField* box : {first_, second_}) {
    connect(box, &DayField::textEdited, this, &FilterRowWidget::Changed);
    connect(box, &DayField::DayChosen, this, &FilterRowWidget::Changed);
  }
  connect(remove_, &QToolButton::clicked, this, &FilterRowWidget::RemoveAsked);
}

std::span<const FilterComparison> FilterRowWidget::Comparisons() const {
  const FactNames::Name* name = names_->Find(fact_->currentText().toStdString());
  return FilterComparisons(name == nullptr ? FactType::kText : name->type);
}

void FilterRowWidget::ShowComparisons(std::size_t current) {
  const QSignalBlocker quiet(comparison_);
  comparison_->clear();
  for (const FilterComparison& each : Comparisons()) comparison_->addItem(Text(each.caption));
  comparison_->setCurrentIndex(static_cast<int>(current));
  ShowValues();
}

void FilterRowWidget::ShowValues() {
  const auto comparisons = Comparisons();
  const auto current = static_cast<std::size_t>(comparison_->currentIndex());
  if (current >= comparisons.size()) return;
  const FilterComparison& comparison = comparisons[current];
  first_->setVisible(comparison.values > 0);
  and_->setVisible(comparison.values > 1);
  second_->setVisible(comparison.values > 1);
  first_->setPlaceholderText(Text(comparison.example));
  for (DayField* box : {first_, second_}) box->OfferCalendar(comparison.example == kDayExample);
}

void FilterRowWidget::SetNames(std::shared_ptr<const FactNames> names, const QStringList& facts) {
  names_ = std::move(names);
  const QString chosen = fact_->currentText();
  const QSignalBlocker quiet(fact_);
  fact_->clear();
  fact_->addItems(facts);
  fact_->setCurrentText(chosen);
}

QWidget* FilterRowWidget::TabBehind(QWidget* before) {
  for (QWidget* stop :
       std::initializer_list<QWidget*>{fact_, comparison_, first_, second_, remove_}) {
    setTabOrder(before, stop);
    before = stop;
  }
  return before;
}

FilterRow FilterRowWidget::Row() const {
  return {.fact = fact_->currentText().toStdString(),
          .comparison = static_cast<std::size_t>(std::max(0, comparison_->currentIndex())),
          .first = first_->text().toStdString(),
          .second = second_->text().toStdString()};
}

}  // namespace tenora
