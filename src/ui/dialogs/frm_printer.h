// The page margins.
#pragma once

#include <QDialog>
#include <array>

#include "data/settings.h"
#include "platform/dialogs/dialogs.h"
#include "ui/dialogs/margin_text.h"

class QLabel;
class QLineEdit;
class QRadioButton;

namespace tenora {

class frmPrinter : public QDialog {
  Q_OBJECT

 public:
  // Margins that cannot be read are reported and shown as 0.
  frmPrinter(Settings& settings, Dialogs& dialogs, QWidget* parent = nullptr);

 private:
  // Twips are kept unrounded until saved, so that viewing a margin in the other unit does not
  // change it.
  struct Margin {
    const char* key;
    double twips = 0;
    QLineEdit* box = nullptr;
    QLabel* unit = nullptr;
  };

  MarginUnit Unit() const;
  void Load(Dialogs& dialogs);
  void ShowMargins();
  void Save();

  Settings& settings_;
  QRadioButton* centimetres_;
  QRadioButton* inches_;
  std::array<Margin, 4> margins_{
      {{"TopMargin"}, {"BottomMargin"}, {"LeftMargin"}, {"RightMargin"}}};
};

}  // namespace tenora
