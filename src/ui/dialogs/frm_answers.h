// Asks the questions of a template, once for all letters: of a preview, or of a run that others
// make.
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
  enum class Purpose { kPreview, kQueue };

  // A field for each question, with its answer where `answers` has one.
  frmAnswers(const std::vector<std::string>& questions, const PromptAnswers& answers,
             Purpose purpose, QWidget* parent = nullptr);

  // What was typed. A question whose field is empty has no answer for a preview, and an empty one
  // for the queue.
  PromptAnswers Answers() const;

 private:
  const Purpose purpose_;
  std::vector<std::pair<std::string, QLineEdit*>> fields_;
};

}  // namespace tenora
