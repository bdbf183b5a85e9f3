#include "ui/window/letter/window_printers.h"

#include "output/letter_printing.h"
#include "platform/runtime/error.h"

namespace tenora {

bool WindowPrinters::HasPrinter() const {
  return printers_ != nullptr && PrinterMod(*printers_, session_.settings).PrinterCount() != 0;
}

printing::Printers& WindowPrinters::Get() {
  if (printers_ == nullptr) {
    throw StandardError(error_number::kPrinterError, "the printers could not be read");
  }
  printers_->SetDataFolder(session_.database.DataFolder());
  return *printers_;
}

int WindowPrinters::PaperWidth(const RichTextBox& letter) const {
  if (printers_ == nullptr) return 0;
  try {
    return printing::PaperOf(printers_->Current(), letter.Document().page).width;
  } catch (const RuntimeError&) {
    return 0;
  }
}

}  // namespace tenora
