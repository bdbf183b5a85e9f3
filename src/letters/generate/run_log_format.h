// The text of a run log: what a run was asked, and what became of each letter. docs/generating.md
// describes the format.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "letters/generate/logged_run.h"
#include "letters/generate/run_ledger.h"
#include "platform/runtime/date.h"

namespace tenora {

// The head of a log, with every recipient, up to the line from which letters are made.
std::string RunLogHead(const LoggedRun& run, Date now);
// One line on the letter with this number (from 1).
std::string RunLogLine(LetterState state, std::size_t number, const std::string& name,
                       const LoggedLetter& letter);
// An answer that somebody gave for all later letters.
std::string RunLogAnswer(const std::string& prompt, const std::string& answer);

// A line that is not on one letter: readers skip it, but for the last of a log.
std::string RunLogRemark(RunRemark remark, Date now);
// Whether the last line, in this end of a log, says that nothing is left to do.
bool EndsSettled(std::string_view end);

// Whether a file that begins so is a run log, if only one that a kill left empty or cut short.
bool BeginsRunLog(std::string_view text);

// The length of the log without a last line that was cut short.
std::size_t WholeLines(std::string_view text);
// Reads whole lines, or what there is of the first. Raises 321 (Invalid file format) with the
// line's number for text that is not a run log, has another version, is damaged, or names files
// outside its recipients' folders.
LoggedRun ReadRunLog(std::string_view text);
// Whether a log that begins so, with at least the lines before its recipients, is of this template.
bool IsRunOf(std::string_view beginning, std::string_view template_kind,
             std::string_view template_name);

}  // namespace tenora
