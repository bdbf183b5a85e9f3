#include "output/pdf_workers.h"

#include <algorithm>
#include <utility>

#include "platform/printing/printing.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {
namespace {

constexpr std::size_t kWaitingPerThread = 4;

}  // namespace

PdfWorkers::PdfWorkers(const PageMargins& margins, unsigned threads)
    : margins_(margins), qt_(printing::HoldDrawing()) {
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
    changed_.wait(lock, [&] { return waiting_.size() < most; });
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
  changed_.wait(lock, [&] { return waiting_.empty() && in_hand_ == 0; });
  return std::exchange(results_, {});
}

void PdfWorkers::Work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [&] { return stopping_ || !waiting_.empty(); });
    if (stopping_) return;
    PdfLetter letter = std::move(waiting_.front());
    waiting_.pop_front();
    ++in_hand_;
    lock.unlock();
    changed_.notify_all();
    PdfResult result = Write(std::move(letter));
    lock.lock();
    --in_hand_;
    results_.push_back(std::move(result));
    changed_.notify_all();
  }
}

PdfResult PdfWorkers::Write(PdfLetter letter) const {
  PdfResult result{letter.number, letter.title, {}, {}};
  try {
    RichTextBox box;
    box.SetTextRTF(std::move(letter.rtf));
    const auto printer = printing::NewPdfPrinter(letter.target);
    PrintDocument(*printer, box.Document(), letter.title, margins_);
    result.path = printer->EndJob();
  } catch (const RuntimeError& error) {
    result.error = error;
  } catch (const std::exception& error) {
    result.error = StandardError(error_number::kPrinterError,
                                 "\"" + letter.title + "\" cannot be printed: " + error.what());
  }
  return result;
}

}  // namespace tenora
