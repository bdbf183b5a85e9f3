// The dialogs of `tenora generate`: messages go past the count of letters, and a question gives way
// to Ctrl-C.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/dialogs/dialogs.h"
#include "startup/generate_progress.h"
#include "startup/stop_signals.h"

namespace tenora {

class GenerateDialogs : public Dialogs {
 public:
  GenerateDialogs(Dialogs& dialogs, StopSignals& signals) : dialogs_(dialogs), signals_(signals) {}

  // The progress whose line gives way; none before the run.
  void Before(GenerateProgress* progress) { progress_ = progress; }

  Answer Show(const MessageBox& box) override;
  std::optional<std::string> AskText(const std::string& prompt, const std::string& title,
                                     const std::string& default_answer) override;
  LetterAnswer AskForLetter(const LetterQuestion& question) override;
  std::optional<std::size_t> Choose(const std::string& title, const std::vector<std::string>& items,
                                    std::size_t default_item) override;
  std::optional<std::filesystem::path> ChooseFileToOpen(const std::string& title,
                                                        const std::string& filter) override;
  std::optional<std::filesystem::path> ChooseFileToSave(
      const std::string& title, const std::string& filter,
      const std::filesystem::path& suggestion) override;

 private:
  void GiveWay() const;

  Dialogs& dialogs_;
  StopSignals& signals_;
  GenerateProgress* progress_ = nullptr;
};

}  // namespace tenora
