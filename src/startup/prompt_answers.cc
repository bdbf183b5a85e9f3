#include "startup/prompt_answers.h"

#include <algorithm>

#include "merge/merge_codes.h"
#include "startup/recipient_choice.h"

namespace tenora {
namespace {

[[noreturn]] void RefuseAnswer(const std::string& answer, const std::vector<std::string>& prompts) {
  std::string names;
  for (const std::string& prompt : prompts)
    names += (names.empty() ? "\"" : ", \"") + prompt + "\"";
  throw WrongChoice("--answer \"" + answer + "\" answers nothing: the template " +
                    (names.empty() ? "asks no prompts." : "asks " + names + "."));
}

}  // namespace

PromptAnswers MatchAnswers(const std::vector<std::string>& given,
                           const std::vector<std::string>& prompts) {
  const bool all_known = std::ranges::none_of(prompts, [](const std::string& prompt) {
    return prompt.find(kCodeStart) != std::string::npos;
  });
  PromptAnswers answers;
  for (const std::string& answer : given) {
    std::size_t length = 0;
    for (const std::string& prompt : prompts) {
      if (answer.starts_with(prompt + "=")) length = std::max(length, prompt.size());
    }
    if (length == 0 && all_known) RefuseAnswer(answer, prompts);
    if (length == 0) length = answer.find('=');
    answers[answer.substr(0, length)] = answer.substr(length + 1);
  }
  return answers;
}

}  // namespace tenora
