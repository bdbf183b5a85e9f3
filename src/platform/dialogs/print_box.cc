#include "platform/dialogs/print_box.h"

#include <QAccessible>
#include <QAccessibleEvent>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <initializer_list>
#include <utility>

#include "platform/dialogs/printer_settings_box.h"
#include "platform/dialogs/window_size.h"

namespace tenora {
namespace {

constexpr int kMostCopies = 999;
constexpr QSize kUsualSize(440, 390);

}  // namespace

PrintBox::PrintBox(const std::vector<OfferedPrinter>& printers, const PrintChoice& shown,
                   QWidget* parent)
    : QDialog(parent),
      printers_(printers),
      shown_(shown),
      settings_(shown.settings),
      list_(new QListWidget),
      properties_(new QPushButton(tr("P&roperties…"))),
      all_pages_(new QRadioButton(tr("&All"))),
      some_pages_(new QRadioButton(tr("Pa&ges"))),
      pages_(new QLineEdit),
      pages_fault_(new QLabel),
      copies_(new QSpinBox),
      collate_(new QCheckBox(tr("Whol&e copies"))),
      orientation_(new QComboBox),
      sides_(new QComboBox) {
  setWindowTitle(tr("Print"));
  list_->setObjectName("lstItems");
  list_->setAccessibleName(tr("Printer"));
  for (const OfferedPrinter& printer : printers_) {
    list_->addItem(QString::fromStdString(printer.name));
  }
  properties_->setObjectName("cmdProperties");
  properties_->setAutoDefault(false);
  all_pages_->setObjectName("optAllPages");
  some_pages_->setObjectName("optPages");
  pages_->setObjectName("txtPages");
  pages_->setPlaceholderText(tr("such as 2-3, 5"));
  pages_->setAccessibleName(tr("Pages, such as 2-3, 5"));
  const bool some_shown = shown.pages && !shown.pages->empty();
  all_pages_->setChecked(!some_shown);
  if (some_shown) {
    some_pages_->setChecked(true);
    pages_->setText(QString::fromStdString(PageRangesText(*shown.pages)));
  }
  pages_fault_->setObjectName("lblPagesFault");
  pages_fault_->setTextFormat(Qt::PlainText);
  pages_fault_->setWordWrap(true);
  copies_->setObjectName("txtCopies");
  copies_->setRange(1, kMostCopies);
  copies_->setValue(shown.copies);
  collate_->setObjectName("chkCollate");
  collate_->setToolTip(tr("All pages of one copy, then those of the next"));
  collate_->setChecked(shown.collate);
  orientation_->setObjectName("cboOrientation");
  orientation_->addItems({tr("Portrait"), tr("Landscape")});
  orientation_->setCurrentIndex(shown.landscape ? 1 : 0);
  sides_->setObjectName("cboDuplex");
  sides_->addItem(tr("As the printer is set"), static_cast<int>(Sides::kAsPrinterIsSet));
  sides_->addItem(tr("One side"), static_cast<int>(Sides::kOne));
  sides_->addItem(tr("Both sides, turned like a book"), static_cast<int>(Sides::kBothLongEdge));
  sides_->addItem(tr("Both sides, turned like a pad"), static_cast<int>(Sides::kBothShortEdge));
  sides_->setCurrentIndex(sides_->findData(static_cast<int>(shown.sides)));
  Build();
  list_->setCurrentRow(static_cast<int>(shown.printer));
  list_->setFocus();
  ShowWhatApplies();
}

void PrintBox::Build() {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  print_ = buttons->button(QDialogButtonBox::Ok);
  connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
    // Another printer has other settings.
    if (row != static_cast<int>(shown_.printer)) settings_.clear();
    ShowWhatApplies();
  });
  connect(list_, &QListWidget::itemActivated, this, [this] { print_->click(); });
  connect(properties_, &QPushButton::clicked, this, &PrintBox::ShowSettings);
  connect(some_pages_, &QRadioButton::toggled, this, [this](bool some) {
    // Once the button that was pressed has taken the keyboard itself.
    if (some)
      QMetaObject::invokeMethod(pages_, qOverload<>(&QWidget::setFocus), Qt::QueuedConnection);
    ShowWhatApplies();
  });
  connect(pages_, &QLineEdit::textEdited, this, [this] {
    some_pages_->setChecked(true);
    ShowWhatApplies();
  });
  connect(copies_, &QSpinBox::valueChanged, this, &PrintBox::ShowWhatApplies);
  connect(orientation_, &QComboBox::currentIndexChanged, this, &PrintBox::ShowWhatApplies);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* form = new QFormLayout;
  const auto add_row = [form](const QString& caption, std::initializer_list<QWidget*> widgets,
                              QWidget* buddy) {
    auto* row = new QHBoxLayout;
    for (QWidget* widget : widgets) row->addWidget(widget, widget == *(widgets.end() - 1) ? 1 : 0);
    auto* label = new QLabel(caption);
    label->setBuddy(buddy);
    form->addRow(label, row);
  };
  if (shown_.pages) {
    add_row(tr("Print"), {all_pages_, some_pages_, pages_}, all_pages_);
    form->addRow(QString(), pages_fault_);
  } else {
    for (QWidget* widget :
         std::initializer_list<QWidget*>{all_pages_, some_pages_, pages_, pages_fault_}) {
      widget->setParent(this);
      widget->hide();
    }
  }
  add_row(tr("&Copies"), {copies_, collate_}, copies_);
  form->addRow(tr("&Orientation"), orientation_);
  form->addRow(tr("&Sides"), sides_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_, 1);
  layout->addWidget(properties_, 0, Qt::AlignRight);
  layout->addLayout(form);
  layout->addWidget(buttons);
  // The list is what gets smaller on a low screen.
  resize(OpeningSize(*this, kUsualSize));
}

const OfferedPrinter* PrintBox::Chosen() const {
  const int row = list_->currentRow();
  return row < 0 ? nullptr : &printers_[static_cast<std::size_t>(row)];
}

std::optional<std::vector<PageRange>> PrintBox::Pages() const {
  if (!some_pages_->isChecked()) return std::vector<PageRange>();
  return ParsePageRanges(pages_->text().toStdString());
}

void PrintBox::ShowWhatApplies() {
  const OfferedPrinter* printer = Chosen();
  print_->setEnabled(printer != nullptr && PagesFault().isEmpty());
  ShowPagesFault();
  for (QWidget* box : std::initializer_list<QWidget*>{copies_, collate_, sides_}) {
    box->setEnabled(printer != nullptr && printer->on_paper);
  }
  if (copies_->value() == 1) collate_->setEnabled(false);
  properties_->setEnabled(printer != nullptr && printer->settings != nullptr);
}

QString PrintBox::PagesFault() const {
  if (!some_pages_->isChecked()) return {};
  const std::string typed = pages_->text().toStdString();
  if (std::string fault = PageRangesFault(typed); !fault.empty())
    return QString::fromStdString(fault);
  const int count = shown_.page_count;
  const auto is_behind = [count](const PageRange& range) { return range.first > count; };
  if (!PagesCounted() || !std::ranges::any_of(*Pages(), is_behind)) return {};
  return count == 1 ? tr("The letter has 1 page.") : tr("The letter has %1 pages.").arg(count);
}

bool PrintBox::PagesCounted() const {
  return shown_.page_count > 0 && list_->currentRow() == static_cast<int>(shown_.printer) &&
         (orientation_->currentIndex() == 1) == shown_.landscape && settings_ == shown_.settings;
}

void PrintBox::ShowPagesFault() {
  const QString fault = PagesFault();
  if (fault == pages_fault_->text()) return;
  pages_fault_->setText(fault);
  QAccessibleEvent told(pages_fault_, QAccessible::Alert);
  if (!fault.isEmpty()) QAccessible::updateAccessibility(&told);
}

void PrintBox::ShowSettings() {
  const OfferedPrinter* printer = Chosen();
  if (printer == nullptr || !printer->settings) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  std::vector<PrinterSetting> settings = printer->settings();
  QApplication::restoreOverrideCursor();
  PrinterSettingsBox box(QString::fromStdString(printer->name), std::move(settings), settings_,
                         this);
  if (box.exec() != QDialog::Accepted) return;
  settings_ = box.Chosen();
  ShowWhatApplies();
}

PrintChoice PrintBox::Choice() const {
  PrintChoice choice;
  choice.printer = static_cast<std::size_t>(std::max(0, list_->currentRow()));
  choice.landscape = orientation_->currentIndex() == 1;
  if (shown_.pages) choice.pages = Pages();
  if (!Chosen() || !Chosen()->on_paper) return choice;
  choice.copies = copies_->value();
  choice.collate = collate_->isChecked();
  choice.sides = static_cast<Sides>(sides_->currentData().toInt());
  choice.settings = settings_;
  return choice;
}

}  // namespace tenora
