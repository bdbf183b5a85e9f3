// What `tenora generate` shows of a run: progress and problems on standard error, the files it made
// on standard output.
#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>

#include "letters/generation.h"
#include "platform/dialogs/dialogs.h"
#include "startup/generate_parts.h"
#include "startup/stop_signals.h"

namespace tenora {

class GenerateProgress : public GenerationObserver {
 public:
  // On a terminal the count stands in one line that is written over; elsewhere a line is added
  // every few seconds.
  GenerateProgress(const GenerateParts& parts, StopSignals& signals)
      : parts_(parts), output_(parts.output), errors_(parts.errors), signals_(signals) {}

  void Started(std::size_t count, const std::filesystem::path& log) override;
  void Saved(const std::filesystem::path& file) override;
  void LetterFinished(const LetterReport& report) override;
  void JobPrinted(std::size_t letters, const std::filesystem::path& file) override;
  bool StopAsked() override { return signals_.Asked(); }

  // Takes the line with the count away, so that a message can stand there.
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
  std::size_t line_length_ = 0;                  // of the count that stands on the terminal
  std::map<std::string, std::size_t> warnings_;  // how often each was met
  Clock::time_point started_ = Clock::now(), shown_ = started_;
};

// The dialogs of a run: messages go past the count, and a question gives way to Ctrl-C.
class GenerateDialogs : public Dialogs {
 public:
  GenerateDialogs(Dialogs& dialogs, StopSignals& signals) : dialogs_(dialogs), signals_(signals) {}

  // The progress whose line gives way; none before the run.
  void Before(GenerateProgress* progress) { progress_ = progress; }

  Answer Show(const MessageBox& box) override;
  std::optional<std::string> AskText(const std::string& prompt, const std::string& title,
                                     const std::string& default_answer) override;
  std::optional<std::size_t> Choose(const std::string& title, const std::vector<std::string>& items,
                                    std::size_t default_item) override;
  std::optional<std::filesystem::path> ChooseFileToOpen(const std::string& title,
                                                        const std::string& filter) override;
  std::optional<std::filesystem::path> ChooseFileToSave(
      const std::string& title, const std::string& filter,
      const std::filesystem::path& suggestion) override;

 private:
  void MakeRoom() const;

  Dialogs& dialogs_;
  StopSignals& signals_;
  GenerateProgress* progress_ = nullptr;
};

}  // namespace tenora
