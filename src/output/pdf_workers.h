// Writes letters to PDF files on worker threads, so that the merge can go on.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "output/letter_printing.h"
#include "platform/runtime/error.h"

namespace tenora {

// A merged letter on its way to a PDF.
struct PdfLetter {
  std::size_t number = 0;        // the caller's own, given back with the result
  std::string rtf;               // RichTextBox::TextRTF of the merged letter
  std::string title;             // of the document, and the letter's name in errors
  std::filesystem::path target;  // ends in ".pdf"; its folder is made in one that is there
};

struct PdfResult {
  std::size_t number = 0;
  std::string title;
  // The file written: the target or, where its name was taken, the first free of "stem(1).pdf",
  // "stem(2).pdf", …; empty when it failed. Not synced: see SyncFiles.
  std::filesystem::path path;
  std::optional<RuntimeError> error;  // 482 (Printer error), naming the letter
};

// A pool of threads that lay out and write PDFs. Each file appears whole or not at all and replaces
// none. All members are for one thread, the main thread where no window has made Qt's application.
class PdfWorkers {
 public:
  // Margins as PrinterMod::LoadMargins gives them. `threads` 0 is one for each processor.
  explicit PdfWorkers(const PageMargins& margins, unsigned threads = 0);
  PdfWorkers(const PdfWorkers&) = delete;
  PdfWorkers& operator=(const PdfWorkers&) = delete;
  // Letters that no thread has begun are dropped; those begun are finished.
  ~PdfWorkers();

  // Queues a letter; letters are drawn in groups, the last of them at Finish. Waits while many
  // letters or bytes wait, so that memory does not grow with the batch.
  void Add(PdfLetter letter);
  // The results since the last call, in the order they were finished; does not wait.
  std::vector<PdfResult> TakeResults();
  // Waits for every letter added and gives the results not yet taken.
  std::vector<PdfResult> Finish();

 private:
  void Work();
  bool GroupReady() const;
  std::vector<PdfLetter> TakeGroup();

  const PageMargins margins_;
  const std::shared_ptr<void> qt_;
  std::mutex mutex_;
  std::condition_variable changed_;  // any of the members below
  std::deque<PdfLetter> waiting_;
  std::size_t waiting_bytes_ = 0;
  std::vector<PdfResult> results_;
  std::size_t in_hand_ = 0;
  bool finishing_ = false, stopping_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace tenora
