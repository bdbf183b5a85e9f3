#include "output/letter_pdf.h"

#include <memory>
#include <utility>
#include <vector>

#include "output/letter_printing.h"
#include "platform/printing/printing.h"
#include "platform/printing/qt_application.h"

namespace tenora {

// In memory throughout, so that nothing of the letter is left on a disk.
std::string MakeLetterPdf(const RichTextBox& letter, const std::string& title, Settings& settings,
                          const std::function<bool()>& stop_asked) {
  const std::shared_ptr<void> qt = printing::HoldQtApplication();
  const auto batch = printing::PdfBatch::Create();
  PrintDocument(*batch, letter.Document(), title, StoredMargins(settings), stop_asked);
  batch->EndJob();
  std::vector<std::string> files = batch->TakeFiles();
  return std::move(files.front());
}

}  // namespace tenora
