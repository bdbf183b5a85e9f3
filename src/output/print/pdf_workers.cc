#include "output/pdf_workers.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/printing/printing.h"
#include "platform/printing/qt_application.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/files.h"
#include "platform/runtime/free_file_name.h"

namespace tenora {
namespace {

// Letters drawn together: their fonts are embedded once for all of them.
constexpr std::size_t kGroup = 32;
constexpr std::size_t kWaitingPerThread = 2 * kGroup;
// Letters with large pictures wait, and are drawn together, only up to this size.
constexpr std::size_t kMostWaitingBytes = std::size_t{32} << 20;
constexpr std::size_t kMostGroupBytes = std::size_t{4} << 20;

RuntimeError LetterError(const std::string& title, const std::string& reason) {
  return StandardError(error_number::kPrinterError,
                       "\"" + title + "\" could not be written as a PDF: " + reason);
}

// Runs a step for one letter and records an error in its result.
template <typename Step>
void ForLetter(PdfResult& result, Step&& step) {
  try {
    step();
  } catch (const std::exception& error) {
    result.error = LetterError(result.title, error.what());
  }
}

std::vector<PdfResult> WriteGroup(printing::PdfBatch& batch, std::vector<PdfLetter>& letters,
                                  const PageMargins& margins) {
  std::vector<PdfResult> results;
  for (PdfLetter& letter : letters) {
    PdfResult& result = results.emplace_back(PdfResult{letter.number, letter.title, {}, {}});
    ForLetter(result, [&] {
      RichTextBox box;
      box.SetTextRTF(std::move(letter.rtf));
      PrintDocument(batch, box.Document(), letter.title, margins);
      batch.EndJob();
    });
  }
  std::vector<std::string> files;
  std::string failure;
  try {
    files = batch.TakeFiles();
  } catch (const std::exception& error) {
    failure = error.what();
  }
  auto file = files.begin();
  for (std::size_t i = 0; i < letters.size(); ++i) {
    if (results[i].error) continue;
    ForLetter(results[i], [&] {
      if (file == files.end()) throw LetterError(letters[i].title, failure);
      const std::string content = std::move(*file++);
      MakeSubfolder(letters[i].target.parent_path());
      results[i].path = WriteUnderFreeName(letters[i].target, content, Durability::kUntilSync);
    });
  }
  return results;
}

}  // namespace

PdfWorkers::PdfWorkers(const PageMargins& margins, unsigned threads)
    : margins_(margins), qt_(printing::HoldQtApplication()) {
  if (threads == 0) threads = std::max(1U, std::thread::hardware_concurrency());
  threads_.reserve(threads);
  for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this] { Work(); });
}

PdfWorkers::~PdfWorkers() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    waiting_.clear();
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void PdfWorkers::Add(PdfLetter letter) {
  {
    std::unique_lock lock(mutex_);
    const std::size_t most = kWaitingPerThread * threads_.size();
    changed_.wait(lock, [&] {
      return waiting_.empty() || (waiting_.size() < most && waiting_bytes_ < kMostWaitingBytes);
    });
    waiting_bytes_ += letter.rtf.size();
    waiting_.push_back(std::move(letter));
  }
  changed_.notify_all();
}

std::vector<PdfResult> PdfWorkers::TakeResults() {
  const std::lock_guard lock(mutex_);
  return std::exchange(results_, {});
}

std::vector<PdfResult> PdfWorkers::Finish() {
  std::unique_lock lock(mutex_);
  finishing_ = true;
  changed_.notify_all();
  changed_.wait(lock, [&] { return waiting_.empty() && in_hand_ == 0; });
  finishing_ = false;
  return std::exchange(results_, {});
}

// The mutex is held. A group that is not full yet waits for more letters, which then share its
// fonts.
bool PdfWorkers::GroupReady() const {
  if (waiting_.size() >= kGroup || waiting_bytes_ >= kMostGroupBytes) return true;
  return finishing_ && !waiting_.empty();
}

std::vector<PdfLetter> PdfWorkers::TakeGroup() {
  std::vector<PdfLetter> group;
  std::size_t bytes = 0;
  while (!waiting_.empty() && group.size() < kGroup && bytes < kMostGroupBytes) {
    bytes += waiting_.front().rtf.size();
    group.push_back(std::move(waiting_.front()));
    waiting_.pop_front();
  }
  waiting_bytes_ -= bytes;
  return group;
}

void PdfWorkers::Work() {
  const auto batch = printing::PdfBatch::Create();
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [&] { return stopping_ || GroupReady(); });
    if (stopping_) return;
    std::vector<PdfLetter> group = TakeGroup();
    in_hand_ += group.size();
    lock.unlock();
    changed_.notify_all();
    std::vector<PdfResult> results = WriteGroup(*batch, group, margins_);
    lock.lock();
    in_hand_ -= group.size();
    std::move(results.begin(), results.end(), std::back_inserter(results_));
    changed_.notify_all();
  }
}

}  // namespace tenora
