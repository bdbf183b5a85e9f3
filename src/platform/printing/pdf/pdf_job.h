// A print job as a PDF file.
#pragma once

#include <QFile>
#include <QIODevice>
#include <QPainter>
#include <QPdfWriter>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/printing/paper_size.h"
#include "platform/printing/pdf/spool_file.h"

namespace tenora::printing {

// Pages drawn into a PDF, one unit of the painter being a twip.
class PdfPages {
 public:
  // Starts the first page; ok() is false when the device cannot be written. It must outlive this.
  PdfPages(QIODevice& device, const std::string& title, const Paper& paper);
  PdfPages(const PdfPages&) = delete;
  PdfPages& operator=(const PdfPages&) = delete;
  ~PdfPages();

  bool ok() const { return painter_.isActive(); }
  QPainter& painter() { return painter_; }
  void NewPage(const Paper& paper);
  // Writes what is left; false when it could not.
  bool End();

 private:
  void SetPaper(const Paper& paper);

  Paper paper_;  // of the current page
  std::optional<QPdfWriter> writer_;
  QPainter painter_;
};

// The pages of one job, drawn into a spool file.
class PdfJob {
 public:
  // Starts the first page. Raises the errors of FileError when the folder cannot be written.
  PdfJob(const std::filesystem::path& folder, const std::string& title, const Paper& paper);

  const std::string& title() const { return title_; }
  QPainter& painter() { return pages_->painter(); }
  void NewPage(const Paper& paper) { pages_->NewPage(paper); }
  // Completes the file, which the caller then names or sends. Raises 61 (Disk full) or 57 (Device
  // I/O error) when not all of it could be written.
  SpoolFile& Finish();

 private:
  std::string title_;
  SpoolFile spool_;
  QFile file_;
  std::optional<PdfPages> pages_;
};

}  // namespace tenora::printing
