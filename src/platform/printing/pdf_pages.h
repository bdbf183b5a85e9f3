// Pages drawn into a PDF, one unit of the painter being a twip.
#pragma once

#include <QIODevice>
#include <QPainter>
#include <QPdfWriter>
#include <optional>
#include <string>

#include "platform/printing/cups_queue.h"

namespace tenora::printing {

class PdfPages {
 public:
  // Starts the first page; ok() is false when the device cannot be written. It must outlive this.
  PdfPages(QIODevice& device, const std::string& title, const Paper& paper);
  PdfPages(const PdfPages&) = delete;
  PdfPages& operator=(const PdfPages&) = delete;
  ~PdfPages();

  bool ok() const { return painter_.isActive(); }
  QPainter& painter() { return painter_; }
  void NewPage() { writer_->newPage(); }
  // Writes what is left; false when it could not.
  bool End();

 private:
  std::optional<QPdfWriter> writer_;
  QPainter painter_;
};

}  // namespace tenora::printing
