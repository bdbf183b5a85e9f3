// Codes of the form "<<?message?>>": text that the user types in when the letter is generated.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "merge/merge_target.h"

namespace tenora {

// Answers given beforehand, by the prompt's message.
using PromptAnswers = std::map<std::string, std::string, std::less<>>;

// The messages that a merge of this text would ask, each once, as they are shown. One that holds a
// code is given with the code, which the merge fills before it asks.
std::vector<std::string> PromptMessages(const RichTextBox& editor);

struct PromptOutcome {
  std::size_t cancelled = 0;      // prompts left without an answer
  PromptAnswers for_all;          // answers that hold for every later letter too
  bool stopped = false;           // the run is to end: the letter is not finished
  std::vector<std::string> left;  // messages whose codes stay, to be asked another time
};

// Asks each prompt message of the letter once and puts the answer in all its places; cancelling
// removes the prompt. A message that has its answer in `known` is not asked. A message of fewer
// than three characters, or one that is not closed, ends the asking. An answer that holds a prompt
// is asked in its turn, of the user where it repeats one that `known` has answered. `progress` is
// shown with the questions; without it nobody can stop, or answer for other letters.
PromptOutcome InsertPrompts(const MergeTarget& target, const PromptAnswers& known = {},
                            const std::string& progress = {});

}  // namespace tenora
