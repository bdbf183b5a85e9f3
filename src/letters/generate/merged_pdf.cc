#include "letters/generate/merged_pdf.h"

#include <memory>
#include <string>
#include <utility>

#include "letters/generate/run_summary.h"
#include "platform/printing/qt_application.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

std::string WhyNot(const LoggedLetter& letter) {
  const std::string detail = letter.detail.empty() ? "" : ": " + letter.detail;
  if (HeldBack(letter.state)) return "held back" + detail;
  if (letter.state == LetterState::kFailed) return "failed" + detail;
  return "not made";
}

std::string Bookmark(const Recipient& recipient) {
  return recipient.code.empty() ? recipient.name : recipient.name + " (" + recipient.code + ")";
}

// A letter that was never begun in the PDF can be left out; one that was cannot be taken back.
bool Print(printing::PdfBook& book, const LetterReport& report, const PageMargins& margins,
           const std::function<bool()>& stop_asked, std::string& problem) {
  const std::size_t pages_before = book.Pages();
  try {
    RichTextBox letter;
    letter.LoadFile(report.file, RichTextBox::FileType::kRtf);
    PrintDocument(book, letter.Document(), Bookmark(report.recipient), margins, stop_asked);
    book.EndJob();
    return true;
  } catch (const RuntimeError& error) {
    if (error.number() == error_number::kCancelled || book.Pages() != pages_before) throw;
    problem = ErrorText(error);
    return false;
  }
}

}  // namespace

bool ReadyForPost(LetterState state) {
  switch (state) {
    case LetterState::kSaved:
    case LetterState::kSending:
    case LetterState::kMailed:
    case LetterState::kPrinting:
    case LetterState::kPrinted:
    case LetterState::kNoAddress:
      return true;
    case LetterState::kWaiting:
    case LetterState::kSaving:
    case LetterState::kFailed:
    case LetterState::kHolding:
    case LetterState::kHeld:
      break;
  }
  return false;
}

void WriteMergedPdf(const LoggedRun& run, const std::filesystem::path& data_folder,
                    const std::filesystem::path& target, const PageMargins& margins,
                    const std::function<bool()>& stop_asked, MergedFiles& merged) {
  const std::shared_ptr<void> qt = printing::HoldQtApplication();
  const auto book =
      printing::PdfBook::Create(target, run.request.template_name, run.request.duplex);
  for (std::size_t number = 1; number <= run.letters.size(); ++number) {
    const LoggedLetter& letter = run.letters[number - 1];
    LetterReport report = ReportOf(run, number, data_folder);
    if (!ReadyForPost(letter.state)) {
      report.problem = WhyNot(letter);
    } else if (Print(*book, report, margins, stop_asked, report.problem)) {
      ++merged.letters;
      continue;
    }
    merged.left_out.push_back(std::move(report));
  }
  if (merged.letters == 0) return;
  book->Finish();
  merged.pages = book->Pages();
  merged.pdf = target;
}

}  // namespace tenora
