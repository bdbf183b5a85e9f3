#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/printing/layout/drawing_printer.h"
#include "platform/printing/pdf/pdf_job.h"
#include "platform/printing/pdf/pdf_outline.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora::printing {
namespace {

constexpr double kTwipsPerPoint = 20;

void Append(const SpoolFile& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file.descriptor(), text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) throw FileError(errno, file.folder());
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

class BookPrinter : public PdfBook, public DrawingPrinter {
 public:
  BookPrinter(std::filesystem::path target, std::string title, bool front_sides)
      : DrawingPrinter(kPdfPrinterName, RegionalPaper()),
        target_(std::move(target)),
        title_(std::move(title)),
        front_sides_(front_sides) {}

  bool TakesAnyPaper() const override { return true; }

  void StartDocument(const std::string& title, const richtext::PageSetup& page) override {
    ResetLayout();
    const Paper before = std::exchange(first_, PaperFor(page, paper(), TakesAnyPaper()));
    if (open_) {
      NewPage();
      return;
    }
    if (!job_) {
      job_.emplace(target_.parent_path(), title_, first_);
    } else {
      // The back of the sheet is of the letter before.
      if (front_sides_ && pages_ % 2 != 0) {
        job_->NewPage(before);
        ++pages_;
      }
      job_->NewPage(first_);
    }
    open_ = true;
    bookmarks_.push_back({title, pages_, first_.height / kTwipsPerPoint});
    ++pages_;
  }

  void NewPage() override {
    Page();
    job_->NewPage(NextPaper(first_));
    ++pages_;
  }

  std::filesystem::path EndJob() override {
    ResetLayout();
    open_ = false;
    return {};
  }

  void CancelJob() override {
    ResetLayout();
    open_ = false;
    job_.reset();
    pages_ = 0;
    bookmarks_.clear();
  }

  bool JobOpen() const override { return open_; }
  std::size_t Pages() const override { return pages_; }

  void Finish() override {
    ResetLayout();
    if (!job_) throw StandardError(error_number::kPrinterError, "the PDF has no pages");
    SpoolFile& file = job_->Finish();
    std::ifstream pdf(file.path(), std::ios::binary);
    Append(file, PdfOutline(pdf, bookmarks_));
    file.Replace(target_);
    job_.reset();
  }

 protected:
  QPainter& Page() override {
    if (!open_) throw StandardError(error_number::kPrinterError, "the PDF has no open document");
    return job_->painter();
  }

 private:
  const std::filesystem::path target_;
  const std::string title_;
  const bool front_sides_;
  std::optional<PdfJob> job_;
  Paper first_;  // of the current document's first page
  bool open_ = false;
  std::size_t pages_ = 0;
  std::vector<PdfBookmark> bookmarks_;
};

}  // namespace

std::unique_ptr<PdfBook> PdfBook::Create(const std::filesystem::path& target,
                                         const std::string& title, bool front_sides) {
  return std::make_unique<BookPrinter>(target, title, front_sides);
}

}  // namespace tenora::printing
