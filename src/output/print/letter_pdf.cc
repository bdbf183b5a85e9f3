#include "output/letter_pdf.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>

#include "output/letter_printing.h"
#include "platform/printing/printing.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora {
namespace {

// Letters are private: only the owner can read the folder, and the destructor removes it.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "tenora-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw FileError(errno, name);
    path_ = name;
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace

std::string MakeLetterPdf(const RichTextBox& letter, const std::string& title, Settings& settings,
                          const std::function<bool()>& stop_asked) {
  const ScratchFolder scratch;
  const auto printers = printing::Printers::Create(
      {.default_printer = printing::kPdfPrinterName, .pdf_target = scratch.path() / "letter.pdf"});
  PrinterMod printer(*printers, settings);
  printer.StopAsked = stop_asked;
  printer.PrintRichText(letter, title);
  return ReadWholeFile(printer.EndJob());
}

}  // namespace tenora
