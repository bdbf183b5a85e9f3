#include "ui/window/main/settings_commands.h"

#include "letters/template_library.h"
#include "ui/dialogs/frm_printer.h"
#include "ui/dialogs/frm_settings.h"

namespace tenora {

void SettingsCommands::ShowSettings() {
  if (frmSettings(session_, window_).exec() != QDialog::Accepted) return;
  spelling_.Load();
  page_width_.setChecked(session_.settings.GetSettingText("Mail", "PrinterPageWidth", "0") != "0");
  letters_.ShowPages();
  rental_data_.Load();
  tree_.RefreshTree();
}

void SettingsCommands::ShowPrinterSetup() {
  if (frmPrinter(session_.settings, session_.platform.dialogs, window_).exec() !=
      QDialog::Accepted) {
    return;
  }
  letters_.ShowPages();
}

void SettingsCommands::ShowReceiptOptions(frmReceipt::DocumentKind kind) {
  const TemplateLibrary library(session_.database.DataFolder());
  frmReceipt(kind, session_.settings, session_.platform.dialogs, library.Names(kTemplates),
             kApplicationTitle, window_)
      .exec();
}

}  // namespace tenora
