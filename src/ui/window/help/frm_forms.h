// The notice of newly installed template forms.
#pragma once

#include <QDialog>
#include <QStringList>

#include "data/settings.h"

namespace tenora {

class frmForms : public QDialog {
  Q_OBJECT

 public:
  // `forms` are the names of the templates there are.
  frmForms(Settings& settings, const QStringList& forms, QWidget* parent = nullptr);

  // Whether the notice is wanted at start-up: until its check box says otherwise.
  static bool WantedAtStartup(Settings& settings);

 signals:
  void OpenAsked(const QString& form);
};

}  // namespace tenora
