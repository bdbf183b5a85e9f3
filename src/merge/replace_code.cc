#include "merge/replace_code.h"

#include <algorithm>
#include <utility>

#include "merge/merge_source.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Positions in the editor count UTF-16 units.
int LengthInEditor(std::string_view text) { return static_cast<int>(ToUtf16(text).size()); }

// As a letter has it: a line break is one character.
std::string WithLineBreaks(std::string_view value) {
  std::string text = ReplaceAll(std::string(value), "\r\n", "\v");
  std::ranges::replace_if(
      text, [](char c) { return c == '\r' || c == '\n'; }, '\v');
  return text;
}

// Whether characters of a value have a meaning in the source of a letter, or none at all.
bool IsAltered(std::string_view text) {
  return std::ranges::any_of(text, [](char c) {
    return c == '\\' || c == '{' || c == '}' || (c >= 0 && c < ' ' && c != '\t' && c != '\v');
  });
}

// What the check of the finished letter has to know about a value.
void NoteValue(const MergeTarget& target, std::string_view written, std::string_view name,
               std::string_view value, std::string_view text, const std::string& source) {
  MergeNotes& notes = target.letter.Notes;
  const bool answered = written.starts_with(kPromptStart);
  if (IsAltered(text))
    notes.Add({MergeFact::kAltered, std::string(name), std::string(value), {}, answered});
  if (text.find(kCodeStart) != std::string_view::npos ||
      text.find(kCodeEnd) != std::string_view::npos) {
    notes.Add({MergeFact::kBrackets, std::string(name), std::string(value), source, answered});
  }
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Whether a source ends in a control word that would take the next character as a part of it.
bool TakesNext(std::string_view source, char next) {
  const auto last_but = [&](auto is_part) {
    const auto end = std::find_if_not(source.rbegin(), source.rend(), is_part).base();
    return source.substr(0, static_cast<std::size_t>(end - source.begin()));
  };
  std::string_view word = last_but(IsDigit);
  const bool has_parameter = word.size() < source.size();
  if (has_parameter && word.ends_with('-')) word.remove_suffix(1);
  source = word;
  word = last_but(IsLetter);
  if (word.size() == source.size() || !word.ends_with('\\')) return false;
  source = word;
  const std::size_t backslashes = source.size() - last_but([](char c) { return c == '\\'; }).size();
  if (backslashes % 2 == 0) return false;
  return next == ' ' || IsDigit(next) || (!has_parameter && (IsLetter(next) || next == '-'));
}

// Replaces a code that the letter holds.
void ReplacePresent(const MergeTarget& target, std::string_view code_name, std::string_view value) {
  RichTextBox& editor = target.editor;
  const std::string tag = TagInSource(editor, code_name);
  if (!target.letter.Inserting) return ReplaceInSource(target, tag, code_name, value);
  const int tag_length =
      LengthInEditor(code_name) + static_cast<int>(kCodeStart.size() + kCodeEnd.size());
  const int caret = editor.SelStart() - tag_length + LengthInEditor(WithLineBreaks(value));
  ReplaceInSource(target, tag, code_name, value);
  editor.Select(std::max(0, caret), 0);
}

}  // namespace

std::string TagInSource(const RichTextBox& editor, std::string_view code_name) {
  const bool ascii = std::ranges::all_of(code_name, [](char c) { return c >= 0; });
  std::string tag(kCodeStart);
  tag.append(ascii ? std::string(code_name) : editor.SourceForm(code_name));
  return tag.append(kCodeEnd);
}

bool SourceContains(const RichTextBox& editor, std::string_view text) {
  return editor.TextRTF().find(text) != std::string::npos;
}

bool CodePresent(const MergeTarget& target, std::string_view code_name) {
  const std::string tag = TagInSource(target.editor, code_name);
  // Without a caret to move, a code in another letter case makes no difference.
  return target.letter.Inserting ? ContainsNoCase(target.editor.TextRTF(), tag)
                                 : SourceContains(target.editor, tag);
}

void ReplaceInSource(const MergeTarget& target, std::string_view written, std::string_view name,
                     std::string_view value) {
  RichTextBox& editor = target.editor;
  const std::string text = WithLineBreaks(value);
  const std::string put_in = ReplaceAll(editor.SourceForm(text), "\v", "\\line ");
  NoteValue(target, written, name, value, text, put_in);
  const std::string& source = editor.TextRTF();
  std::string merged;
  merged.reserve(source.size() + put_in.size());
  std::size_t at = 0;
  for (std::size_t found; (found = source.find(written, at)) != std::string::npos;) {
    merged.append(source, at, found - at);
    at = found + written.size();
    const char next = put_in.empty() ? source.c_str()[at] : put_in.front();
    if (TakesNext(merged, next)) merged += ' ';
    merged += put_in;
  }
  merged.append(source, at);
  editor.SetTextRTF(std::move(merged));
}

void ReplaceCode(const MergeTarget& target, std::string_view code_name, std::string_view value) {
  if (CodePresent(target, code_name)) ReplacePresent(target, code_name, value);
}

void FillCode(const MergeTarget& target, const MergeCode& code, const MergeSource& source) {
  if (code.value == nullptr || !CodePresent(target, code.name)) return;
  target.letter.Notes.Begin(code.name);
  if (code.source == CodeSource::kLastPayment && !source.payment_found) {
    target.letter.Notes.Add(MergeFact::kNoPayment);
  }
  ReplacePresent(target, code.name,
                 About([&] { return std::string(kCodeStart).append(code.name).append(kCodeEnd); },
                       [&] { return code.value(source); }));
}

}  // namespace tenora
