// The one routine through which every merge writes a value into a letter.
#pragma once

#include <string>
#include <string_view>

#include "merge/merge_codes.h"
#include "merge/merge_target.h"

namespace tenora {

// A code as the letter's RTF source has it: "<<name>>", characters beyond ASCII escaped.
std::string TagInSource(const RichTextBox& editor, std::string_view code_name);

// Whether the letter's RTF source contains a text, case-sensitively.
bool SourceContains(const RichTextBox& editor, std::string_view text);

// Whether ReplaceCode has something to do for a code. In an insertion the test ignores letter case
// although the replacement does not. That is deliberate: a code typed in another case moves the
// caret, yet stays in the letter.
bool CodePresent(const MergeTarget& target, std::string_view code_name);

// Replaces every occurrence of a piece of the letter's source, which is not empty, by `value`: the
// code or question `name`, for what the letter notes about the value. The value goes in as RTF
// source: a backslash or brace keeps its RTF meaning, which is noted; a line break in it is one in
// the letter. A control word just before never runs into it.
void ReplaceInSource(const MergeTarget& target, std::string_view written, std::string_view name,
                     std::string_view value);

// Replaces every "<<code_name>>" of the letter by `value` as above, so that formatting around it
// survives. A code that an editor split into differently formatted pieces is not found. While an
// item is inserted, the caret moves on by the difference between code and value.
void ReplaceCode(const MergeTarget& target, std::string_view code_name, std::string_view value);

// The same for a code of the tables, whose value is fetched only where the letter holds the code.
// A menu command is left alone. Errors of the look-up name the code.
void FillCode(const MergeTarget& target, const MergeCode& code, const MergeSource& source);

}  // namespace tenora
