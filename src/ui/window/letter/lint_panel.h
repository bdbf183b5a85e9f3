// The findings of the template check, below the letters; choosing one selects its code.
#pragma once

#include <QDockWidget>
#include <QListWidget>
#include <QPointer>
#include <vector>

#include "letters/template_lint.h"
#include "ui/window/letter/letter_window.h"

namespace tenora {

class LintPanel : public QDockWidget {
  Q_OBJECT

 public:
  explicit LintPanel(QWidget* parent = nullptr);

  // Checks the letter as a template of its kind and shows the findings. `today` is the base of
  // future dates.
  void Check(LetterWindow& letter, Date today, const CustomFieldCodes& custom_fields);

 private:
  void Show(LetterWindow& letter, const std::vector<TemplateFinding>& findings);
  void Select(int row);

  QListWidget* list_;
  QPointer<LetterWindow> letter_;
  std::vector<TemplateFinding> findings_;
};

}  // namespace tenora
