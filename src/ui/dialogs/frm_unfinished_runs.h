// The runs of letters that have not done all they were asked: the user resumes one, looks at its
// letters, or forgets it. They can also be left until later.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <QTreeWidget>
#include <vector>

#include "letters/unfinished_runs.h"
#include "platform/locale/locale.h"

namespace tenora {

class frmUnfinishedRuns : public QDialog {
  Q_OBJECT

 public:
  enum class Choice { kLater, kResume, kLook, kForget };

  // The locale and the runs, of which there is at least one, must outlive the dialog.
  frmUnfinishedRuns(const Locale& locale, const std::vector<UnfinishedRun>& runs,
                    QWidget* parent = nullptr);

  // Once the dialog is closed.
  Choice choice() const { return choice_; }
  const UnfinishedRun& chosen() const;

 private:
  void AddRun(const UnfinishedRun& run);
  void ShowChosen();
  void Choose(Choice choice);

  const Locale& locale_;
  const std::vector<UnfinishedRun>& runs_;
  Choice choice_ = Choice::kLater;
  QTreeWidget* list_;
  QPushButton* resume_ = nullptr;
};

}  // namespace tenora
