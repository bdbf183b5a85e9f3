// The about window.
#pragma once

#include <QDialog>
#include <filesystem>

namespace tenora {

class frmAbout : public QDialog {
  Q_OBJECT

 public:
  // Shows the folder that contains templates and letters, which support staff ask for.
  explicit frmAbout(const std::filesystem::path& data_folder, QWidget* parent = nullptr);
};

}  // namespace tenora
