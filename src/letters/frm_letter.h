// One open letter or template: its editor, its members and the commands on it. It needs no window;
// a window around it shows the editor and the caption.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "letters/check/paper_check.h"
#include "letters/letter_check.h"
#include "letters/letter_host.h"
#include "letters/template_library.h"
#include "letters/unsaved_letter.h"
#include "merge/merge_target.h"
#include "merge/owner_merge.h"
#include "merge/prompts.h"
#include "merge/template_forms.h"
#include "merge/tenant_merge.h"
#include "output/email_sender.h"
#include "output/letter_printing.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "rental/session.h"

namespace tenora {

// How a generated letter is saved.
struct SaveWay {
  Durability durability = Durability::kSynced;
  std::string name = {};       // of the file, without ".rtf"; empty: the letter's title
  bool pdf_name_free = false;  // only under a name that ".pdf" has free too
  // Called before each attempt to take a name.
  std::function<void(const std::filesystem::path&)> before_write = {};
  // Writes the letter instead, given the first name of the series and the text; the path may be
  // empty where it is not written yet. All but the name is without meaning then.
  std::function<std::filesystem::path(const std::filesystem::path&, const std::string&)> write = {};
};

class frmLetter {
 public:
  // A letter that no window shows.
  explicit frmLetter(Session& session);
  // The host outlives the letter, and is first called when the letter is.
  frmLetter(Session& session, LetterHost& host);
  frmLetter(const frmLetter&) = delete;
  frmLetter& operator=(const frmLetter&) = delete;

  LetterMembers& members() { return members_; }
  const LetterMembers& members() const { return members_; }

  // Loads a file into the editor, as plain text when `type` is "TXT". Raises the errors of
  // RichTextBox::LoadFile, each with the path; the letter is then as before.
  void LoadLetter(const std::filesystem::path& path, std::string_view kind,
                  std::string_view type = "RTF");
  // After every load and save: clears the changed flag and refreshes the caption.
  void AfterLoadLetter();
  // Immediately before every write of the file.
  void BeforeSaveLetter();
  // Begins an unsaved letter.
  void StartNew(std::string_view kind);
  // The letter as it is to be kept while it is not saved; whoever keeps it adds when and by which
  // program.
  UnsavedLetter Unsaved() const;
  // Takes a kept letter: it is changed, and has the file that it had.
  void Recover(const UnsavedLetter& kept);
  void UpdateCaption();

  // Puts a merge code at the caret; "Future Date" and "Prompt Message" ask for theirs. In a
  // generated tenant or owner letter the code is filled at once. Errors skip the step they happen
  // in. What only conditions and lists have is for templates, which is said.
  void InsertItem(std::string_view name);

  // Puts the beginning and the end of a condition or repetition around the selection, in a
  // template. Errors skip the step they happen in.
  void InsertForm(std::string_view open, std::string_view close);

  TenantMergeOutcome InsertTenantDetails();
  OwnerMergeOutcome InsertOwnerDetails();
  std::optional<RuntimeError> InsertChequeDetails(const std::string& payee, double amount);
  PromptOutcome InsertPrompts(const PromptAnswers& known = {}, const std::string& progress = {});

  // What is wrong with the letter as it stands now: what the merges since it was begun or loaded
  // have noted, what its source shows, and what of it will not appear on paper.
  std::vector<LetterFinding> Check() const;

  // Saves a generated letter in its recipient's folder as "title.rtf" or, where that is taken,
  // under the first free of "title(1).rtf", "title(2).rtf", …; never over a file, also when other
  // programs save at the same moment. An error is shown and gives false; no partial file remains.
  bool SaveTenantTemplate(Durability durability = Durability::kSynced);
  // The same for a batch: an error is raised, and what is saved with kUntilSync waits for the
  // SyncFiles of its group.
  void SaveGenerated(const SaveWay& way);

  // "title - recipient": the letter's name in a printer's queue and in a PDF.
  std::string DocumentTitle() const {
    return members_.LetterTitle + " - " + members_.RecipientName;
  }
  // Prints the letter under that title; the job stays open. An error is shown and gives false.
  bool PrintLetter(PrinterMod& printer);

  // The address of the recipient: a tenant's by the letter's tenant code, an owner's by name, as
  // the letter's kind says. Empty when there is none.
  std::string EmailAddress() const;

  // The letter as the body of an e-mail, with itself as a PDF where `attach_pdf` is set.
  EmailBody BodyOfEmail(bool attach_pdf) const;
  // Sends the letter to its recipient, with itself as a PDF where `attach_pdf` is set. A failure,
  // also a recipient without an address, is shown and gives false.
  bool SendEmail(clsEmailSender& sender, const std::string& subject, bool attach_pdf);

  // The commands of the menus. Their questions go through the dialogs.

  // Asks for a text, from then on that of FindAgain, and selects its first occurrence.
  void Find();
  // From one character after the caret on.
  void FindAgain();

  // Writes the letter to its file, as SaveAs where it has none. A write that fails leaves the file
  // as it was and the letter marked as changed; the host is told, and the result is false.
  bool Save();
  // Asks for the title and writes to that file in the letter's folder, which is made where missing;
  // asks again, with the title shown, where the file is there and must not be replaced, where it
  // would have another name since not every system can open one of the title's, and at the next
  // call where it could not be written. Cancelling
  // leaves the title empty, deliberately. False also when cancelled.
  bool SaveAs();
  // Asks whether to save what was changed. True when the letter may be closed: unchanged, not to be
  // saved, or saved. False where it is cancelled.
  bool CheckSave();
  // Deletes the file once confirmed, and closes the letter.
  void Delete();
  void CloseForm();

  // Ask for a file and put it at the caret: as a picture, or as an embedded file that travels in
  // the letter and can be got out again. An unreadable or too large file is shown.
  void InsertPicture();
  void InsertExcel();
  void InsertOLEObject();
  // Writes an embedded file of the letter, chosen where there are several, to where the user says.
  void SaveEmbeddedFile();

  // Whether the editor wraps its text at the printer's page width.
  void ChangeWidth(bool page_width);

  RichTextBox rtfLetter;

 private:
  std::string KindWord() const;
  // Of tenants' or owners' letters.
  bool IsTemplate() const {
    return members_.Kind == kTemplates || members_.Kind == kOwnerTemplates;
  }
  enum class Making { kNothing, kMissing };
  std::filesystem::path LetterFolder(Making making = Making::kNothing) const;
  void RenameInCase(const std::filesystem::path& path);
  bool WriteLetter(Making making = Making::kNothing);
  bool AfterWriting(bool written);
  void NoteRecipient() const;
  bool ChangedByOthers() const;
  void InsertFile(const std::string& title, const std::string& filter, bool as_picture);
  MergeTarget Target() { return MergeTarget{session_, members_, rtfLetter}; }
  // False when the letter's kind has no prompts, which is then said.
  bool InsertPromptMessage();
  void InsertCode(std::string_view name);

  struct KnownFile {
    std::string path;
    FileStamp stamp;  // as it was loaded or last saved
  };
  // Those of the letter as it stands; null for none, and while a code is inserted.
  const TemplateForms* Forms(TemplateKind kind);
  void KnowFile(const std::string& path, const std::optional<FileStamp>& stamp);

  Session& session_;
  WindowlessHost windowless_;
  LetterHost& host_;
  LetterMembers members_;
  mutable PaperCheck paper_check_;  // remembers what the letters of a batch have in common
  std::optional<KnownFile> known_file_;
  std::string unused_name_;             // as it was typed, of a file that could not be written
  std::optional<TemplateForms> forms_;  // that Forms found last
};

}  // namespace tenora
