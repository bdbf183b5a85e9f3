// Prints one RTF file to a PDF as a letter window would, with the margins of TENORA_SETTINGS. A
// letter that names no margins gets those that LibreOffice gives it: without them the pages could
// not be compared. scripts/compare_with_office.py drives it: print_letter FILE.rtf FILE.pdf
#include <iostream>

#include "data/program.h"
#include "data/settings.h"
#include "output/letter_pdf.h"
#include "platform/dialogs/console_dialogs.h"
#include "platform/locale/locale.h"
#include "platform/query/engine.h"
#include "platform/registry/registry.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace {

constexpr int kOfficeMargin = 1440;  // twips

// A letter that names margins of 0 keeps them.
void GiveMargins(const std::string& source, tenora::RichTextBox* letter) {
  const tenora::richtext::PageSetup& page = letter->Document().page;
  if (page.left != 0 || page.right != 0 || page.top != 0 || page.bottom != 0) return;
  if (source.find("\\margl0") != source.npos || source.find("\\margt0") != source.npos) return;
  letter->SetMargins(kOfficeMargin, kOfficeMargin, kOfficeMargin, kOfficeMargin);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace tenora;
  if (argc != 3) {
    std::cerr << "print_letter FILE.rtf FILE.pdf" << std::endl;
    return 2;
  }
  try {
    const Clock clock = Clock::FromEnvironment();
    ConsoleDialogs dialogs(std::cin, std::cerr);
    const auto locale = MakeLocale();
    const auto registry = registry::Registry::FromEnvironment();
    const auto workspace = query::Workspace::Create();
    Settings settings(
        Platform{clock, dialogs, *locale, *registry, *workspace, ProgramFolder(), StateFolder()});
    RichTextBox letter;
    letter.LoadFile(argv[1]);
    GiveMargins(ReadWholeFile(argv[1]), &letter);
    WriteWholeFile(argv[2], MakeLetterPdf(letter, "letter", settings));
    return 0;
  } catch (...) {
    std::cerr << ErrorText(CurrentError()) << std::endl;
    return 1;
  }
}
