// Boxes that nobody sees, for work beside the windows: what they say is kept, each is left by its
// default answer, and questions stay unanswered.
#pragma once

#include <string>
#include <vector>

#include "platform/dialogs/dialogs.h"

namespace tenora {

class SilentDialogs : public Dialogs {
 public:
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

  // What would have been shown since this was asked last.
  std::vector<std::string> TakeMessages();
  // The first of it in one line; empty where there was nothing.
  std::string TakeFirstInOneLine();

 private:
  std::vector<std::string> messages_;
};

}  // namespace tenora
