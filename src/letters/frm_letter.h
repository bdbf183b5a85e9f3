// One open letter or template: its editor, its members and the commands on it. It needs no window;
// a window around it shows the editor and the caption.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "merge/merge_target.h"
#include "merge/owner_merge.h"
#include "merge/tenant_merge.h"
#include "output/email_sender.h"
#include "output/printing.h"
#include "platform/richtext/rich_text_box.h"
#include "rental/session.h"

namespace tenora {

class frmLetter {
 public:
  explicit frmLetter(Session& session);
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
  void UpdateCaption();

  // Puts a merge code at the caret; "Future Date" and "Prompt Message" ask for theirs. In a
  // generated tenant or owner letter the code is filled at once. Errors skip the step they happen
  // in.
  void InsertItem(std::string_view name);

  TenantMergeOutcome InsertTenantDetails();
  OwnerMergeOutcome InsertOwnerDetails();
  std::optional<RuntimeError> InsertChequeDetails(const std::string& payee, double amount);
  void InsertPrompts();

  // Saves a generated letter in its recipient's folder as "title.rtf" or, where that is taken,
  // under the first free of "title(1).rtf", "title(2).rtf", …; never over a file, also when other
  // programs save at the same moment. An error is shown and gives false; nothing is left behind.
  bool SaveTenantTemplate();

  // Prints the letter as "title - recipient"; the job stays open. An error is shown and gives
  // false.
  bool PrintLetter(PrinterMod& printer);

  // The address of the recipient: a tenant's by the letter's tenant code, an owner's by name, as
  // the letter's kind says. Empty when there is none.
  std::string EmailAddress() const;

  // Sends the letter to its recipient, with itself as a PDF where `attach_pdf` is set. A failure,
  // also a recipient without an address, is shown and gives false.
  bool SendEmail(clsEmailSender& sender, const std::string& subject, bool attach_pdf);

  RichTextBox rtfLetter;

  // What a window does for its letter; each may be empty. The dialog writes its code at the caret.
  std::function<void(RichTextBox& editor)> ShowFutureDateDialog;
  std::function<void()> FocusEditor;
  std::function<void()> OnBeforeSave;

 private:
  MergeTarget Target() { return MergeTarget{session_, members_, rtfLetter}; }
  // False when the letter's kind has no prompts, which is then said.
  bool InsertPromptMessage();
  void InsertCode(std::string_view name);

  Session& session_;
  LetterMembers members_;
};

}  // namespace tenora
