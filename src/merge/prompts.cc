#include "merge/prompts.h"

#include <string>
#include <vector>

#include "merge/catalogue.h"
#include "platform/dialogs/dialogs.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Distance from "<<?" to "?>>" below which the asking stops: a message of under three characters.
// The stop is deliberate; it leaves this prompt and every later one in the letter.
constexpr std::size_t kShortestPrompt = 6;

// Stands for an answer until all prompts are asked, so that an answer that looks like a prompt is
// not asked in its turn. RTF source is ASCII, these bytes cannot occur in it.
std::string Placeholder(std::size_t number) {
  return std::string("\xFF").append(std::to_string(number)).append("\xFE");
}

}  // namespace

void InsertPrompts(const MergeTarget& target) {
  RichTextBox& editor = target.editor;
  if (editor.TextRTF().find(kPromptStart) == std::string::npos) return;
  std::string source = editor.TextRTF();
  std::vector<std::string> answers;
  for (;;) {
    const std::size_t start = source.find(kPromptStart);
    if (start == std::string::npos) break;
    const std::size_t end = source.find(kPromptEnd, start);
    if (end == std::string::npos || end - start < kShortestPrompt) break;
    const std::size_t message_start = start + kPromptStart.size();
    const std::string message =
        editor.ShownForm(std::string_view(source).substr(message_start, end - message_start));
    // The word is "Tenant" for owner letters too.
    const auto answer = target.session.platform.dialogs.AskText(
        message + "\r\nTenant : " + target.letter.RecipientName);
    const std::string code = source.substr(start, end + kPromptEnd.size() - start);
    source = ReplaceAll(std::move(source), code, Placeholder(answers.size()));
    answers.push_back(editor.SourceForm(answer.value_or("")));
  }
  if (answers.empty()) return;
  for (std::size_t i = 0; i < answers.size(); ++i) {
    source = ReplaceAll(std::move(source), Placeholder(i), answers[i]);
  }
  editor.SetTextRTF(std::move(source));
}

}  // namespace tenora
