// Codes of the form "<<?message?>>": text that the user types in when the letter is generated.
#pragma once

#include "merge/merge_target.h"

namespace tenora {

// Asks each prompt message of the letter once and puts the answer in all its places; cancelling
// removes the prompt. A message of fewer than three characters, or one that is not closed, ends the
// asking. An answer that holds a prompt is asked in its turn.
void InsertPrompts(const MergeTarget& target);

}  // namespace tenora
