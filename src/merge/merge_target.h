// What a merge works on.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "merge/merge_notes.h"
#include "platform/richtext/rich_text_box.h"
#include "rental/session.h"

namespace tenora {

// The members of a letter window.
// Another one than the folder of a letter belongs to.
struct OtherRecipient {
  std::string kind;  // kTenantLetter or kOwnerLetter
  std::string code;  // of the tenancy or the owner; empty where it is not known
  std::string name;
};

struct LetterMembers {
  // The recipient's name; for a generated letter also the sub-folder of the data folder that holds
  // it, for a template the template folder's name.
  std::string RecipientName;
  std::string Kind;        // "Templates", "Owner Templates", "Tenant Letter", "Owner Letter"
  std::string TenantCode;  // may be empty
  std::int32_t ReceiptNumber = 0;  // record number of the payment; 0 for ordinary letters
  std::string FilePath;            // empty while the letter has never been saved
  std::string SearchText;          // of the last find
  std::string LetterTitle;
  bool Changed = false;    // set by editing, cleared after every load and save
  bool Inserting = false;  // set while InsertItem runs
  std::string Caption;
  MergeNotes Notes;  // of the merges since the letter was begun or loaded
  // For whom the letter is known to be made, where that is another one than its recipient, until a
  // person has said for whom it is to be.
  std::optional<OtherRecipient> MadeFor;
  bool RecipientChosen = false;  // a person has said so
};

// One letter during a merge. All three outlive the merge.
struct MergeTarget {
  Session& session;
  LetterMembers& letter;
  RichTextBox& editor;
};

// Every merge begins with this: the caption shows the recipient, unless an item is being inserted.
inline void ShowRecipientInCaption(LetterMembers& letter) {
  if (!letter.Inserting) letter.Caption = letter.LetterTitle + " : " + letter.RecipientName;
}

}  // namespace tenora
