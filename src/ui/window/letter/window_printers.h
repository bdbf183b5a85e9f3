// The printers as the open windows use them. They are read once, at the start, and that may fail:
// letters can be written without them.
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
  // False also where the printers could not be read.
  bool HasPrinter() const;
  // With the PDF printer writing into today's data folder. Raises 482 (Printer error) where the
  // printers could not be read.
  printing::Printers& Get();
  // Null where the printers could not be read.
  printing::Printers* IfRead() { return printers_.get(); }
  // Of the current printer's paper as the letter lays it, in twips; 0 where it cannot be told,
  // which printing then says.
  int PaperWidth(const RichTextBox& letter) const;

 private:
  Session& session_;
  std::unique_ptr<printing::Printers> printers_;
};

}  // namespace tenora
