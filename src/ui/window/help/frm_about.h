// The about window.
#pragma once

#include <QDialog>
#include <filesystem>

namespace tenora {

class frmAbout : public QDialog {
  Q_OBJECT

 public:
  // The folder is where templates and letters lie, which whoever asks for help is asked for.
  explicit frmAbout(const std::filesystem::path& data_folder, QWidget* parent = nullptr);
};

}  // namespace tenora
