// Finds where the pages of an open letter end on paper, beside the window's work and only while
// nobody types, and tells the editor.
#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <future>
#include <memory>
#include <vector>

#include "output/letter_printing.h"
#include "platform/printing/preview_pages.h"
#include "platform/richtext/rich_text_box.h"
#include "ui/editor/letter_editor.h"

namespace tenora {

class PageFinder : public QObject {
  Q_OBJECT

 public:
  // Both outlive this object.
  PageFinder(LetterEditor& editor, RichTextBox& letter);
  ~PageFinder() override;

  // What the letter is printed on, and the margins of the printer set-up.
  void SetPaper(const printing::Printer& printer, const PageMargins& stored);

 private:
  void Find();
  void Take(int revision, const std::vector<int>& starts);

  LetterEditor& editor_;
  RichTextBox& letter_;
  std::unique_ptr<printing::PreviewPages> paper_;  // has that printer's; null while none is known
  PageMargins margins_;
  QTimer pause_;
  std::atomic<bool> stopped_ = false;
  std::future<void> work_;
};

}  // namespace tenora
