#include "platform/dialogs/input_box.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace tenora {
namespace {

constexpr int kLeastWidth = 420;
constexpr int kLongestAnswer = 64 * 1024;

}  // namespace

InputBox::InputBox(const QString& prompt, const QString& title, const QString& default_answer,
                   QWidget* parent)
    : QDialog(parent), answer_(new QLineEdit(default_answer)) {
  setWindowTitle(title);
  setMinimumWidth(kLeastWidth);
  auto* label = new QLabel(prompt);
  // A prompt comes from a template: what looks like markup in it is text.
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setBuddy(answer_);
  answer_->setObjectName("txtAnswer");
  answer_->setAccessibleName(prompt);
  answer_->setMaxLength(kLongestAnswer);
  answer_->selectAll();
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(answer_);
  layout->addStretch();
  layout->addWidget(buttons);
}

QString InputBox::Answer() const { return answer_->text(); }

}  // namespace tenora
