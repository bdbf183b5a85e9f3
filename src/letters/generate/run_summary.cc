#include "letters/generate/run_summary.h"

#include <string>
#include <utility>
#include <vector>

namespace tenora {

LetterReport ReportOf(const LoggedRun& run, std::size_t number,
                      const std::filesystem::path& data_folder) {
  LetterReport report;
  report.number = number;
  report.recipient = run.request.recipients[number - 1];
  const std::string& file = run.letters[number - 1].file;
  if (!file.empty()) report.file = data_folder / file;
  return report;
}

GenerationSummary SummaryOf(const LoggedRun& run, const std::filesystem::path& data_folder) {
  using Result = LetterReport::Result;
  GenerationSummary summary;
  summary.asked = run.letters.size();
  const auto add = [&](std::size_t number, Result result, std::vector<LetterReport>& list) {
    LetterReport report = ReportOf(run, number, data_folder);
    report.result = result;
    report.problem = run.letters[number - 1].detail;
    list.push_back(std::move(report));
  };
  for (std::size_t number = 1; number <= run.letters.size(); ++number) {
    const LetterState state = run.letters[number - 1].state;
    if (IsDone(state, run.request.destination)) {
      ++summary.done;
    } else if (InDoubt(state)) {
      add(number, Result::kInDoubt, summary.in_doubt);
    } else if (HeldBack(state)) {
      add(number, Result::kHeld, summary.held);
    } else if (state == LetterState::kNoAddress) {
      add(number, Result::kNoAddress, summary.no_address);
    } else if (state == LetterState::kFailed) {
      add(number, Result::kFailed, summary.failed);
    }
  }
  return summary;
}

}  // namespace tenora
