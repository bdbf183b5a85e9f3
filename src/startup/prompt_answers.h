// Answers to prompts as they are given on the command line.
#pragma once

#include <string>
#include <vector>

#include "merge/prompts.h"

namespace tenora {

// Parts each "prompt=text" behind the prompt that the template asks; a prompt may hold "=" itself.
// While the template has a prompt with a code in it, nobody knows yet what will be asked: what fits
// no prompt is then parted at its first "=". Raises WrongChoice, naming the template's prompts, for
// an answer that none of them would take.
PromptAnswers MatchAnswers(const std::vector<std::string>& given,
                           const std::vector<std::string>& prompts);

}  // namespace tenora
