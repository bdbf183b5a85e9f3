// The findings of the template check of the letter in front, below the letters; choosing one
// selects its code.
#pragma once

#include <QDockWidget>
#include <QListWidget>
#include <QPointer>
#include <map>
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
  // The letter in front, null if none is open: shows what its last check found, or says that there
  // was none.
  void SetLetter(LetterWindow* letter);

 private:
  struct Checked {
    std::vector<TemplateFinding> findings;
    bool has_codes = false;
  };

  void Show();
  void ShowName();
  void Select(int row);

  QListWidget* list_;
  QPointer<LetterWindow> letter_;
  std::map<const QObject*, Checked> checked_;  // those that are open
};

}  // namespace tenora
