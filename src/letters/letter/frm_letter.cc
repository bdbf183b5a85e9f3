#include "letters/frm_letter.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

#include "letters/file_names.h"
#include "letters/letter/embedded_file.h"
#include "letters/letter_origin.h"
#include "letters/template_library.h"
#include "merge/cheque_merge.h"
#include "merge/merge_codes.h"
#include "merge/prompts.h"
#include "output/email_content.h"
#include "output/letter_pdf.h"
#include "output/letter_printing.h"
#include "platform/dialogs/guard.h"
#include "platform/mail/address.h"
#include "platform/printing/file_label.h"
#include "platform/printing/picture_import.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/free_file_name.h"
#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestTitle = 120;  // characters
constexpr int kNewLetterMargin = 1134;      // twips: 2 cm
constexpr std::string_view kExtension = ".rtf";
constexpr const char* kOnlyInTemplates =
    "Conditions and lists are only available in template letters.";
constexpr const char* kPictureTitle = "Picture File";
constexpr const char* kPictureFilter =
    "PNG and JPEG pictures|*.png;*.jpg;*.jpeg|"
    "All Image files|*.bmp;*.dib;*.wmf;*.emf;*.ico;*.cur;";
constexpr const char* kExcelTitle = "Excel Files";
// The pattern has no dot. Deliberate.
constexpr const char* kExcelFilter = "Excel Files|*xls";
constexpr const char* kObjectTitle = "Insert Object";

// Runs one step of a procedure that continues past errors.
template <typename Step>
void IgnoringErrors(Step&& step) {
  try {
    step();
  } catch (const std::exception&) {
    // Deliberate: the step is skipped.
  }
}

// UTF-16 units, as the system counts characters; never half a character.
std::string FirstCharacters(std::string_view text, std::size_t most) {
  std::string first;
  std::size_t units = 0;
  while (!text.empty()) {
    const char32_t c = TakeCodePoint(text);
    units += c > 0xFFFF ? 2 : 1;
    if (units > most) break;
    AppendUtf8(first, c);
  }
  return first;
}

// ".rtf" counts as it is written here only: a title that ends in ".RTF" gets a second extension.
// Deliberate.
std::string FileNameOf(std::string_view title) {
  if (title.ends_with(kExtension)) title.remove_suffix(kExtension.size());
  return SafeFileName(title, kLongestFileName - kExtension.size()).append(kExtension);
}

void CollectObjects(const std::vector<richtext::Block>& blocks, std::vector<std::string>& sources) {
  for (const richtext::Block& block : blocks) {
    if (const auto* paragraph = std::get_if<richtext::Paragraph>(&block)) {
      for (const richtext::Run& run : paragraph->runs) {
        const auto* object = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object);
        if (object != nullptr) sources.push_back((*object)->source);
      }
      continue;
    }
    for (const richtext::Row& row : std::get<std::shared_ptr<richtext::Table>>(block)->rows) {
      for (const richtext::Cell& cell : row.cells) CollectObjects(cell.blocks, sources);
    }
  }
}

}  // namespace

frmLetter::frmLetter(Session& session) : frmLetter(session, windowless_) {}

frmLetter::frmLetter(Session& session, LetterHost& host) : session_(session), host_(host) {
  rtfLetter.OnChange([this] { members_.Changed = true; });
}

void frmLetter::LoadLetter(const fs::path& path, std::string_view kind, std::string_view type) {
  // Taken before reading, so that a write in between is seen as a change.
  const std::optional<FileStamp> found = StampOf(path);
  rtfLetter.LoadFile(path,
                     type == "TXT" ? RichTextBox::FileType::kText : RichTextBox::FileType::kRtf);
  KnowFile(path.string(), found);
  members_.Notes = {};
  members_.FilePath = path.string();
  members_.Kind = kind;
  AfterLoadLetter();
}

void frmLetter::AfterLoadLetter() {
  members_.Changed = false;
  UpdateCaption();
}

void frmLetter::BeforeSaveLetter() { host_.BeforeSave(); }

void frmLetter::StartNew(std::string_view kind) {
  rtfLetter.SetText("");
  rtfLetter.SetMargins(kNewLetterMargin, kNewLetterMargin, kNewLetterMargin, kNewLetterMargin);
  members_.Notes = {};
  members_.Kind = kind;
  members_.FilePath.clear();
  AfterLoadLetter();
}

UnsavedLetter frmLetter::Unsaved() const {
  UnsavedLetter kept{.title = members_.LetterTitle,
                     .recipient = members_.RecipientName,
                     .kind = members_.Kind,
                     .tenant_code = members_.TenantCode,
                     .receipt_number = members_.ReceiptNumber,
                     .path = members_.FilePath,
                     .saved = std::nullopt,
                     .program_folder = {},
                     .kept = {},
                     .text = rtfLetter.TextRTF()};
  if (known_file_ && known_file_->path == kept.path) kept.saved = known_file_->stamp;
  return kept;
}

void frmLetter::Recover(const UnsavedLetter& kept) {
  StartNew(kept.kind);
  rtfLetter.SetTextRTF(kept.text);
  members_.LetterTitle = kept.title;
  members_.RecipientName = kept.recipient;
  members_.TenantCode = kept.tenant_code;
  members_.ReceiptNumber = kept.receipt_number;
  members_.FilePath = kept.path;
  KnowFile(kept.path, kept.saved);
  UpdateCaption();
}

void frmLetter::UpdateCaption() {
  const char* const separator = members_.FilePath.empty() ? " : New " : " : ";
  members_.Caption = members_.LetterTitle + separator + members_.Kind;
  host_.ShowCaption();
}

void frmLetter::InsertItem(std::string_view name) {
  members_.Inserting = true;
  // Both early returns leave the inserting mark set. That is deliberate.
  if (name.empty()) return;
  if (name == kFutureDateItem) {
    IgnoringErrors([&] { host_.ShowFutureDateDialog(rtfLetter); });
  } else if (name == kPromptMessageItem) {
    if (!InsertPromptMessage()) return;
  } else if (!IsTemplate() && (TemplateForms::IsForm(name, TemplateKind::kTenant) ||
                               TemplateForms::IsForm(name, TemplateKind::kOwner))) {
    session_.platform.dialogs.Say(kOnlyInTemplates);
  } else {
    InsertCode(name);
  }
  members_.Inserting = false;
  IgnoringErrors([&] { host_.FocusEditor(); });
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

void frmLetter::InsertForm(std::string_view open, std::string_view close) {
  if (!IsTemplate()) return session_.platform.dialogs.Say(kOnlyInTemplates);
  IgnoringErrors([&] {
    const int start = rtfLetter.SelStart(), length = rtfLetter.SelLength();
    rtfLetter.Select(start + length, 0);
    rtfLetter.SetSelText(close);
    rtfLetter.Select(start, 0);
    rtfLetter.SetSelText(open);
    rtfLetter.Select(rtfLetter.SelStart(), length);
  });
  IgnoringErrors([&] { host_.FocusEditor(); });
}

void frmLetter::InsertCode(std::string_view name) {
  IgnoringErrors(
      [&] { rtfLetter.SetSelText(std::string(kCodeStart).append(name).append(kCodeEnd)); });
  if (members_.Kind == kTenantLetter) IgnoringErrors([&] { InsertTenantDetails(); });
  if (members_.Kind == kOwnerLetter) IgnoringErrors([&] { InsertOwnerDetails(); });
}

// A batch sets the same source for each of its letters: its forms are read once.
const TemplateForms* frmLetter::Forms(TemplateKind kind) {
  const std::string& source = rtfLetter.TextRTF();
  if (members_.Inserting || !TemplateForms::MayHold(source, kind)) return nullptr;
  if (!forms_ || forms_->Kind() != kind || forms_->Source() != source) {
    forms_.emplace(source, kind);
  }
  return &*forms_;
}

TenantMergeOutcome frmLetter::InsertTenantDetails() {
  return tenora::InsertTenantDetails(Target(), Forms(TemplateKind::kTenant));
}

OwnerMergeOutcome frmLetter::InsertOwnerDetails() {
  return tenora::InsertOwnerDetails(Target(), Forms(TemplateKind::kOwner));
}

std::optional<RuntimeError> frmLetter::InsertChequeDetails(const std::string& payee,
                                                           double amount) {
  return tenora::InsertChequeDetails(Target(), payee, amount);
}

PromptOutcome frmLetter::InsertPrompts(const PromptAnswers& known, const std::string& progress) {
  return tenora::InsertPrompts(Target(), known, progress);
}

std::vector<LetterFinding> frmLetter::Check() const {
  TemplateKind kind = TemplateKind::kTenant;
  if (members_.Kind == kOwnerLetter || members_.Kind == kOwnerTemplates) {
    kind = TemplateKind::kOwner;
  } else if (members_.Kind == session_.cheque_word) {
    kind = TemplateKind::kCheque;
  }
  std::vector<LetterFinding> findings =
      CheckLetter(rtfLetter, kind, members_.Notes, session_.platform.clock.Today());
  std::ranges::copy(paper_check_.Findings(rtfLetter), std::back_inserter(findings));
  return findings;
}

bool frmLetter::SaveTenantTemplate(Durability durability) {
  return Guarded(session_.platform.dialogs, "frmLetter - SaveTenantTemplate", [&] {
    SaveGenerated({.durability = durability});
    NoteRecipient();
  });
}

// A run's log knows no content that was edited or made without a run. It counts in the folder of
// several, and where the letter is not for the one whom its folder belongs to.
void frmLetter::NoteRecipient() const {
  const auto note = [this](const std::string& kind, const std::string& code) {
    NoteOrigin(session_.database.DataFolder(), members_.FilePath, rtfLetter.TextRTF(),
               {kind, code});
  };
  if (members_.MadeFor) return note(members_.MadeFor->kind, members_.MadeFor->code);
  const std::vector<Namesake> namesakes = NamesakesOf(session_.caches, members_.RecipientName);
  const bool one_of_several =
      FindNamesake(namesakes, members_.Kind, members_.TenantCode) != nullptr;
  if (!one_of_several && !members_.RecipientChosen) return;
  note(members_.Kind, members_.Kind == kTenantLetter
                          ? members_.TenantCode
                          : OwnerCodeOf(session_.caches, members_.RecipientName));
}

void frmLetter::SaveGenerated(const SaveWay& way) {
  const fs::path folder =
      MakeRecipientFolder(session_.database.DataFolder(), members_.RecipientName);
  BeforeSaveLetter();
  const std::string title =
      SafeFileName(way.name.empty() ? members_.LetterTitle : way.name, kLongestGeneratedTitle);
  const auto accept = [&](const fs::path& path) {
    if (way.pdf_name_free && NameTaken(fs::path(path).replace_extension(".pdf"))) return false;
    if (way.before_write) way.before_write(path);
    return true;
  };
  const fs::path first = folder / (title + ".rtf");
  const std::string text = rtfLetter.TextRTF();
  members_.FilePath =
      (way.write ? way.write(first, text) : WriteUnderFreeName(first, text, way.durability, accept))
          .string();
  AfterLoadLetter();
}

bool frmLetter::PrintLetter(PrinterMod& printer) {
  return Guarded(session_.platform.dialogs, "frmLetter - PrintLetter",
                 [&] { printer.PrintRichText(rtfLetter, DocumentTitle()); });
}

std::string frmLetter::EmailAddress() const {
  Caches& caches = session_.caches;
  if (members_.Kind == kTenantLetter) {
    const TenantRecord* const tenant = caches.FindTenant(members_.TenantCode);
    if (tenant != nullptr) return tenant->Email;
  } else if (members_.Kind == kOwnerLetter) {
    const OwnerRecord* const owner = caches.FindOwner(members_.RecipientName);
    if (owner != nullptr) return owner->Email;
  }
  return {};
}

EmailBody frmLetter::BodyOfEmail(bool attach_pdf) const {
  EmailBody body = MakeEmailBody(rtfLetter);
  if (attach_pdf) {
    body.attachments.push_back({"application/pdf",
                                SafeFileName(members_.LetterTitle, kLongestFileName - 4) + ".pdf",
                                "", MakeLetterPdf(rtfLetter, DocumentTitle(), session_.settings)});
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

std::string frmLetter::KindWord() const {
  const std::string list = host_.InsertListName();
  return !list.empty() && members_.RecipientName == list ? list : "Letter";
}

// A letter's folder is named after its recipient, who may have the name of one of our own folders;
// a template's is the template folder itself.
fs::path frmLetter::LetterFolder(Making making) const {
  const bool is_template = members_.Kind == kTemplates || members_.Kind == kOwnerTemplates ||
                           members_.Kind == session_.cheque_word;
  const bool own_folder = members_.RecipientName.empty() || members_.RecipientName == members_.Kind;
  const fs::path data = session_.database.DataFolder();
  if (!is_template || !own_folder) {
    return making == Making::kMissing ? MakeRecipientFolder(data, members_.RecipientName)
                                      : data / RecipientFolderName(members_.RecipientName);
  }
  if (making == Making::kMissing) MakeSubfolder(data / members_.Kind);
  return data / members_.Kind;
}

void frmLetter::Find() {
  Dialogs& dialogs = session_.platform.dialogs;
  members_.SearchText =
      dialogs.AskText("Enter text to find.", "Find text", members_.SearchText).value_or("");
  if (members_.SearchText.empty()) return;
  host_.FocusEditor();
  if (rtfLetter.Find(members_.SearchText, 0) >= 0) return;
  dialogs.Show({.text = "Search text is not found.", .icon = Icon::kInformation});
}

void frmLetter::FindAgain() {
  if (members_.SearchText.empty()) return;
  host_.FocusEditor();
  if (rtfLetter.Find(members_.SearchText, rtfLetter.SelStart() + 1) >= 0) return;
  // Spelt so, deliberately.
  session_.platform.dialogs.Show({.text = "No more occurances found.", .icon = Icon::kInformation});
}

// Continues past a failure without a message, but a letter that is not on disk stays marked as
// changed.
bool frmLetter::WriteLetter(Making making) {
  bool written = false;
  try {
    if (making == Making::kMissing) LetterFolder(making);
    BeforeSaveLetter();
    rtfLetter.SaveFile(members_.FilePath);
    KnowFile(members_.FilePath, StampOf(members_.FilePath));
    written = true;
  } catch (...) {
    host_.ShowSaveError(CurrentError());
  }
  return written;
}

void frmLetter::KnowFile(const std::string& path, const std::optional<FileStamp>& stamp) {
  known_file_.reset();
  if (stamp) known_file_.emplace(KnownFile{path, *stamp});
}

bool frmLetter::ChangedByOthers() const {
  if (!known_file_ || known_file_->path != members_.FilePath) return false;
  const std::optional<FileStamp> now = StampOf(members_.FilePath);
  return now && *now != known_file_->stamp;
}

bool frmLetter::Save() {
  if (members_.FilePath.empty()) return SaveAs();
  if (ChangedByOthers() && !host_.ConfirmOverwrite(members_.FilePath)) return false;
  return AfterWriting(WriteLetter());
}

// Of a letter that is not on disk nobody may be told that it is saved, not even for a moment: what
// is kept of it would be dropped.
bool frmLetter::AfterWriting(bool written) {
  if (written) {
    NoteRecipient();
    AfterLoadLetter();
  } else {
    members_.Changed = true;
    UpdateCaption();
  }
  return written;
}

bool frmLetter::SaveAs() {
  fs::path path;
  std::string answer = std::exchange(unused_name_, {});
  const auto refused = [&] {
    std::string_view typed = answer;
    if (typed.ends_with(kExtension)) typed.remove_suffix(kExtension.size());
    const std::string used = path.stem().string();
    if (used != TrimBlanks(typed) && !host_.ConfirmFileName(answer, used)) return true;
    const fs::path taken = FileOfName(path);
    if (taken.empty() || taken == fs::path(members_.FilePath)) return false;
    if (!host_.ConfirmReplace(taken)) return true;
    path = taken;
    return false;
  };
  do {
    answer = session_.platform.dialogs
                 .AskText("Enter the name for this " + KindWord(), kApplicationTitle, answer)
                 .value_or("");
    members_.LetterTitle = FirstCharacters(answer, kLongestTitle);
    if (members_.LetterTitle.empty()) return false;
    path = LetterFolder() / FileNameOf(members_.LetterTitle);
  } while (refused());
  RenameInCase(path);
  const std::string path_before = std::exchange(members_.FilePath, path.string());
  const bool written = WriteLetter(Making::kMissing);
  // Without a file, the next save asks again.
  if (!written) {
    members_.FilePath = path_before;
    unused_name_ = answer;
  }
  host_.RefreshTree();
  return AfterWriting(written);
}

// A letter that is saved under its own name in another letter case is not to be there twice. Where
// it cannot be renamed, it is.
void frmLetter::RenameInCase(const fs::path& path) {
  if (members_.FilePath.empty() || path == members_.FilePath) return;
  if (FileOfName(path) != fs::path(members_.FilePath)) return;
  std::error_code kept;
  fs::rename(members_.FilePath, path, kept);
  if (!kept) members_.FilePath = path.string();
}

bool frmLetter::CheckSave() {
  if (!members_.Changed) return true;
  const Answer answer = session_.platform.dialogs.Show({.text = "Save changes?",
                                                        .title = members_.Caption,
                                                        .buttons = Buttons::kYesNoCancel,
                                                        .icon = Icon::kQuestion,
                                                        .default_answer = Answer::kYes});
  return answer == Answer::kNo || (answer == Answer::kYes && Save());
}

void frmLetter::Delete() {
  Dialogs& dialogs = session_.platform.dialogs;
  const std::string kind = KindWord();
  if (members_.FilePath.empty()) {
    dialogs.Say("This " + kind + " has not been saved yet so cant be deleted.");
    return;
  }
  // The misspelling is part of the text.
  const Answer answer = dialogs.Show(
      {.text = "Delete " + kind + " '" + members_.LetterTitle + "' perminantly from disk?",
       .buttons = Buttons::kYesNo,
       .icon = Icon::kQuestion,
       .default_answer = Answer::kNo});
  if (answer != Answer::kYes) return;
  // Continues without a message when the file cannot be deleted: the tree still shows it.
  std::error_code not_deleted;
  // What is deleted must not ask to be saved when it closes.
  if (fs::remove(members_.FilePath, not_deleted)) members_.Changed = false;
  host_.RefreshTree();
  CloseForm();
}

void frmLetter::CloseForm() { host_.CloseLetter(); }

void frmLetter::InsertPicture() { InsertFile(kPictureTitle, kPictureFilter, true); }
void frmLetter::InsertExcel() { InsertFile(kExcelTitle, kExcelFilter, false); }
void frmLetter::InsertOLEObject() { InsertFile(kObjectTitle, "", false); }

void frmLetter::InsertFile(const std::string& title, const std::string& filter, bool as_picture) {
  Dialogs& dialogs = session_.platform.dialogs;
  const auto path = dialogs.ChooseFileToOpen(title, filter);
  if (!path) return;
  Guarded(dialogs, as_picture ? "frmLetter - InsertPicture" : "frmLetter - InsertOLEObject", [&] {
    if (as_picture) {
      rtfLetter.InsertObject(printing::ImportPictureFile(*path).source);
      return;
    }
    const EmbeddedFile file{path->filename().string(), ReadWholeFile(*path, kLargestEmbeddedFile)};
    rtfLetter.InsertObject(EmbeddedFileGroup(file, printing::FileLabel(file.name).source));
  });
}

void frmLetter::SaveEmbeddedFile() {
  Dialogs& dialogs = session_.platform.dialogs;
  std::vector<std::string> objects;
  CollectObjects(rtfLetter.Document().blocks, objects);
  std::vector<EmbeddedFile> files;
  std::vector<std::string> names;
  for (const std::string& object : objects) {
    if (auto file = ReadEmbeddedFile(object)) files.push_back(std::move(*file));
  }
  if (files.empty()) return dialogs.Say("There is no embedded file in this letter.");
  for (const EmbeddedFile& file : files) names.push_back(file.name);
  const auto chosen = files.size() == 1 ? std::optional<std::size_t>(0)
                                        : dialogs.Choose("Save Embedded File", names, 0);
  if (!chosen) return;
  const EmbeddedFile& file = files[*chosen];
  const auto path = dialogs.ChooseFileToSave("Save Embedded File", "", SafeFileName(file.name));
  if (!path) return;
  Guarded(dialogs, "frmLetter - SaveEmbeddedFile", [&] { WriteWholeFile(*path, file.bytes); });
}

void frmLetter::ChangeWidth(bool page_width) {
  int width = 0;
  Guarded(session_.platform.dialogs, "frmLetter - ChangeWidth", [&] {
    if (!page_width) return;
    const PageMargins margins =
        MarginsOf(rtfLetter.Document().page, StoredMargins(session_.settings));
    constexpr long long kLeastWidth = 1440, kMostWidth = 100'000;
    const long long paper = host_.PaperWidth();
    width =
        static_cast<int>(std::clamp(paper - margins.left - margins.right, kLeastWidth, kMostWidth));
  });
  host_.SetWidth(width);
}

}  // namespace tenora
