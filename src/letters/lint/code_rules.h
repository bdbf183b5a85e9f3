// What a merge makes of one code by its name, and what its writer may have meant.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "letters/template_lint.h"

namespace tenora {

struct Complaint {
  TemplateFinding::Kind kind;
  std::string problem;
  std::string advice;
};

enum class CodeForm { kCatalogue, kCustomField, kFutureDate, kPrompt };

// The form of a name between the brackets, and how much of it must be contiguous in the source for
// the merge to recognise it: all of a catalogue code, the opening of the others.
CodeForm FormOf(std::string_view name);
std::string_view OpeningOf(std::string_view name);

// What is wrong with a closed code. `name` is the text between the brackets; with
// `holds_code` part of it is not known before the merge.
std::optional<Complaint> CheckCode(std::string_view name, bool holds_code, TemplateKind kind,
                                   Date today, const CustomFieldCodes* fields);

// The code that a text in other brackets, or a word processor's merge field, of this name is; empty
// where it is none or may be another one.
std::string CodeForLookalike(std::string_view name, TemplateKind kind);

// What to write in place of such a text or field; empty when it is the name of no code.
std::string AdviceForLookalike(std::string_view name, TemplateKind kind);

}  // namespace tenora
