// What `tenora generate` shows of a run: progress and problems on standard error, the files it made
// on standard output.
#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>

#include "letters/generation.h"
#include "startup/generate_command.h"
#include "startup/stop_signals.h"

namespace tenora {

// "90 s", "3 min", "2 h".
std::string DurationText(double seconds);
// Of letters a second: "0.3", "5.1", "120".
std::string RateText(double rate);

class GenerateProgress : public GenerationObserver {
 public:
  // On a terminal the count is one line that is overwritten; elsewhere a line is added
  // every few seconds.
  GenerateProgress(const GenerateParts& parts, StopSignals& signals)
      : parts_(parts), output_(parts.output), errors_(parts.errors), signals_(signals) {}

  void Started(std::size_t count, const std::filesystem::path& log) override;
  void Saved(const std::filesystem::path& file) override;
  void LetterFinished(const LetterReport& report) override;
  void WaitingForServer(std::chrono::milliseconds most) override;
  void ServerIsBack() override;
  void JobPrinted(std::size_t letters, const std::filesystem::path& file) override;
  bool StopAsked() override { return signals_.Asked(); }

  // Clears the line with the count, so that a message can be shown.
  void ClearLine();
  // What was done, what was not, and how to go on.
  void ShowSummary(const GenerationSummary& summary, Destination destination);

 private:
  using Clock = std::chrono::steady_clock;

  void ShowCount();
  void Warn(const LetterReport& report);

  const GenerateParts& parts_;
  std::ostream& output_;
  std::ostream& errors_;
  StopSignals& signals_;
  std::size_t count_ = 0, finished_ = 0;
  std::size_t line_length_ = 0;                  // of the count on the terminal
  std::map<std::string, std::size_t> warnings_;  // how often each was met
  Clock::time_point started_ = Clock::now(), shown_ = started_;
};

}  // namespace tenora
