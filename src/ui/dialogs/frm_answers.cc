#include "ui/dialogs/frm_answers.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/dialogs/window_size.h"
#include "ui/dialogs/scrolled_page.h"

namespace tenora {

frmAnswers::frmAnswers(const std::vector<std::string>& questions, const PromptAnswers& answers,
                       Purpose purpose, QWidget* parent)
    : QDialog(parent), purpose_(purpose) {
  const bool preview = purpose == Purpose::kPreview;
  setObjectName("frmAnswers");
  setWindowTitle(preview ? tr("Answers for the Preview") : tr("Answers for All Letters"));
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  column->setContentsMargins(0, 0, 6, 0);
  for (const std::string& question : questions) {
    // In the caption of a field, "&&" is the character itself.
    auto* label = new QLabel(QString::fromStdString(question).replace('&', QLatin1String("&&")));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    auto* field = new QLineEdit;
    field->setObjectName(QStringLiteral("txtAnswer%1").arg(fields_.size() + 1));
    field->setAccessibleName(QString::fromStdString(question));
    label->setBuddy(field);
    if (const auto given = answers.find(question); given != answers.end()) {
      field->setText(QString::fromStdString(given->second));
    }
    column->addWidget(label);
    column->addWidget(field);
    fields_.emplace_back(question, field);
  }
  column->addStretch();
  auto* hint = new QLabel(
      preview
          ? tr("The preview shows these answers in every letter. A question without an answer "
               "stays as its code. Generating asks again, for each letter.")
          : tr("The workers put these answers into every letter of the run, since they cannot ask. "
               "A field that is left empty puts nothing into its place."));
  hint->setWordWrap(true);
  auto* buttons = new QDialogButtonBox;
  auto* show =
      buttons->addButton(preview ? tr("&Show") : tr("C&ontinue"), QDialogButtonBox::AcceptRole);
  show->setObjectName("cmdShow");
  buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole)->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new ScrolledPage(page), 1);
  layout->addWidget(hint);
  layout->addWidget(buttons);
  // Not before the dialog has it: Return would go to the button that Tab passed last.
  show->setDefault(true);
  if (!fields_.empty()) fields_.front().second->setFocus();
  resize(OpeningSize(*this, {460, 260}));
}

PromptAnswers frmAnswers::Answers() const {
  PromptAnswers answers;
  for (const auto& [question, field] : fields_) {
    const bool given = !field->text().isEmpty() || purpose_ == Purpose::kQueue;
    if (given) answers[question] = field->text().toStdString();
  }
  return answers;
}

}  // namespace tenora
