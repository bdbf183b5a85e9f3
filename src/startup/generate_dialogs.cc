#include "startup/generate_dialogs.h"

namespace tenora {

void GenerateDialogs::GiveWay() const {
  if (progress_ != nullptr) progress_->ClearLine();
}

Answer GenerateDialogs::Show(const MessageBox& box) {
  GiveWay();
  return dialogs_.Show(box);
}

std::optional<std::string> GenerateDialogs::AskText(const std::string& prompt,
                                                    const std::string& title,
                                                    const std::string& default_answer) {
  if (signals_.Asked()) return std::nullopt;
  GiveWay();
  const StopSignals::InterruptsReads interrupts(signals_);
  return dialogs_.AskText(prompt, title, default_answer);
}

LetterAnswer GenerateDialogs::AskForLetter(const LetterQuestion& question) {
  constexpr LetterAnswer::Way kStop = LetterAnswer::Way::kStopRun;
  if (signals_.Asked()) return {.way = kStop};
  GiveWay();
  const StopSignals::InterruptsReads interrupts(signals_);
  LetterAnswer answer = dialogs_.AskForLetter(question);
  if (answer.way == LetterAnswer::Way::kNone && signals_.Asked()) answer.way = kStop;
  return answer;
}

std::optional<std::size_t> GenerateDialogs::Choose(const std::string& title,
                                                   const std::vector<std::string>& items,
                                                   std::size_t default_item) {
  GiveWay();
  const StopSignals::InterruptsReads interrupts(signals_);
  return dialogs_.Choose(title, items, default_item);
}

std::optional<std::filesystem::path> GenerateDialogs::ChooseFileToOpen(const std::string& title,
                                                                       const std::string& filter) {
  GiveWay();
  const StopSignals::InterruptsReads interrupts(signals_);
  return dialogs_.ChooseFileToOpen(title, filter);
}

std::optional<std::filesystem::path> GenerateDialogs::ChooseFileToSave(
    const std::string& title, const std::string& filter, const std::filesystem::path& suggestion) {
  GiveWay();
  const StopSignals::InterruptsReads interrupts(signals_);
  return dialogs_.ChooseFileToSave(title, filter, suggestion);
}

}  // namespace tenora
