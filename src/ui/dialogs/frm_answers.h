// Asks the questions of a template, once for all the letters of a preview.
#pragma once

#include <QDialog>
#include <string>
#include <utility>
#include <vector>

#include "merge/prompts.h"

class QLineEdit;

namespace tenora {

class frmAnswers : public QDialog {
  Q_OBJECT

 public:
  // A field for each question, with its answer where `answers` has one.
  frmAnswers(const std::vector<std::string>& questions, const PromptAnswers& answers,
             QWidget* parent = nullptr);

  // What was typed; a question whose field is empty has no answer.
  PromptAnswers Answers() const;

 private:
  std::vector<std::pair<std::string, QLineEdit*>> fields_;
};

}  // namespace tenora
