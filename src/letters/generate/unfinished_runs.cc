#include "letters/unfinished_runs.h"

#include <algorithm>
#include <optional>
#include <system_error>
#include <utility>

#include "letters/generate/letter_files.h"
#include "letters/generate/run_log.h"
#include "letters/generate/run_summary.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

bool MayBeRunLog(const fs::directory_entry& entry) {
  std::error_code unknown;
  return entry.path().extension() == ".log" &&
         entry.path().filename().string().starts_with(kRunLogPrefix) &&
         fs::is_regular_file(entry.symlink_status(unknown));
}

std::optional<UnfinishedRun> Look(const fs::path& log, const fs::path& data_folder) {
  UnfinishedRun run;
  run.log = log;
  try {
    std::optional<LoggedRun> logged = RunLog::Look(log, data_folder);
    if (!logged) return std::nullopt;
    run.summary = SummaryOf(*logged, data_folder);
    run.summary.log = log;
    // Those of the first release do not end with a word on it.
    if (run.summary.complete()) return std::nullopt;
    run.started = std::move(logged->started);
    run.request = std::move(logged->request);
  } catch (const RuntimeError& error) {
    run.problem = error.description();
  }
  return run;
}

std::vector<fs::path> RunLogsIn(const fs::path& data_folder) {
  std::vector<fs::path> logs;
  std::error_code unlisted;
  fs::directory_iterator entry(data_folder, unlisted);
  for (; !unlisted && entry != fs::directory_iterator(); entry.increment(unlisted)) {
    if (MayBeRunLog(*entry)) logs.push_back(entry->path());
  }
  std::ranges::sort(logs);
  return logs;
}

// Of a letter that this run holds back; empty for any other.
std::string ReasonIn(const LoggedRun& run, const fs::path& data_folder, const fs::path& file) {
  for (const LoggedLetter& letter : run.letters) {
    if (!HeldBack(letter.state) || data_folder / letter.file != file) continue;
    if (!IsAsHeld(letter, file)) continue;
    return letter.state == LetterState::kHeld ? letter.detail : "it was held back by a run";
  }
  return {};
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
    try {
      const std::optional<LoggedRun> run = RunLog::Look(log, data_folder);
      std::string reason = run ? ReasonIn(*run, data_folder, file) : "";
      if (!reason.empty()) return reason;
    } catch (const RuntimeError&) {
      // A log that cannot be read is told where the unfinished runs are listed.
    }
  }
  return {};
}

void ForgetRun(const fs::path& log, const Clock& clock) { RunLog::Forget(log, clock); }

}  // namespace tenora
