// All settings that a user may want to change, a page each.
#pragma once

#include <QDialog>
#include <vector>

#include "rental/session.h"

namespace tenora {

class SettingsPage;

class frmSettings : public QDialog {
  Q_OBJECT

 public:
  // The session's options are loaded: the mail page shows them. What was changed is saved on OK;
  // whoever opened the dialog then applies it to the windows.
  explicit frmSettings(Session& session, QWidget* parent = nullptr);

 private:
  void Save();

  std::vector<SettingsPage*> pages_;
};

}  // namespace tenora
