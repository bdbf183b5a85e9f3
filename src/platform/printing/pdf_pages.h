// Pages drawn into a PDF, one unit of the painter being a twip.
#pragma once

#include <QIODevice>
#include <QPainter>
#include <QPdfWriter>
#include <optional>
#include <string>

#include "platform/printing/sheet.h"

namespace tenora::printing {

class PdfPages {
 public:
  // Starts the first page; ok() is false when the device cannot be written. It must outlive this.
  PdfPages(QIODevice& device, const std::string& title, const Paper& paper, Sheet sheet);
  PdfPages(const PdfPages&) = delete;
  PdfPages& operator=(const PdfPages&) = delete;
  ~PdfPages();

  bool ok() const { return painter_.isActive(); }
  QPainter& painter() { return painter_; }
  void NewPage(Sheet sheet);
  // Writes what is left; false when it could not.
  bool End();

 private:
  void Lay(Sheet sheet);

  Paper paper_;
  Sheet sheet_ = Sheet::kAsHeld;
  std::optional<QPdfWriter> writer_;
  QPainter painter_;
};

}  // namespace tenora::printing
