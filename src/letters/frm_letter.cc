#include "letters/frm_letter.h"

#include <system_error>

#include "letters/file_names.h"
#include "letters/template_library.h"
#include "merge/catalogue.h"
#include "merge/cheque_merge.h"
#include "merge/prompts.h"
#include "output/email_content.h"
#include "output/letter_pdf.h"
#include "platform/dialogs/guard.h"
#include "platform/mail/address.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

// Room for "(123456).rtf" behind a title.
constexpr std::size_t kLongestTitle = kLongestFileName - 16;

bool NameTaken(const fs::path& path) {
  std::error_code error;
  const bool exists = fs::symlink_status(path, error).type() != fs::file_type::not_found;
  if (exists && error) throw FileError(error.value(), path);
  return exists;
}

// Runs one step of a procedure that continues past errors.
template <typename Step>
void IgnoringErrors(Step&& step) {
  try {
    step();
  } catch (const std::exception&) {
    // Deliberate: the step is skipped.
  }
}

}  // namespace

frmLetter::frmLetter(Session& session) : session_(session) {
  rtfLetter.OnChange([this] { members_.Changed = true; });
}

void frmLetter::LoadLetter(const fs::path& path, std::string_view kind, std::string_view type) {
  // From before the reading: what comes in between is seen as a change.
  const std::optional<FileState> found = StateOf(path);
  rtfLetter.LoadFile(path,
                     type == "TXT" ? RichTextBox::FileType::kText : RichTextBox::FileType::kRtf);
  known_file_ = found;
  members_.FilePath = path.string();
  members_.Kind = kind;
  AfterLoadLetter();
}

void frmLetter::AfterLoadLetter() {
  members_.Changed = false;
  UpdateCaption();
}

void frmLetter::BeforeSaveLetter() {
  if (OnBeforeSave) OnBeforeSave();
}

void frmLetter::StartNew(std::string_view kind) {
  rtfLetter.SetText("");
  members_.Kind = kind;
  members_.FilePath.clear();
  AfterLoadLetter();
}

void frmLetter::UpdateCaption() {
  const char* const separator = members_.FilePath.empty() ? " : New " : " : ";
  members_.Caption = members_.LetterTitle + separator + members_.Kind;
  if (OnCaptionChanged) OnCaptionChanged();
}

void frmLetter::InsertItem(std::string_view name) {
  members_.Inserting = true;
  // Both early returns leave the inserting mark set. That is deliberate.
  if (name.empty()) return;
  if (name == kFutureDateItem) {
    IgnoringErrors([&] {
      if (ShowFutureDateDialog) ShowFutureDateDialog(rtfLetter);
    });
  } else if (name == kPromptMessageItem) {
    if (!InsertPromptMessage()) return;
  } else {
    InsertCode(name);
  }
  members_.Inserting = false;
  if (FocusEditor) IgnoringErrors(FocusEditor);
}

bool frmLetter::InsertPromptMessage() {
  Dialogs& dialogs = session_.platform.dialogs;
  if (members_.Kind != kTemplates && members_.Kind != kOwnerTemplates) {
    dialogs.Say("Prompt messages are only available in template letters.");
    return false;
  }
  IgnoringErrors([&] {
    const std::string answer = dialogs.AskText("Enter prompt message").value_or("");
    if (answer.empty()) return;
    rtfLetter.SetSelText(std::string(kPromptStart).append(answer).append(kPromptEnd));
  });
  return true;
}

void frmLetter::InsertCode(std::string_view name) {
  IgnoringErrors(
      [&] { rtfLetter.SetSelText(std::string(kCodeStart).append(name).append(kCodeEnd)); });
  if (members_.Kind == kTenantLetter) IgnoringErrors([&] { InsertTenantDetails(); });
  if (members_.Kind == kOwnerLetter) IgnoringErrors([&] { InsertOwnerDetails(); });
}

TenantMergeOutcome frmLetter::InsertTenantDetails() {
  return tenora::InsertTenantDetails(Target());
}

OwnerMergeOutcome frmLetter::InsertOwnerDetails() { return tenora::InsertOwnerDetails(Target()); }

std::optional<RuntimeError> frmLetter::InsertChequeDetails(const std::string& payee,
                                                           double amount) {
  return tenora::InsertChequeDetails(Target(), payee, amount);
}

std::size_t frmLetter::InsertPrompts(const PromptAnswers& known) {
  return tenora::InsertPrompts(Target(), known);
}

bool frmLetter::SaveTenantTemplate(Durability durability) {
  return Guarded(session_.platform.dialogs, "frmLetter - SaveTenantTemplate",
                 [&] { SaveGenerated({.durability = durability}); });
}

void frmLetter::SaveGenerated(const SaveWay& way) {
  const fs::path folder =
      MakeRecipientFolder(session_.database.DataFolder(), members_.RecipientName);
  BeforeSaveLetter();
  const std::string title = SafeFileName(members_.LetterTitle, kLongestTitle);
  const auto accept = [&](const fs::path& path) {
    if (way.pdf_name_free && NameTaken(fs::path(path).replace_extension(".pdf"))) return false;
    if (way.before_write) way.before_write(path);
    return true;
  };
  members_.FilePath =
      WriteUnderFreeName(folder / (title + ".rtf"), rtfLetter.TextRTF(), way.durability, accept)
          .string();
  AfterLoadLetter();
}

bool frmLetter::PrintLetter(PrinterMod& printer) {
  return Guarded(session_.platform.dialogs, "frmLetter - PrintLetter",
                 [&] { printer.PrintRichText(rtfLetter, DocumentTitle()); });
}

std::string frmLetter::EmailAddress() const {
  const Caches& caches = session_.caches;
  if (members_.Kind == kTenantLetter) {
    for (const TenantRecord& tenant : caches.Tenants) {
      if (tenant.Reference == members_.TenantCode) return tenant.Email;
    }
  } else if (members_.Kind == kOwnerLetter) {
    for (const OwnerRecord& owner : caches.Owners) {
      if (owner.Name == members_.RecipientName) return owner.Email;
    }
  }
  return {};
}

EmailBody frmLetter::BodyOfEmail(bool attach_pdf) const {
  EmailBody body = MakeEmailBody(rtfLetter);
  if (attach_pdf) {
    body.attachments.push_back({"application/pdf", members_.LetterTitle + ".pdf", "",
                                MakeLetterPdf(rtfLetter, DocumentTitle(), session_.settings)});
  }
  return body;
}

bool frmLetter::SendEmail(clsEmailSender& sender, const std::string& subject, bool attach_pdf) {
  Dialogs& dialogs = session_.platform.dialogs;
  bool sent = false;
  Guarded(dialogs, "frmLetter - SendEmail", [&] {
    const std::string address = EmailAddress();
    const std::string unsent = "\"" + members_.LetterTitle + "\" was not sent.";
    if (TrimBlanks(address).empty()) {
      dialogs.Say(members_.RecipientName + " has no e-mail address. " + unsent);
      return;
    }
    try {
      mail::ParseAddresses(address);
    } catch (const RuntimeError& error) {
      dialogs.Say(members_.RecipientName + ": " + ErrorText(error) + "\r\n" + unsent);
      return;
    }
    sent = sender.DeliverEmail(address, BodyOfEmail(attach_pdf), subject, true);
  });
  return sent;
}

}  // namespace tenora
