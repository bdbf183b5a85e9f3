// What became of a run of letters, in words for a terminal.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "letters/generation.h"
#include "letters/generation_request.h"
#include "letters/unfinished_runs.h"

namespace tenora {

// "33 letters".
std::string LettersText(std::size_t count);
// "Jane Smith (T00001)"; the number finds somebody without a name in the run log.
std::string RecipientText(const LetterReport& report);

// What was done, what was not, and how to go on.
void WriteSummary(std::ostream& output, const GenerationSummary& summary, Destination destination);

// A run of the list of unfinished ones: its log, what it was asked, what was done and what was not.
void WriteUnfinished(std::ostream& output, const UnfinishedRun& run);

}  // namespace tenora
