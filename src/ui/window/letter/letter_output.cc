#include "ui/window/letter/letter_output.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "letters/letter_origin.h"
#include "letters/template_library.h"
#include "letters/window_print.h"
#include "output/letter_pdf.h"
#include "output/letter_printing.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"
#include "ui/window/letter/letter_recipient.h"
#include "ui/window/preview/print_preview.h"

namespace tenora {
namespace {

// A copy of a letter that no editor shows.
class Copy {
 public:
  Copy(Session& session, frmLetter& letter) : letter_(session) {
    letter_.rtfLetter.SetTextRTF(letter.rtfLetter.TextRTF());
    letter_.members() = letter.members();
  }
  frmLetter& letter() { return letter_; }

 private:
  frmLetter letter_;
};

// "Notice" of "Notice(2)", which a file is called where the name was taken.
std::string WithoutNumber(const std::string& title) {
  const std::size_t open = title.rfind('(');
  if (open == std::string::npos || open == 0 || !title.ends_with(')')) return title;
  const std::string number = title.substr(open + 1, title.size() - open - 2);
  return !number.empty() && std::ranges::all_of(number, IsDigit) ? title.substr(0, open) : title;
}

}  // namespace

bool LetterOutput::MayLeave(const frmLetter& letter, const char* question) {
  const LetterMembers& members = letter.members();
  if (members.Kind != kTenantLetter && members.Kind != kOwnerLetter) return true;
  std::vector<LetterFinding> findings = letter.Check();
  if (!Holds(findings) && !members.Changed && !members.FilePath.empty()) {
    // What the merge found wrong with a value cannot be seen in the file.
    const std::string held = HeldReason(session_.database.DataFolder(), members.FilePath);
    if (!held.empty()) findings.insert(findings.begin(), {FindingWeight::kHold, {}, held});
  }
  if (findings.empty()) return true;
  std::string text = Holds(findings) ? "This letter is not as it should be:\r\n"
                                     : "Have a look at this letter:\r\n";
  for (const LetterFinding& finding : findings) {
    text += "\r\n" + FindingText({members.RecipientName, members.TenantCode}, finding) + ".";
  }
  Dialogs& dialogs = session_.platform.dialogs;
  if (!Holds(findings)) {
    dialogs.Show({.text = text, .title = members.Caption, .icon = Icon::kInformation});
    return true;
  }
  return dialogs.Show({.text = text + "\r\n\r\n" + question,
                       .title = members.Caption,
                       .buttons = Buttons::kYesNo,
                       .icon = Icon::kExclamation,
                       .default_answer = Answer::kNo}) == Answer::kYes;
}

bool LetterOutput::Print(frmLetter& letter) {
  printing::Printers& printers = printers_.Get();
  if (PrinterMod(printers, session_.settings).PrinterCount() == 0) {
    session_.platform.dialogs.Say("No printer is installed. Nothing was printed.");
    return false;
  }
  if (!MayLeave(letter, "Print it anyway?")) return false;
  return PrintFromWindow(session_, letter,
                         [&](frmLetter& printed) { return PrintOne(printers, printed); });
}

bool LetterOutput::PrintOne(printing::Printers& printers, frmLetter& letter) {
  auto offer = printing::Printers::Offer::kPages;
  for (;;) {
    PrinterMod printer(printers, session_.settings);
    const int page_count = printer.PageCount(letter.rtfLetter);
    if (!printer.ChoosePrinter(session_.platform.dialogs, offer, page_count)) return false;
    try {
      return PrintChosen(printers, letter);
    } catch (const RuntimeError& error) {
      // How many pages there are depends on the paper that was chosen.
      if (error.number() != error_number::kPrinterError || !printers.SomePages()) throw;
      ShowError(session_.platform.dialogs, "frmLetter - PrintLetter", error);
      offer = printing::Printers::Offer::kPagesAgain;
    }
  }
}

bool LetterOutput::PrintChosen(printing::Printers& printers, frmLetter& letter) {
  PrinterMod printer(printers, session_.settings);
  letters_.ShowPages();  // the paper may differ
  Copy copy(session_, letter);
  bool printed = false, cancelled = false;
  std::filesystem::path file;
  run_(tr("Printing"), [&](WorkProgress& progress) {
    printer.StopAsked = [&progress] { return progress.Cancelled(); };
    printed = copy.letter().PrintLetter(printer);
    if (printed) file = printer.EndJob();
    cancelled = !printed && progress.Cancelled();
  });
  if (cancelled) emit Told(tr("Cancelled; nothing was printed"));
  if (printed) {
    emit Told(file.empty()
                  ? tr("Sent to %1").arg(QString::fromStdString(printers.Current().DeviceName()))
                  : tr("Printed: %1").arg(QString::fromStdString(file.string())));
  }
  // Some of its pages may have been printed for a look at them.
  if (printed && !printers.SomePages()) {
    Note(letter, {Destination::kPrinter, printers.Current().DeviceName(), file});
  }
  return printed;
}

void LetterOutput::Note(const frmLetter& letter, const HandedOver& handed) {
  const LetterMembers& members = letter.members();
  if (members.FilePath.empty()) return;
  NoteHandedOver(session_.database.DataFolder(), members.FilePath, handed, session_.platform.clock);
}

void LetterOutput::ExportPdf(frmLetter& letter) {
  if (!MayLeave(letter, "Export it anyway?")) return;
  const LetterMembers& members = letter.members();
  std::filesystem::path suggestion =
      members.FilePath.empty()
          ? session_.database.DataFolder() /
                (SafeFileName(members.LetterTitle, kLongestFileName - 4) + ".pdf")
          : std::filesystem::path(members.FilePath).replace_extension(".pdf");
  auto path = session_.platform.dialogs.ChooseFileToSave("Export as PDF", "PDF|*.pdf", suggestion);
  if (!path) return;
  if (path->extension() != ".pdf") *path += ".pdf";
  Copy copy(session_, letter);
  run_(tr("Exporting"), [&](WorkProgress& progress) {
    const std::string title = members.LetterTitle + " - " + members.RecipientName;
    WriteWholeFile(*path, MakeLetterPdf(copy.letter().rtfLetter, title, session_.settings,
                                        [&progress] { return progress.Cancelled(); }));
  });
  emit Told(tr("Exported: %1").arg(QString::fromStdString(path->string())));
}

std::optional<std::string> LetterOutput::Recipient(frmLetter& letter) {
  if (!AskForRecipient(session_, letter, "E-mail it to")) return std::nullopt;
  const LetterMembers& members = letter.members();
  const std::vector<Namesake> namesakes = NamesakesOf(session_.caches, members.RecipientName);
  const Namesake* const to = FindNamesake(namesakes, members.Kind, members.TenantCode);
  if (to == nullptr && members.RecipientChosen) {
    const std::string address = letter.EmailAddress();
    return members.RecipientName +
           (members.TenantCode.empty() ? "" : " (" + members.TenantCode + ")") +
           (address.empty() ? "" : " at " + address);
  }
  if (to == nullptr) return members.RecipientName;
  return members.RecipientName + " (" + to->text + ")" +
         (to->email.empty() ? "" : " at " + to->email);
}

bool LetterOutput::Email(frmLetter& letter) {
  if (!MayLeave(letter, "E-mail it anyway?")) return false;
  const auto recipient = Recipient(letter);
  if (!recipient) return false;
  const auto subject = session_.platform.dialogs.AskText("Subject of the e-mail to " + *recipient,
                                                         "E-mail this letter", SubjectOf(letter));
  if (!subject) return false;
  const bool attach_pdf =
      session_.settings.GetSettingAs(ToInt32, "Receipt", "PdfAttachment", "0") != 0;
  Copy copy(session_, letter);
  bool sent = false;
  run_(tr("Sending"), [&](WorkProgress& progress) {
    clsEmailSender sender(session_);
    sender.StopAsked = [&progress] { return progress.Cancelled(); };
    sent = copy.letter().SendEmail(sender, *subject, attach_pdf);
  });
  if (sent) {
    const bool namesakes = *recipient != letter.members().RecipientName;
    emit Told(tr("E-mailed to %1")
                  .arg(QString::fromStdString(namesakes ? *recipient : letter.EmailAddress())));
    Note(letter, {Destination::kEmail, letter.EmailAddress()});
  }
  return sent;
}

// The template's name: the number that tells a file from others of the name is no matter of the
// recipient.
std::string LetterOutput::SubjectOf(const frmLetter& letter) {
  const LetterMembers& members = letter.members();
  const std::string& title = members.LetterTitle;
  const std::string name = WithoutNumber(title);
  if (name == title || members.FilePath.empty()) return title;
  // A template may have such a name itself.
  const auto made = MadeUnderName(session_.database.DataFolder(), members.FilePath);
  return made && made->template_name == title ? title : name;
}

void LetterOutput::Preview(frmLetter& letter, QWidget* parent) {
  printing::Printers& printers = printers_.Get();
  auto copy = std::make_unique<RichTextBox>();
  copy->SetTextRTF(letter.rtfLetter.TextRTF());
  const std::string title = letter.members().LetterTitle;
  auto pages = std::make_unique<printing::PreviewPages>(printers.Current());
  run_(tr("Laying out"), [&](WorkProgress& progress) {
    PrinterMod printer(*pages, session_.settings);
    printer.StopAsked = [&progress] { return progress.Cancelled(); };
    printer.PrintRichText(*copy, title);
  });
  auto* preview = new PrintPreview(std::move(copy), std::move(pages), parent);
  preview->setWindowFlag(Qt::Window);
  preview->setWindowTitle(tr("%1 – Print Preview").arg(QString::fromStdString(title)));
  connect(preview, &PrintPreview::PrintAsked, this, [this, preview] {
    preview->close();
    emit PrintAsked();
  });
  preview->show();
}

}  // namespace tenora
