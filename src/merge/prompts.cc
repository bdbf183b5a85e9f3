#include "merge/prompts.h"

#include <optional>
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

std::size_t InsertPrompts(const MergeTarget& target, const PromptAnswers& known) {
  RichTextBox& editor = target.editor;
  std::size_t cancelled = 0;
  // From the beginning after every answer: one that holds a prompt is asked in its turn.
  for (;;) {
    const std::string& source = editor.TextRTF();
    const std::size_t start = source.find(kPromptStart);
    if (start == std::string::npos) return cancelled;
    const std::size_t end = source.find(kPromptEnd, start);
    if (end == std::string::npos || end - start < kShortestPrompt) {
      return cancelled;
    }
    const std::size_t message_start = start + kPromptStart.size();
    const std::string message =
        editor.ShownForm(std::string_view(source).substr(message_start, end - message_start));
    std::optional<std::string> answer;
    if (const auto given = known.find(message); given != known.end()) {
      answer = given->second;
    } else {
      // The word is "Tenant" for owner letters too.
      answer = target.session.platform.dialogs.AskText(
          message + "\r\nTenant : " + target.letter.RecipientName);
    }
    if (!answer) ++cancelled;
    const std::string code = source.substr(start, end + kPromptEnd.size() - start);
    editor.SetTextRTF(ReplaceAll(source, code, editor.SourceForm(answer.value_or(""))));
  }
}

}  // namespace tenora
