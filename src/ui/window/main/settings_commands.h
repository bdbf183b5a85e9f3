// The settings, printer set-up and receipt dialogs, and applying what was changed.
#pragma once

#include <QAction>
#include <QWidget>

#include "ui/dialogs/frm_receipt.h"
#include "ui/window/letter/letter_spelling.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/main/rental_data_load.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class SettingsCommands {
 public:
  // Everything passed in must outlive this object. `page_width` toggles wrapping at the page width;
  // `window` is the parent of the dialogs.
  SettingsCommands(Session& session, ctlTree& tree, OpenLetters& letters, LetterSpelling& spelling,
                   RentalDataLoad& rental_data, QAction& page_width, QWidget* window)
      : session_(session),
        tree_(tree),
        letters_(letters),
        spelling_(spelling),
        rental_data_(rental_data),
        page_width_(page_width),
        window_(window) {}

  // On OK, reloads everything that depends on the settings.
  void ShowSettings();
  void ShowPrinterSetup();
  void ShowReceiptOptions(frmReceipt::DocumentKind kind);

 private:
  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  LetterSpelling& spelling_;
  RentalDataLoad& rental_data_;
  QAction& page_width_;
  QWidget* window_;
};

}  // namespace tenora
