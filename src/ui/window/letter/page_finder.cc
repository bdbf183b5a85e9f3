#include "ui/window/letter/page_finder.h"

#include <QApplication>
#include <chrono>
#include <exception>
#include <memory>
#include <utility>

namespace tenora {
namespace {

constexpr int kPause = 400;  // milliseconds without a change
// Characters; a longer letter is not read while its writer pauses.
constexpr int kLongest = 1'000'000;

// Tables are shared with the letter, which may change them meanwhile.
void OwnTables(std::vector<richtext::Block>* blocks) {
  for (richtext::Block& block : *blocks) {
    auto* table = std::get_if<std::shared_ptr<richtext::Table>>(&block);
    if (table == nullptr) continue;
    *table = std::make_shared<richtext::Table>(**table);
    for (richtext::Row& row : (*table)->rows) {
      for (richtext::Cell& cell : row.cells) OwnTables(&cell.blocks);
    }
  }
}

}  // namespace

PageFinder::PageFinder(LetterEditor& editor, RichTextBox& letter)
    : editor_(editor), letter_(letter) {
  pause_.setSingleShot(true);
  pause_.setInterval(kPause);
  connect(&pause_, &QTimer::timeout, this, &PageFinder::Find);
  const auto wait = [this] { pause_.start(); };
  connect(&editor, &QTextEdit::textChanged, this, wait);
  connect(&editor.paper(), &PaperLayout::PaperChanged, this, wait);
}

PageFinder::~PageFinder() {
  stopped_ = true;
  if (work_.valid()) work_.wait();
}

void PageFinder::SetPaper(const printing::Printer& printer, const PageMargins& stored) {
  paper_ = std::make_unique<printing::PreviewPages>(printer);
  margins_ = stored;
  pause_.start();
}

void PageFinder::Find() {
  if (!editor_.paper().Look().sheet || paper_ == nullptr) return;
  if (editor_.document()->characterCount() > kLongest) return;
  const bool busy =
      work_.valid() && work_.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
  // Behind a box the letter may be in the middle of a merge.
  if (busy || QApplication::activeModalWidget() != nullptr) return pause_.start();
  auto letter = std::make_shared<richtext::Document>(letter_.Document());
  OwnTables(&letter->blocks);
  const auto pages = std::make_shared<printing::PreviewPages>(paper_->Current());
  const int revision = editor_.document()->revision();
  work_ = std::async(std::launch::async, [this, pages, letter, margins = margins_, revision] {
    std::vector<int> starts;
    try {
      PrintDocument(pages->Current(), *letter, {}, margins, [this] { return stopped_.load(); });
      starts = pages->PageStarts();
    } catch (const std::exception&) {
      // Margins that leave no room: printing tells it.
    }
    if (stopped_) return;
    QMetaObject::invokeMethod(
        this, [this, revision, starts = std::move(starts)] { Take(revision, starts); },
        Qt::QueuedConnection);
  });
}

void PageFinder::Take(int revision, const std::vector<int>& starts) {
  // Where the letter has changed meanwhile, the pause after that finds them anew.
  if (editor_.document()->revision() == revision) editor_.ShowPageStarts(starts);
}

}  // namespace tenora
