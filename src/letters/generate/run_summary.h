// What a run log says of its letters, as the run's callers see it.
#pragma once

#include <cstddef>
#include <filesystem>

#include "letters/generate/run_log_format.h"
#include "letters/generation.h"

namespace tenora {

// The letter with this number (from 1) as it is before anything more is done to it.
LetterReport ReportOf(const LoggedRun& run, std::size_t number,
                      const std::filesystem::path& data_folder);

// Everything but how the run ended: `done_before`, `stopped`, `composed` and `log` are unset.
GenerationSummary SummaryOf(const LoggedRun& run, const std::filesystem::path& data_folder);

}  // namespace tenora
