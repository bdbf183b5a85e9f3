// The settings dialog, one page for each subject.
#pragma once

#include <QDialog>
#include <vector>

#include "rental/session.h"

namespace tenora {

class SettingsPage;

class frmSettings : public QDialog {
  Q_OBJECT

 public:
  // The session's options must be loaded: the mail page shows them. Changes are saved on OK; the
  // caller then applies them to the windows.
  explicit frmSettings(Session& session, QWidget* parent = nullptr);

 private:
  void Save();

  std::vector<SettingsPage*> pages_;
};

}  // namespace tenora
