// The runs of letters in a data folder that have not done all they were asked, for a person to
// resume or to forget. docs/generating.md describes their logs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "letters/generation.h"
#include "letters/generation_request.h"
#include "platform/runtime/clock.h"

namespace tenora {

struct UnfinishedRun {
  std::filesystem::path log;
  std::string problem;        // why the log cannot be read; all below is then empty
  std::string started;        // "2026-11-21 09:30:00"
  GenerationRequest request;  // with every recipient
  // As the run left it; its `merged` has only the problems, of the files that are not finished.
  GenerationSummary summary;
};

// Those of this data folder, oldest first, but for runs in progress and forgotten ones. A log that
// cannot be read is among them with its problem. Reads only the ends of the logs of complete runs.
// Raises nothing: a folder that cannot be listed has no runs.
std::vector<UnfinishedRun> FindUnfinishedRuns(const std::filesystem::path& data_folder);

// Why an unfinished run holds back the letter of this file, as long as that is as the run wrote it;
// empty where none does. Raises nothing.
std::string HeldReason(const std::filesystem::path& data_folder, const std::filesystem::path& file);

// How a person has handed over a letter that was open.
struct HandedOver {
  Destination by = Destination::kPrinter;  // or kEmail
  std::string to;                          // the printer, or the address
  std::filesystem::path pdf = {};          // the PDF printer's file
};

// Notes it in the log of each unfinished run that holds back the letter of this file, changed since
// or not, and was to hand it over in this way; a PDF is no letter of a run on paper. Raises 70
// (Permission denied) for a run that is being resumed, and the errors of FileError.
void NoteHandedOver(const std::filesystem::path& data_folder, const std::filesystem::path& file,
                    const HandedOver& handed, const Clock& clock);

// Notes in the log that a person has settled the run, which is then no longer found. No file is
// removed, and the run can still be resumed by name. Raises 70 (Permission denied) for a run in
// progress, 321 (Invalid file format) for another file, and the errors of FileError.
void ForgetRun(const std::filesystem::path& log, const Clock& clock);

}  // namespace tenora
