#include <QBuffer>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/printing/layout/drawing_printer.h"
#include "platform/printing/pdf/pdf_job.h"
#include "platform/printing/pdf/pdf_splitter.h"
#include "platform/runtime/error.h"

namespace tenora::printing {
namespace {

class BatchPrinter : public PdfBatch, public DrawingPrinter {
 public:
  BatchPrinter() : DrawingPrinter(kPdfPrinterName, RegionalPaper()) {}

  bool TakesAnyPaper() const override { return true; }

  void StartDocument(const std::string& title, const richtext::PageSetup& page) override {
    ResetLayout();
    first_ = PaperFor(page, paper(), TakesAnyPaper());
    if (open_) {
      NewPage();
      return;
    }
    if (pages_) {
      pages_->NewPage(first_);
    } else {
      target_.open(QIODevice::WriteOnly);
      pages_.emplace(target_, "", first_);
    }
    open_ = Part{title, page_count_, 1};
    ++page_count_;
  }

  void NewPage() override {
    Page();
    pages_->NewPage(NextPaper(first_));
    ++open_->pages;
    ++page_count_;
  }

  std::filesystem::path EndJob() override {
    ResetLayout();
    if (open_) parts_.push_back(*std::exchange(open_, std::nullopt));
    return {};
  }

  // Its pages stay in the batch but are in no file.
  void CancelJob() override {
    ResetLayout();
    open_.reset();
  }

  bool JobOpen() const override { return open_.has_value(); }

  std::vector<std::string> TakeFiles() override {
    CancelJob();
    const std::vector<Part> parts = std::exchange(parts_, {});
    if (!pages_) return {};
    const bool whole = pages_->End();
    pages_.reset();
    page_count_ = 0;
    target_.close();
    const PdfSplitter pdf(std::exchange(bytes_, {}).toStdString());
    if (!whole) throw StandardError(error_number::kPrinterError, "the pages cannot be completed");
    std::vector<std::string> files;
    for (const Part& part : parts) files.push_back(pdf.File(part.first, part.pages, part.title));
    return files;
  }

 protected:
  QPainter& Page() override {
    if (!open_) throw StandardError(error_number::kPrinterError, "the batch has no open document");
    return pages_->painter();
  }

 private:
  struct Part {
    std::string title;
    std::size_t first = 0, pages = 0;
  };

  QByteArray bytes_;
  QBuffer target_{&bytes_};
  std::optional<PdfPages> pages_;
  std::size_t page_count_ = 0;
  Paper first_;  // of the current document's first page
  std::optional<Part> open_;
  std::vector<Part> parts_;
};

}  // namespace

std::unique_ptr<PdfBatch> PdfBatch::Create() { return std::make_unique<BatchPrinter>(); }

}  // namespace tenora::printing
