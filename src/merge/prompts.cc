#include "merge/prompts.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "merge/merge_codes.h"
#include "merge/replace_code.h"
#include "platform/dialogs/dialogs.h"

namespace tenora {
namespace {

// Distance from "<<?" to "?>>" below which the asking stops: a message of under three characters.
// The stop is deliberate; it leaves this prompt and every later one in the letter.
constexpr std::size_t kShortestPrompt = 6;

// A prompt in a document's source, as far as it is asked.
struct Prompt {
  std::string_view code, message;  // with and without the brackets
  std::size_t end = 0;             // just past the code
};

std::optional<Prompt> NextPrompt(std::string_view source, std::size_t from) {
  const std::size_t start = source.find(kPromptStart, from);
  if (start == std::string_view::npos) return std::nullopt;
  const std::size_t close = source.find(kPromptEnd, start);
  if (close == std::string_view::npos || close - start < kShortestPrompt) return std::nullopt;
  const std::size_t message = start + kPromptStart.size(), end = close + kPromptEnd.size();
  return Prompt{source.substr(start, end - start), source.substr(message, close - message), end};
}

}  // namespace

std::vector<std::string> PromptMessages(const RichTextBox& editor) {
  std::vector<std::string> messages;
  std::size_t from = 0;
  while (const auto prompt = NextPrompt(editor.TextRTF(), from)) {
    std::string message = editor.ShownForm(prompt->message);
    if (std::ranges::find(messages, message) == messages.end()) {
      messages.push_back(std::move(message));
    }
    from = prompt->end;
  }
  return messages;
}

PromptOutcome InsertPrompts(const MergeTarget& target, const PromptAnswers& known,
                            const std::string& progress) {
  RichTextBox& editor = target.editor;
  PromptOutcome outcome;
  // A known answer that contains its own prompt would answer it forever.
  std::set<std::string, std::less<>> answered;
  std::size_t from = 0;  // just past the last prompt that stays
  // Not from where an answer was put in: a prompt inside the answer is asked in its turn.
  while (const auto prompt = NextPrompt(editor.TextRTF(), from)) {
    const std::string message = editor.ShownForm(prompt->message);
    LetterAnswer answer;
    const auto given = known.find(message);
    if (given != known.end() && answered.insert(message).second) {
      answer = {.way = LetterAnswer::Way::kText, .text = given->second};
    } else {
      // The word is "Tenant" for owner letters too.
      answer = target.session.platform.dialogs.AskForLetter(
          {message + "\r\nTenant : " + target.letter.RecipientName, progress});
    }
    if (answer.way == LetterAnswer::Way::kStopRun) {
      outcome.stopped = true;
      break;
    }
    if (answer.way == LetterAnswer::Way::kLater) {
      outcome.left.push_back(message);
      from = prompt->end;
      continue;
    }
    if (answer.way == LetterAnswer::Way::kNone) ++outcome.cancelled;
    if (answer.for_all) outcome.for_all[message] = answer.text;
    const std::string code(prompt->code);
    ReplaceInSource(target, code, message, answer.text);
  }
  return outcome;
}

}  // namespace tenora
