#include "merge/replace_code.h"

#include <algorithm>
#include <utility>

#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Positions in the editor count UTF-16 units.
int LengthInEditor(std::string_view text) { return static_cast<int>(ToUtf16(text).size()); }

// Replaces a code that the letter holds.
void ReplacePresent(const MergeTarget& target, std::string_view code_name, std::string_view value) {
  RichTextBox& editor = target.editor;
  const std::string tag = TagInSource(editor, code_name);
  std::string merged = ReplaceAll(editor.TextRTF(), tag, editor.SourceForm(value));
  if (!target.letter.Inserting) {
    editor.SetTextRTF(std::move(merged));
    return;
  }
  const int tag_length =
      LengthInEditor(code_name) + static_cast<int>(kCodeStart.size() + kCodeEnd.size());
  const int caret = editor.SelStart() - tag_length + LengthInEditor(value);
  editor.SetTextRTF(std::move(merged));
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

void ReplaceCode(const MergeTarget& target, std::string_view code_name, std::string_view value) {
  if (CodePresent(target, code_name)) ReplacePresent(target, code_name, value);
}

void FillCode(const MergeTarget& target, const MergeCode& code, const MergeSource& source) {
  if (code.value == nullptr || !CodePresent(target, code.name)) return;
  ReplacePresent(target, code.name,
                 About([&] { return std::string(kCodeStart).append(code.name).append(kCodeEnd); },
                       [&] { return code.value(source); }));
}

}  // namespace tenora
