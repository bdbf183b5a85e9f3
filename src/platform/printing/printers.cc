#include <algorithm>
#include <optional>
#include <utility>

#include "platform/printing/cups/cups_queue.h"
#include "platform/printing/layout/drawing_printer.h"
#include "platform/printing/no_paper.h"
#include "platform/printing/pdf/pdf_job.h"
#include "platform/printing/printing.h"
#include "platform/printing/qt_application.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/pdf_target.h"
#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"

namespace tenora::printing {
namespace {

constexpr std::size_t kLongestStem = 120;  // of a PDF file's name, bytes

// Where a finished job goes.
class Destination {
 public:
  virtual ~Destination() = default;
  // The folder in which the job's file is written.
  virtual std::filesystem::path SpoolFolder() const = 0;
  virtual std::filesystem::path Deliver(SpoolFile& spool, const std::string& title,
                                        const JobOptions& options) = 0;
  virtual bool TakesAnyPaper() const { return false; }
};

class PdfFolder : public Destination {
 public:
  PdfFolder(const std::filesystem::path& target, const std::filesystem::path& data_folder)
      : target_(target), data_folder_(data_folder) {}

  std::filesystem::path SpoolFolder() const override {
    if (!target_.empty()) return FolderOfPdfTarget(target_);
    if (!data_folder_.empty()) {
      RequireFolder(data_folder_);
      return data_folder_ / "Printed";
    }
    throw StandardError(error_number::kPrinterError,
                        std::string(kPdfPrinterName) + " has no folder to write to");
  }

  std::filesystem::path Deliver(SpoolFile& spool, const std::string& title,
                                const JobOptions&) override {
    if (!IsPdfFile(target_)) {
      const bool named = title.find_first_not_of(". ") != std::string::npos;
      return spool.TakeFreeName(SafeFileName(named ? title : "Document", kLongestStem));
    }
    spool.Replace(target_);
    return target_;
  }

  bool TakesAnyPaper() const override { return true; }

 private:
  const std::filesystem::path& target_;
  const std::filesystem::path& data_folder_;
};

class CupsDestination : public Destination {
 public:
  explicit CupsDestination(std::string queue) : queue_(std::move(queue)) {}
  std::filesystem::path SpoolFolder() const override {
    return std::filesystem::temp_directory_path();
  }
  std::filesystem::path Deliver(SpoolFile& spool, const std::string& title,
                                const JobOptions& options) override {
    SubmitToCups(queue_, spool.path(), title, options);
    return {};
  }

 private:
  std::string queue_;
};

class Device : public DrawingPrinter {
 public:
  Device(std::string name, const Paper& paper, std::unique_ptr<Destination> destination)
      : DrawingPrinter(std::move(name), paper), destination_(std::move(destination)) {}

  // Takes effect with the next job.
  void SetUp(const PrintChoice& choice, const Paper& upright) {
    options_ = {choice.copies, choice.sides, choice.collate, choice.settings};
    pages_ = choice.pages.value_or(std::vector<PageRange>());
    landscape_ = choice.landscape;
    SetPaper(landscape_ ? Paper{upright.height, upright.width, upright.offset_y, upright.offset_x}
                        : upright);
  }
  PrintChoice SetUpNow() const {
    return {.landscape = landscape_,
            .sides = options_.sides,
            .collate = options_.collate,
            .settings = options_.settings};
  }

  bool TakesAnyPaper() const override { return destination_->TakesAnyPaper(); }

  void StartDocument(const std::string& title, const richtext::PageSetup& page) override {
    ResetLayout();
    first_ = PaperFor(page, paper(), TakesAnyPaper());
    if (!job_) title_ = title;
    page_ = 1;
    if (!qt_) qt_ = HoldQtApplication();
    BeginPage(first_);
  }

  void NewPage() override {
    Page();
    ++page_;
    BeginPage(NextPaper(first_));
  }

  std::filesystem::path EndJob() override {
    ResetLayout();
    const bool left_out = std::exchange(nowhere_, nullptr) != nullptr;
    pages_.clear();
    const auto job = std::exchange(job_, nullptr);
    if (!job && left_out) {
      throw StandardError(error_number::kPrinterError,
                          "\"" + title_ + "\" has " + std::to_string(page_) +
                              (page_ == 1 ? " page" : " pages") +
                              ", and none of those that were to be printed");
    }
    if (!job) return {};
    std::filesystem::path result;
    AsPrinterError(job->title(),
                   [&] { result = destination_->Deliver(job->Finish(), job->title(), options_); });
    return result;
  }

  void CancelJob() override {
    ResetLayout();
    pages_.clear();
    nowhere_.reset();
    job_.reset();
  }

  bool JobOpen() const override { return job_ != nullptr || nowhere_ != nullptr; }

 protected:
  QPainter& Page() override {
    if (nowhere_) return nowhere_->painter();
    if (!job_) throw StandardError(error_number::kPrinterError, DeviceName() + " has no open job");
    return job_->painter();
  }

 private:
  // A page that is not to be printed is only laid out.
  void BeginPage(const Paper& sheet) {
    nowhere_.reset();
    if (!HoldsPage(pages_, page_)) {
      nowhere_ = std::make_unique<NoPaper>();
    } else if (job_) {
      job_->NewPage(sheet);
    } else {
      AsPrinterError(title_, [&] {
        job_ = std::make_unique<PdfJob>(destination_->SpoolFolder(), title_, sheet);
      });
    }
  }

  // Reports file errors as printer errors that name the printer and the document.
  template <typename Step>
  void AsPrinterError(const std::string& title, Step&& step) {
    try {
      step();
    } catch (const RuntimeError& error) {
      if (error.number() == error_number::kPrinterError) throw;
      throw StandardError(
          error_number::kPrinterError,
          DeviceName() + " cannot print \"" + title + "\": " + std::string(error.description()));
    }
  }

  std::unique_ptr<Destination> destination_;
  JobOptions options_;
  std::vector<PageRange> pages_;  // of the next job; all where it is empty
  std::string title_;             // of the job
  int page_ = 0;                  // of the current document
  bool landscape_ = false;        // how the printer is set
  Paper first_;                   // of the current document's first page
  // Outlives the job, which draws with its fonts.
  std::shared_ptr<void> qt_;
  std::unique_ptr<PdfJob> job_;
  std::unique_ptr<NoPaper> nowhere_;  // while a page is left out
};

class InstalledPrinters : public Printers {
 public:
  explicit InstalledPrinters(PrinterOptions options) : options_(std::move(options)) {}

  int Count() const override { return static_cast<int>(Names().size()); }

  std::vector<std::string> Names() const override {
    std::vector<std::string> names{kPdfPrinterName};
    const CupsQueues queues = ListCupsQueues();
    names.insert(names.end(), queues.names.begin(), queues.names.end());
    return names;
  }

  void SetDataFolder(const std::filesystem::path& folder) override { data_folder_ = folder; }

  bool SetCurrent(std::string_view name) override {
    if (EqualsNoCase(name, kPdfPrinterName)) {
      Use(kPdfPrinterName);
      return true;
    }
    const std::vector<std::string> queues = ListCupsQueues().names;
    const auto found = std::find_if(queues.begin(), queues.end(), [&](const std::string& queue) {
      return EqualsNoCase(queue, name);
    });
    if (found == queues.end()) return false;
    Use(*found);
    return true;
  }

  Printer& Current() override {
    if (current_) return *current_;
    if (!options_.default_printer.empty()) {
      if (!SetCurrent(options_.default_printer)) {
        throw StandardError(error_number::kPrinterError,
                            "no printer named \"" + options_.default_printer + "\"");
      }
    } else {
      const std::string queue = ListCupsQueues().default_name;
      Use(queue.empty() ? kPdfPrinterName : queue);
    }
    return *current_;
  }

  void UseDefault() override {
    if (!current_ || !current_->JobOpen()) current_.reset();
  }

  bool Choose(Dialogs& dialogs, Offer offer, int page_count) override {
    const std::string current = CurrentName();
    // The number of copies starts at one each time.
    PrintChoice shown = current_ ? current_->SetUpNow() : PrintChoice();
    if (offer == Offer::kPagesAgain) shown = chosen_;
    shown.page_count = page_count;
    std::vector<OfferedPrinter> offered;
    for (const std::string& name : Names()) {
      if (name == current) shown.printer = offered.size();
      offered.push_back({name, name != kPdfPrinterName});
      if (offered.back().on_paper) {
        offered.back().settings = [name] { return SettingsOfCupsQueue(name); };
      }
    }
    if (offer != Offer::kWhole && !shown.pages) shown.pages.emplace();
    const auto chosen = dialogs.ChoosePrinter(offered, shown);
    if (!chosen || chosen->printer >= offered.size()) return false;
    if (!SetCurrent(offered[chosen->printer].name)) return false;
    current_->SetUp(*chosen, SheetOf(offered[chosen->printer].name, chosen->settings));
    some_pages_ = chosen->pages && !chosen->pages->empty();
    chosen_ = *chosen;
    return true;
  }

  bool SomePages() const override { return some_pages_; }

 private:
  // A missing default printer must not stop the user from choosing another.
  std::string CurrentName() {
    try {
      return Current().DeviceName();
    } catch (const RuntimeError&) {
      return {};
    }
  }

  static Paper SheetOf(const std::string& name, const ChosenSettings& settings) {
    if (name == kPdfPrinterName) return RegionalPaper();
    for (const auto& [setting, value] : settings) {
      if (setting == kPaperSetting) return PaperOfCupsQueue(name, value);
    }
    return PaperOfCupsQueue(name);
  }

  void Use(const std::string& name) {
    if (current_ && current_->DeviceName() == name) return;
    std::unique_ptr<Destination> destination;
    if (name == kPdfPrinterName) {
      destination = std::make_unique<PdfFolder>(options_.pdf_target, data_folder_);
    } else {
      destination = std::make_unique<CupsDestination>(name);
    }
    current_ = std::make_unique<Device>(name, SheetOf(name, {}), std::move(destination));
  }

  PrinterOptions options_;
  std::filesystem::path data_folder_;
  std::unique_ptr<Device> current_;
  PrintChoice chosen_;  // last
  bool some_pages_ = false;
};

}  // namespace

Paper PaperOf(const Printer& printer, const richtext::PageSetup& page) {
  const auto twips = [](int pixels, double twips_per_pixel) {
    return static_cast<int>(std::lround(pixels * twips_per_pixel));
  };
  const Paper paper{printer.Width(), printer.Height(),
                    twips(printer.PhysicalOffsetX(), printer.TwipsPerPixelX()),
                    twips(printer.PhysicalOffsetY(), printer.TwipsPerPixelY())};
  return PaperFor(page, paper, printer.TakesAnyPaper());
}

std::unique_ptr<Printers> Printers::Create(PrinterOptions options) {
  return std::make_unique<InstalledPrinters>(std::move(options));
}

}  // namespace tenora::printing
