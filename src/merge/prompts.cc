#include "merge/prompts.h"

#include <string>

#include "merge/catalogue.h"
#include "platform/dialogs/dialogs.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Distance from "<<?" to "?>>" below which the asking stops: a message of under three characters.
// The stop is deliberate; it leaves this prompt and every later one in the letter.
constexpr std::size_t kShortestPrompt = 6;

}  // namespace

void InsertPrompts(const MergeTarget& target) {
  RichTextBox& editor = target.editor;
  // From the beginning after every answer: one that holds a prompt is asked in its turn.
  for (;;) {
    const std::string& source = editor.TextRTF();
    const std::size_t start = source.find(kPromptStart);
    if (start == std::string::npos) return;
    const std::size_t end = source.find(kPromptEnd, start);
    if (end == std::string::npos || end - start < kShortestPrompt) return;
    const std::size_t message_start = start + kPromptStart.size();
    const std::string message =
        editor.ShownForm(std::string_view(source).substr(message_start, end - message_start));
    // The word is "Tenant" for owner letters too.
    const auto answer = target.session.platform.dialogs.AskText(
        message + "\r\nTenant : " + target.letter.RecipientName);
    const std::string code = source.substr(start, end + kPromptEnd.size() - start);
    editor.SetTextRTF(ReplaceAll(source, code, editor.SourceForm(answer.value_or(""))));
  }
}

}  // namespace tenora
