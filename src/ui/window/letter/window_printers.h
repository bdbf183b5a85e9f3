// The printers, as the windows use them. They are loaded once at start-up, which may fail; letters
// can be written without printers.
#pragma once

#include <functional>
#include <memory>

#include "platform/printing/printing.h"
#include "platform/richtext/rich_text_box.h"
#include "rental/session.h"

namespace tenora {

class WindowPrinters {
 public:
  explicit WindowPrinters(Session& session) : session_(session) {}

  // Raises what `make` raises.
  void Load(const std::function<std::unique_ptr<printing::Printers>()>& make) {
    printers_ = make();
  }
  // False if no printer is installed or the printers could not be loaded.
  bool HasPrinter() const;
  // With the PDF printer's folder set to the current data folder. Raises 482 (Printer error) if the
  // printers could not be loaded.
  printing::Printers& Get();
  // Null if the printers could not be loaded.
  printing::Printers* IfRead() { return printers_.get(); }
  // Null if it is not known, in which case printing reports the error.
  const printing::Printer* Current() const;
  // The width of the current printer's paper in the letter's orientation, in twips; 0 if unknown,
  // in which case printing reports the error.
  int PaperWidth(const RichTextBox& letter) const;

 private:
  Session& session_;
  std::unique_ptr<printing::Printers> printers_;
};

}  // namespace tenora
