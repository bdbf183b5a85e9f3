// What would go wrong with a template, before it does: codes that no merge fills, or fills with
// something else than was meant.
#pragma once

#include <string>
#include <vector>

#include "letters/custom_field_codes.h"
#include "merge/merge_codes.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/date.h"

namespace tenora {

struct TemplateFinding {
  enum class Kind {
    kUnknownCode,
    kFormSlip,  // an unknown code that was to be one of a form: "<<EndIf>>"
    kLetterCase,
    kBlanks,         // "<< Tenant Name >>"
    kBrackets,       // «Tenant Name»
    kMergeField,     // a word processor's own
    kOtherTemplate,  // a code of another kind of template
    kMenuEntry,      // "Future Date", "Prompt Message"
    kSplit,          // by a change of format inside it
    kUnclosed,
    kShortPrompt,
    kFutureDate,     // its count or unit
    kCustomField,    // a field that no record has
    kReceiptNumber,  // the same number in every letter
    kNotOnPaper,     // a picture or the like: LintPaper
    kForm,           // a condition, repetition or format: no letter is made of such a template
  };

  Kind kind;
  std::string place;  // "header", "footnote", …; empty for the letter's own text
  int line = 1;       // of the place's text, from 1
  int position = 0;   // of the code in the editor; of the place's anchor, or -1 in a header
  int length = 0;     // in the editor's positions; 0 outside the letter's own text
  std::string text;   // of the line
  std::string problem;
  std::string advice;
  std::string replacement;  // what to write at `position` where that is certain; else empty

  // "line 3: "…text…": problem; advice".
  std::string Text() const;
};

// Findings in the order of the source. `today` is what future dates count from; without `fields`
// nothing is said about custom fields.
std::vector<TemplateFinding> LintTemplate(const RichTextBox& letter, TemplateKind kind, Date today,
                                          const CustomFieldCodes* fields = nullptr);

// Before the first letter of a template: raises 5 (Invalid procedure call or argument) with what
// LintTemplate says of its conditions, repetitions and formats and of what was to be one of them,
// where something is wrong with them.
void RequireSoundForms(const RichTextBox& letter, TemplateKind kind, Date today);

}  // namespace tenora
