// A question in a dialog, and the field for its answer.
#pragma once

#include <QLineEdit>
#include <QString>
#include <QVBoxLayout>

namespace tenora {

// Adds both to the dialog's layout; the field, "txtAnswer", holds the default answer.
QLineEdit* AddAnswerField(const QString& question, const QString& default_answer,
                          QVBoxLayout* layout);

}  // namespace tenora
