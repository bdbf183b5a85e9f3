// The pages of a print job as a PDF file.
#pragma once

#include <QFile>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/printing/pdf_pages.h"
#include "platform/printing/spool_file.h"

namespace tenora::printing {

class PdfJob {
 public:
  // Starts the first page. Raises the errors of FileError when the folder cannot be written.
  PdfJob(const std::filesystem::path& folder, const std::string& title, const Paper& paper,
         Sheet sheet);

  const std::string& title() const { return title_; }
  QPainter& painter() { return pages_->painter(); }
  void NewPage(Sheet sheet) { pages_->NewPage(sheet); }
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
