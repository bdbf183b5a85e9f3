#include "platform/dialogs/letter_question_box.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/dialogs/answer_field.h"

namespace tenora {

LetterQuestionBox::LetterQuestionBox(const LetterQuestion& question, QWidget* parent)
    : QDialog(parent),
      in_run_(!question.progress.empty()),
      for_all_(new QCheckBox(tr("Use this answer for &all letters"))) {
  constexpr int kLeastWidth = 460;
  setWindowTitle(QString::fromLatin1(kApplicationTitle));
  setMinimumWidth(kLeastWidth);
  const QString prompt = QString::fromStdString(question.prompt).remove(QLatin1Char('\r'));
  for_all_->setObjectName("chkForAll");
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });

  auto* layout = new QVBoxLayout(this);
  if (in_run_) {
    auto* progress = new QLabel(QString::fromStdString(question.progress));
    progress->setObjectName("lblProgress");
    progress->setAlignment(Qt::AlignRight);
    layout->addWidget(progress);
  }
  answer_ = AddAnswerField(prompt, {}, layout);
  layout->addWidget(for_all_);
  layout->addStretch();
  auto* row = new QHBoxLayout;
  if (in_run_) {
    // Not in the box of the others, whose buttons Tab would then not reach.
    auto* stop = new QPushButton(tr("&Stop the Run"));
    stop->setObjectName("cmdStopRun");
    stop->setAutoDefault(false);
    connect(stop, &QPushButton::clicked, this, [this] { StopRun(); });
    row->addWidget(stop);
  }
  row->addWidget(buttons);
  layout->addLayout(row);
  for_all_->setVisible(in_run_);
  answer_->setFocus();
}

LetterAnswer LetterQuestionBox::Given() const {
  if (stopped_) return {.way = LetterAnswer::Way::kStopRun};
  if (result() != Accepted) return {};
  return {.way = LetterAnswer::Way::kText,
          .text = answer_->text().toStdString(),
          .for_all = for_all_->isChecked()};
}

void LetterQuestionBox::reject() {
  if (!in_run_) return QDialog::reject();
  QMessageBox meant(QMessageBox::Question, windowTitle(),
                    tr("Leave this answer empty, or stop the run?\n\nLetters that are made already "
                       "stay, and the others can be made later."),
                    QMessageBox::NoButton, this);
  meant.setTextFormat(Qt::PlainText);
  const auto add = [&](const QString& text, const char* name, QMessageBox::ButtonRole role) {
    QPushButton* button = meant.addButton(text, role);
    button->setObjectName(name);
    return button;
  };
  const QPushButton* empty = add(tr("&Leave It Empty"), "cmdLeaveEmpty", QMessageBox::AcceptRole);
  const QPushButton* stop = add(tr("&Stop the Run"), "cmdStop", QMessageBox::DestructiveRole);
  QPushButton* back = add(tr("&Back"), "cmdBack", QMessageBox::RejectRole);
  meant.setDefaultButton(back);
  meant.setEscapeButton(back);
  meant.exec();
  if (meant.clickedButton() == stop) StopRun();
  if (meant.clickedButton() == empty) QDialog::reject();
}

void LetterQuestionBox::StopRun() {
  stopped_ = true;
  QDialog::reject();
}

}  // namespace tenora
