// What is wrong with a finished letter, found after its merge and before it is printed, mailed or
// handed on. The check of templates is in template_lint.h.
#pragma once

#include <string>
#include <vector>

#include "letters/recipients.h"
#include "merge/merge_codes.h"
#include "merge/merge_notes.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/date.h"

namespace tenora {

enum class FindingWeight {
  kWarning,  // is told, and stops nothing
  kHold,     // the letter is saved and goes no further without a person's word
};

struct LetterFinding {
  FindingWeight weight = FindingWeight::kHold;
  std::string code;        // the merge code or question it concerns ("Tenant Name"), or empty
  std::string sentence;    // what is wrong and what to do, without the recipient's name
  std::string shown = {};  // the text of the letter that it is about; empty where unknown

  bool operator==(const LetterFinding&) const = default;
};

bool Holds(const std::vector<LetterFinding>& findings);

// "Jane Smith (T00001): Tenant Name: …", for boxes, the run log and standard error.
std::string FindingText(const Recipient& recipient, const LetterFinding& finding);

// The findings of a letter that the merge of this kind has filled: what its notes say, and what
// its source shows. Those that hold it come first. The document is parsed only where the source
// holds what may be a code. `today` is what future dates count from.
std::vector<LetterFinding> CheckLetter(const RichTextBox& letter, TemplateKind kind,
                                       const MergeNotes& notes, Date today);

}  // namespace tenora
