#include "ui/window/background/progress_dialog.h"

#include <QVBoxLayout>

namespace tenora {

ProgressDialog::ProgressDialog(const QString& title, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmProgress"));
  setWindowTitle(title);
  lblProgress_ = new QLabel(title + QStringLiteral("…"), this);
  lblProgress_->setObjectName(QStringLiteral("lblProgress"));
  lblProgress_->setTextFormat(Qt::PlainText);
  picProgress_ = new QProgressBar(this);
  picProgress_->setObjectName(QStringLiteral("picProgress"));
  picProgress_->setAccessibleName(tr("Progress"));
  picProgress_->setRange(0, 0);
  cancel_ = new QPushButton(tr("Cancel"), this);
  cancel_->setObjectName(QStringLiteral("cmdCancel"));
  connect(cancel_, &QPushButton::clicked, this, &ProgressDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 18, 20, 16);
  layout->setSpacing(12);
  layout->addWidget(lblProgress_);
  layout->addWidget(picProgress_);
  layout->addWidget(cancel_, 0, Qt::AlignRight);
  setFixedWidth(420);
}

void ProgressDialog::Show(int done, int total, const QString& text) {
  picProgress_->setRange(0, total);
  picProgress_->setValue(done);
  lblProgress_->setText(fontMetrics().elidedText(text, Qt::ElideMiddle, width() - 40));
}

void ProgressDialog::reject() {
  cancel_->setEnabled(false);
  cancel_->setText(tr("Stopping…"));
  emit CancelAsked();
}

}  // namespace tenora
