// A print job that goes to the screen: pages are divided exactly as on the printer it is made like,
// and drawn as pictures of any size.
#pragma once

#include <QImage>
#include <QSizeF>
#include <memory>

#include "platform/printing/printing.h"

namespace tenora::printing {

class PreviewPages : public Printers {
 public:
  // Takes over the paper of the printer.
  explicit PreviewPages(const Printer& like);
  ~PreviewPages() override;

  int PageCount() const;
  QSizeF PageSize() const;  // twips; of the first page
  // The document that was printed must still live.
  QImage Page(int number, double pixels_per_twip, double device_ratio = 1);

  int Count() const override { return 1; }
  std::vector<std::string> Names() const override;
  void SetDataFolder(const std::filesystem::path&) override {}
  bool SetCurrent(std::string_view) override { return false; }
  Printer& Current() override;
  void UseDefault() override {}
  bool Choose(Dialogs&) override { return false; }

 private:
  class Device;
  std::unique_ptr<Device> device_;
};

}  // namespace tenora::printing
