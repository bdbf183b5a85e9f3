// Print preview: a print job for the screen. Pages break exactly as on the given printer and are
// rendered at any size.
#pragma once

#include <QImage>
#include <QSizeF>
#include <memory>
#include <vector>

#include "platform/printing/printing.h"

namespace tenora::printing {

class PreviewPages : public Printers {
 public:
  // Uses this printer's paper.
  explicit PreviewPages(const Printer& like);
  ~PreviewPages() override;

  int PageCount() const;
  // Where the pages after the first begin, as positions in the document.
  std::vector<int> PageStarts() const;
  QSizeF PageSize() const;  // twips; of the first page
  // The printed document must outlive the call.
  QImage Page(int number, double pixels_per_twip, double device_ratio = 1);

  int Count() const override { return 1; }
  std::vector<std::string> Names() const override;
  void SetDataFolder(const std::filesystem::path&) override {}
  bool SetCurrent(std::string_view) override { return false; }
  Printer& Current() override;
  void UseDefault() override {}
  bool Choose(Dialogs&, Offer, int) override { return false; }

 private:
  class Device;
  std::unique_ptr<Device> device_;
};

}  // namespace tenora::printing
