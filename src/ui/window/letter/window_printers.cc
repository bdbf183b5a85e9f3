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

const printing::Printer* WindowPrinters::Current() const {
  if (printers_ == nullptr) return nullptr;
  try {
    return &printers_->Current();
  } catch (const RuntimeError&) {
    return nullptr;
  }
}

int WindowPrinters::PaperWidth(const RichTextBox& letter) const {
  const printing::Printer* const printer = Current();
  return printer == nullptr ? 0 : printing::PaperOf(*printer, letter.Document().page).width;
}

}  // namespace tenora
