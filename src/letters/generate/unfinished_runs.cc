#include "letters/unfinished_runs.h"

#include <cstddef>
#include <optional>
#include <system_error>
#include <utility>

#include "letters/generate/letter_files.h"
#include "letters/generate/run_log.h"
#include "letters/generate/run_summary.h"
#include "letters/letter_origin.h"
#include "letters/template_library.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

// Adds to the problems of a run that has not ended in order which of the files of all letters that
// were asked for is not done.
void AddUndone(const LoggedRun& run, GenerationSummary& summary) {
  std::string last;
  const auto add = [&](const std::optional<fs::path>& asked, const char* ending, const char* what) {
    if (!asked) return;
    const fs::path file = asked->empty() ? fs::path(summary.log).replace_extension(ending) : *asked;
    last = what + (" is not finished: " + file.string());
    std::error_code unknown;
    if (!fs::exists(file, unknown)) summary.merged.problems.push_back(last);
  };
  add(run.request.post_list, ".csv", "The list of the letters");
  add(run.request.one_pdf, ".pdf", "The PDF of all letters");
  // What is there may be of an earlier attempt, or another file.
  const bool all_there = summary.complete() && summary.merged.problems.empty();
  if (all_there && !last.empty()) summary.merged.problems.push_back(std::move(last));
}

std::optional<UnfinishedRun> Look(const fs::path& log, const fs::path& data_folder) {
  UnfinishedRun run;
  run.log = log;
  try {
    std::optional<LoggedRun> logged = RunLog::Look(log, data_folder);
    if (!logged) return std::nullopt;
    run.summary = SummaryOf(*logged, data_folder);
    run.summary.log = log;
    AddUndone(*logged, run.summary);
    // Those of the first release do not end with a word on it.
    if (run.summary.complete() && run.summary.merged.whole()) return std::nullopt;
    run.started = std::move(logged->started);
    run.request = std::move(logged->request);
  } catch (const RuntimeError& error) {
    run.problem = error.description();
  }
  return run;
}

// Of a letter that this run holds back; empty for any other.
std::string ReasonIn(const LoggedRun& run, const fs::path& data_folder, const fs::path& file) {
  for (const LoggedLetter& letter : run.letters) {
    if (!HeldBack(letter.state) || data_folder / letter.file != file) continue;
    if (!IsAsWritten(letter, file)) continue;
    return letter.state == LetterState::kHeld ? letter.detail : "it was held back by a run";
  }
  return {};
}

// The numbers of the letters that this run holds back in this file, and was to hand over so.
// `origin`: of the letter that left, where that is known. It may have the name of another one.
std::vector<std::size_t> HeldFor(const HandedOver& handed, const LoggedRun& run,
                                 const fs::path& data_folder, const fs::path& file,
                                 const std::optional<LetterOrigin>& origin) {
  std::vector<std::size_t> numbers;
  if (run.request.destination != handed.by) return numbers;
  if (!handed.pdf.empty() && run.request.printer != handed.to) return numbers;
  for (std::size_t i = 0; i < run.letters.size(); ++i) {
    const LoggedLetter& letter = run.letters[i];
    if (!HeldBack(letter.state) || data_folder / letter.file != file) continue;
    const std::string& code = run.request.recipients[i].code;
    const bool tenancy = run.request.template_kind == kTemplates && !code.empty();
    if (origin && tenancy && origin->code != code) continue;
    numbers.push_back(i + 1);
  }
  return numbers;
}

// What the log says; nothing for one that cannot be read, which is told where the unfinished runs
// are listed.
std::optional<LoggedRun> LookIfReadable(const fs::path& log, const fs::path& data_folder) {
  try {
    return RunLog::Look(log, data_folder);
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

}  // namespace

std::vector<UnfinishedRun> FindUnfinishedRuns(const fs::path& data_folder) {
  std::vector<UnfinishedRun> runs;
  for (const fs::path& log : RunLogsIn(data_folder)) {
    if (std::optional<UnfinishedRun> run = Look(log, data_folder)) runs.push_back(std::move(*run));
  }
  return runs;
}

std::string HeldReason(const fs::path& data_folder, const fs::path& file) {
  for (const fs::path& log : RunLogsIn(data_folder)) {
    const std::optional<LoggedRun> run = LookIfReadable(log, data_folder);
    std::string reason = run ? ReasonIn(*run, data_folder, file) : "";
    if (!reason.empty()) return reason;
  }
  return {};
}

void NoteHandedOver(const fs::path& data_folder, const fs::path& file, const HandedOver& handed,
                    const Clock& clock) {
  const std::optional<LetterOrigin> origin = OriginOf(data_folder, file);
  const auto held_in = [&](const LoggedRun& run) {
    return HeldFor(handed, run, data_folder, file, origin);
  };
  for (const fs::path& path : RunLogsIn(data_folder)) {
    const std::optional<LoggedRun> run = LookIfReadable(path, data_folder);
    if (!run || held_in(*run).empty()) continue;
    RunLog log = RunLog::Resume(path, data_folder, clock);
    // Another window may have resumed it in between.
    for (const std::size_t number : held_in(log.run())) {
      const bool printed = handed.by == Destination::kPrinter;
      log.Note(number, printed ? LetterState::kPrinted : LetterState::kMailed,
               handed.pdf.empty() ? handed.to : handed.pdf.string());
    }
    const bool complete = SummaryOf(log.run(), data_folder).complete();
    log.Note(complete ? RunRemark::kComplete : RunRemark::kEnded);
    log.Sync();
  }
}

void ForgetRun(const fs::path& log, const Clock& clock) { RunLog::Forget(log, clock); }

}  // namespace tenora
