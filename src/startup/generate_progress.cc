#include "startup/generate_progress.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "platform/dialogs/terminal_text.h"
#include "startup/run_report.h"

namespace tenora {
namespace {

constexpr std::chrono::milliseconds kBetweenUpdates{200};
constexpr std::chrono::seconds kBetweenLines{3};
// A warning that many letters share is shown this often, then counted.
constexpr std::size_t kMostOfAKind = 3;

}  // namespace

std::string DurationText(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  if (whole < 120) return std::to_string(whole) + " s";
  if (whole < 7200) return std::to_string((whole + 59) / 60) + " min";
  return std::to_string((whole + 3599) / 3600) + " h";
}

std::string RateText(double rate) {
  const auto tenths = static_cast<long long>(std::llround(rate * 10));
  if (tenths >= 100) return std::to_string((tenths + 5) / 10);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

void GenerateProgress::Started(std::size_t count, const std::filesystem::path& log) {
  count_ = count;
  started_ = shown_ = Clock::now();
  errors_ << LettersText(count) << " to make. Run log: " << TerminalLine(log.string()) << std::endl;
}

void GenerateProgress::Saved(const std::filesystem::path& file) {
  // Results and the count may share a terminal.
  if (parts_.output_is_terminal) ClearLine();
  output_ << file.string() << '\n';
  if (parts_.output_is_terminal) output_.flush();
}

void GenerateProgress::LetterFinished(const LetterReport& report) {
  ++finished_;
  if (!report.warnings.empty()) Warn(report);
  // Held letters and those without an address are listed at the end.
  if (report.result != LetterReport::Result::kDone &&
      report.result != LetterReport::Result::kHeld &&
      report.result != LetterReport::Result::kNoAddress) {
    ClearLine();
    errors_ << RecipientText(report) << ": " << TerminalLine(report.problem) << std::endl;
  }
  const Clock::time_point now = Clock::now();
  const bool due =
      parts_.errors_is_terminal ? now - shown_ >= kBetweenUpdates : now - shown_ >= kBetweenLines;
  if (!due) return;
  shown_ = now;
  ShowCount();
}

void GenerateProgress::Warn(const LetterReport& report) {
  for (const std::string& warning : report.warnings) {
    const std::size_t met = ++warnings_[warning];
    if (met > kMostOfAKind) continue;
    ClearLine();
    errors_ << RecipientText(report) << ": " << TerminalLine(warning) << std::endl;
  }
}

void GenerateProgress::WaitingForServer(std::chrono::milliseconds most) {
  ClearLine();
  errors_ << "The database server cannot be reached; waiting for it, "
          << DurationText(std::chrono::duration<double>(most).count()) << " at most." << std::endl;
}

void GenerateProgress::ServerIsBack() { errors_ << "The database server is back." << std::endl; }

void GenerateProgress::JobPrinted(std::size_t letters, const std::filesystem::path& file) {
  ClearLine();
  if (!file.empty()) output_ << file.string() << '\n';
  errors_ << LettersText(letters) << " printed in one job." << std::endl;
}

void GenerateProgress::ShowCount() {
  const std::size_t finished = std::min(finished_, count_);
  const double seconds = std::chrono::duration<double>(Clock::now() - started_).count();
  const double rate = seconds > 0 ? static_cast<double>(finished) / seconds : 0;
  std::string line =
      std::to_string(finished) + " of " + LettersText(count_) + ", " + RateText(rate) + " a second";
  if (rate > 0)
    line += ", " + DurationText(static_cast<double>(count_ - finished) / rate) + " left";
  if (!parts_.errors_is_terminal) {
    errors_ << line << std::endl;
    return;
  }
  const std::size_t length = line.size();
  if (line_length_ > length) line.append(line_length_ - length, ' ');
  line_length_ = length;
  errors_ << '\r' << line << std::flush;
}

void GenerateProgress::ClearLine() {
  if (line_length_ == 0) return;
  errors_ << '\r' << std::string(line_length_, ' ') << '\r' << std::flush;
  line_length_ = 0;
}

void GenerateProgress::ShowSummary(const GenerationSummary& summary, Destination destination) {
  ClearLine();
  for (const auto& [warning, met] : warnings_) {
    if (met <= kMostOfAKind) continue;
    errors_ << "In " << LettersText(met - kMostOfAKind) << " more: " << TerminalLine(warning)
            << "\n";
  }
  WriteSummary(errors_, summary, destination);
}

}  // namespace tenora
