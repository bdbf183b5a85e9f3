#include "platform/dialogs/list_box.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tenora {
namespace {

constexpr QSize kUsualSize(420, 300);

}  // namespace

ListBox::ListBox(const QString& title, const QStringList& items, int default_item, QWidget* parent)
    : QDialog(parent), list_(new QListWidget) {
  setWindowTitle(title);
  list_->setObjectName("lstItems");
  list_->setAccessibleName(title);
  // What is asked: a window manager cuts a long title, or shows none.
  auto* question = new QLabel(title);
  question->setTextFormat(Qt::PlainText);
  question->setWordWrap(true);
  list_->addItems(items);
  list_->setCurrentRow(default_item);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  auto* ok = buttons->button(QDialogButtonBox::Ok);
  ok->setEnabled(ChosenRow() >= 0);
  connect(list_, &QListWidget::currentRowChanged, ok, [ok](int row) { ok->setEnabled(row >= 0); });
  connect(list_, &QListWidget::itemActivated, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(question);
  layout->addWidget(list_);
  layout->addWidget(buttons);
  resize(kUsualSize);
}

int ListBox::ChosenRow() const { return list_->currentRow(); }

}  // namespace tenora
