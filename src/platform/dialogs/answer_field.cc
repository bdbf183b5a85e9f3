#include "platform/dialogs/answer_field.h"

#include <QLabel>

namespace tenora {

QLineEdit* AddAnswerField(const QString& question, const QString& default_answer,
                          QVBoxLayout* layout) {
  constexpr int kLongestAnswer = 64 * 1024;
  auto* const answer = new QLineEdit(default_answer);
  // In the caption of a field, "&&" is the character itself.
  auto* const label = new QLabel(QString(question).replace('&', QLatin1String("&&")));
  // The question comes from a template: show it as plain text, not as markup.
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setBuddy(answer);
  answer->setObjectName("txtAnswer");
  answer->setAccessibleName(question);
  answer->setMaxLength(kLongestAnswer);
  answer->selectAll();
  layout->addWidget(label);
  layout->addWidget(answer);
  return answer;
}

}  // namespace tenora
