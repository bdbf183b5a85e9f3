// One PDF of all letters of a run.
#pragma once

#include <filesystem>
#include <functional>

#include "letters/generate/run_log_format.h"
#include "letters/generation.h"
#include "output/letter_printing.h"

namespace tenora {

// Whether all was done that makes a letter ready for the post: it is saved, and nothing is wrong
// with it.
bool ReadyForPost(LetterState state);

// Makes the file from the saved letters, in the run's order, whatever attempt saved them, and fills
// in what `merged` says of it. Held and failed letters, and those whose file is gone or damaged,
// are left out. No file is written where that leaves none. Raises 482 (Printer error) for a letter
// that cannot be laid out, 32755 when `stop_asked`, polled between pages, returns true, and the
// errors of FileError; the target is then as before.
void WriteMergedPdf(const LoggedRun& run, const std::filesystem::path& data_folder,
                    const std::filesystem::path& target, const PageMargins& margins,
                    const std::function<bool()>& stop_asked, MergedFiles& merged);

}  // namespace tenora
