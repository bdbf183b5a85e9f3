#include "platform/dialogs/silent_dialogs.h"

#include <utility>

#include "platform/runtime/text.h"

namespace tenora {

Answer SilentDialogs::Show(const MessageBox& box) {
  messages_.push_back(box.text);
  return box.default_answer;
}

std::optional<std::string> SilentDialogs::AskText(const std::string&, const std::string&,
                                                  const std::string&) {
  return std::nullopt;
}

std::optional<std::size_t> SilentDialogs::Choose(const std::string&,
                                                 const std::vector<std::string>&, std::size_t) {
  return std::nullopt;
}

std::optional<std::filesystem::path> SilentDialogs::ChooseFileToOpen(const std::string&,
                                                                     const std::string&) {
  return std::nullopt;
}

std::optional<std::filesystem::path> SilentDialogs::ChooseFileToSave(const std::string&,
                                                                     const std::string&,
                                                                     const std::filesystem::path&) {
  return std::nullopt;
}

std::vector<std::string> SilentDialogs::TakeMessages() { return std::exchange(messages_, {}); }

std::string SilentDialogs::TakeFirstInOneLine() {
  const std::vector<std::string> messages = TakeMessages();
  std::string line;
  if (messages.empty()) return line;
  for (const std::string& part : Split(messages.front(), "\r\n")) {
    if (!part.empty()) line.append(line.empty() ? "" : " ").append(part);
  }
  return line;
}

}  // namespace tenora
