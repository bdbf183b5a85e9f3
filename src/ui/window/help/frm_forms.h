// The notice of newly installed template forms.
#pragma once

#include <QDialog>
#include <QStringList>

#include "data/settings.h"

namespace tenora {

class frmForms : public QDialog {
  Q_OBJECT

 public:
  // `forms` are the names of the existing templates.
  frmForms(Settings& settings, const QStringList& forms, QWidget* parent = nullptr);

  // Whether to show the notice at start-up: true until the user ticks its check box.
  static bool WantedAtStartup(Settings& settings);

 signals:
  void OpenAsked(const QString& form);
};

}  // namespace tenora
