#include "ui/editor/commands/editor_dialogs.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace tenora {
namespace {

using Kind = richtext::TabStop::Kind;

constexpr int kTwipsPerPoint = 20;
constexpr int kWidestPage = 31680;  // twips
constexpr int kMostRows = 500, kMostColumns = 60;

QString Tr(const char* text) { return QCoreApplication::translate("EditorDialogs", text); }

QDialogButtonBox* AddButtons(QDialog* dialog) {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
  QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  dialog->layout()->addWidget(buttons);
  return buttons;
}

class TabStopsDialog : public QDialog {
 public:
  TabStopsDialog(QWidget* parent, std::vector<richtext::TabStop> tabs)
      : QDialog(parent), tabs_(std::move(tabs)) {
    setWindowTitle(Tr("Tab Stops"));
    list_ = new QListWidget(this);
    list_->setAccessibleName(Tr("Tab stops"));
    position_ = new QDoubleSpinBox(this);
    position_->setRange(0, kWidestPage / unit_.twips);
    position_->setDecimals(2);
    position_->setSuffix(unit_.suffix);
    kind_ = new QComboBox(this);
    kind_->addItem(Tr("Left"), int(Kind::kLeft));
    kind_->addItem(Tr("Centre"), int(Kind::kCentre));
    kind_->addItem(Tr("Right"), int(Kind::kRight));
    kind_->addItem(Tr("Decimal"), int(Kind::kDecimal));
    kind_->addItem(Tr("Bar"), int(Kind::kBar));
    leader_ = new QComboBox(this);
    leader_->addItem(Tr("None"), QString());
    leader_->addItem(Tr("Dots"), QStringLiteral("dot"));
    leader_->addItem(Tr("Dashes"), QStringLiteral("hyph"));
    leader_->addItem(Tr("Line"), QStringLiteral("ul"));
    auto* set = new QPushButton(Tr("&Set"), this);
    auto* remove = new QPushButton(Tr("&Remove"), this);
    auto* form = new QFormLayout;
    form->addRow(Tr("&Position:"), position_);
    form->addRow(Tr("&Alignment:"), kind_);
    form->addRow(Tr("&Leader:"), leader_);
    form->addRow(set);
    form->addRow(remove);
    auto* row = new QHBoxLayout;
    row->addWidget(list_);
    row->addLayout(form);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(row);
    AddButtons(this);
    connect(set, &QPushButton::clicked, this, &TabStopsDialog::Set);
    connect(remove, &QPushButton::clicked, this, &TabStopsDialog::Remove);
    connect(list_, &QListWidget::currentRowChanged, this, &TabStopsDialog::Choose);
    const auto typed = [this] { typed_ = true; };
    connect(position_, &QDoubleSpinBox::valueChanged, this, typed);
    connect(kind_, &QComboBox::activated, this, typed);
    connect(leader_, &QComboBox::activated, this, typed);
    List();
  }

  // OK also takes a stop that was typed but not yet set.
  void accept() override {
    if (typed_) Set();
    QDialog::accept();
  }

  const std::vector<richtext::TabStop>& tabs() const { return tabs_; }

 private:
  void List() {
    typed_ = false;
    const QSignalBlocker blocker(list_);
    list_->clear();
    for (const richtext::TabStop& tab : tabs_) {
      list_->addItem(QLocale().toString(tab.position / unit_.twips, 'f', 2) + unit_.suffix);
    }
  }

  void Set() {
    richtext::TabStop tab;
    tab.position = static_cast<int>(std::lround(position_->value() * unit_.twips));
    tab.kind = static_cast<Kind>(kind_->currentData().toInt());
    tab.leader = leader_->currentData().toString().toStdString();
    // Positions are shown rounded: two that look the same are one stop.
    const auto same = [&](const richtext::TabStop& other) {
      return std::abs(other.position - tab.position) < unit_.twips / 100;
    };
    std::erase_if(tabs_, same);
    const auto behind = std::find_if(tabs_.begin(), tabs_.end(), [&](const auto& other) {
      return other.position > tab.position;
    });
    tabs_.insert(behind, tab);
    List();
  }

  void Remove() {
    const int row = list_->currentRow();
    if (row < 0) return;
    tabs_.erase(tabs_.begin() + row);
    List();
  }

  void Choose(int row) {
    if (row < 0 || row >= static_cast<int>(tabs_.size())) return;
    const richtext::TabStop& tab = tabs_[static_cast<std::size_t>(row)];
    position_->setValue(tab.position / unit_.twips);
    kind_->setCurrentIndex(kind_->findData(int(tab.kind)));
    leader_->setCurrentIndex(std::max(0, leader_->findData(QString::fromStdString(tab.leader))));
    typed_ = false;
  }

  LengthUnit unit_ = LocaleUnit();
  std::vector<richtext::TabStop> tabs_;
  QListWidget* list_;
  QDoubleSpinBox* position_;
  QComboBox *kind_, *leader_;
  bool typed_ = false;
};

QDoubleSpinBox* PointsBox(QWidget* parent, int twips) {
  auto* box = new QDoubleSpinBox(parent);
  box->setRange(0, 1584);
  box->setDecimals(1);
  box->setSuffix(Tr(" pt"));
  box->setValue(double(twips) / kTwipsPerPoint);
  return box;
}

}  // namespace

LengthUnit LocaleUnit() {
  if (QLocale().measurementSystem() == QLocale::ImperialUSSystem) return {1440, Tr(" in")};
  return {567, Tr(" cm")};
}

std::optional<std::vector<richtext::TabStop>> AskTabStops(
    QWidget* parent, const std::vector<richtext::TabStop>& tabs) {
  TabStopsDialog dialog(parent, tabs);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.tabs();
}

bool AskSpacing(QWidget* parent, richtext::ParagraphFormat* format) {
  QDialog dialog(parent);
  dialog.setWindowTitle(Tr("Paragraph Spacing"));
  auto* layout = new QVBoxLayout(&dialog);
  auto* form = new QFormLayout;
  layout->addLayout(form);
  QDoubleSpinBox* before = PointsBox(&dialog, format->space_before);
  QDoubleSpinBox* after = PointsBox(&dialog, format->space_after);
  auto* lines = new QDoubleSpinBox(&dialog);
  lines->setRange(0.5, 10);
  lines->setSingleStep(0.1);
  const bool multiple = format->line_spacing_multiple && format->line_spacing > 0;
  lines->setValue(multiple ? format->line_spacing / 240.0 : 1);
  form->addRow(Tr("Space &before:"), before);
  form->addRow(Tr("Space &after:"), after);
  form->addRow(Tr("&Lines:"), lines);
  AddButtons(&dialog);
  const double lines_before = lines->value();
  if (dialog.exec() != QDialog::Accepted) return false;
  const auto twips = [](const QDoubleSpinBox* box) {
    return static_cast<int>(std::lround(box->value() * kTwipsPerPoint));
  };
  const auto change = [&](const QDoubleSpinBox* box, int* space, bool* automatic) {
    *automatic = *automatic && twips(box) == *space;
    *space = twips(box);
  };
  change(before, &format->space_before, &format->automatic_before);
  change(after, &format->space_after, &format->automatic_after);
  // An exact line height is kept until another spacing is chosen.
  if (lines->value() != lines_before) {
    format->line_spacing = static_cast<int>(std::lround(lines->value() * 240));
    format->line_spacing_multiple = true;
  }
  return true;
}

std::optional<TableSize> AskTableSize(QWidget* parent) {
  QDialog dialog(parent);
  dialog.setWindowTitle(Tr("Insert Table"));
  auto* layout = new QVBoxLayout(&dialog);
  auto* form = new QFormLayout;
  layout->addLayout(form);
  auto* rows = new QSpinBox(&dialog);
  rows->setRange(1, kMostRows);
  rows->setValue(3);
  auto* columns = new QSpinBox(&dialog);
  columns->setRange(1, kMostColumns);
  columns->setValue(3);
  form->addRow(Tr("&Rows:"), rows);
  form->addRow(Tr("&Columns:"), columns);
  AddButtons(&dialog);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return TableSize{rows->value(), columns->value()};
}

}  // namespace tenora
