// Message boxes, input boxes and choosers as windows. A QApplication must run; use on its thread.
#pragma once

#include "platform/dialogs/dialogs.h"

namespace tenora {

class WindowDialogs : public Dialogs {
 public:
  // Each box stands over the active window.
  // Escape and the close button give Cancel, and No where there is no Cancel.
  Answer Show(const MessageBox& box) override;
  std::optional<std::string> AskText(const std::string& prompt, const std::string& title,
                                     const std::string& default_answer) override;
  LetterAnswer AskForLetter(const LetterQuestion& question) override;
  std::optional<std::size_t> Choose(const std::string& title, const std::vector<std::string>& items,
                                    std::size_t default_item) override;
  std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>& printers,
                                           const PrintChoice& shown) override;
  // Opens in the folder last chosen from. Besides the filter's kinds, all files may be shown.
  std::optional<std::filesystem::path> ChooseFileToOpen(const std::string& title,
                                                        const std::string& filter) override;
  std::optional<std::filesystem::path> ChooseFileToSave(
      const std::string& title, const std::string& filter,
      const std::filesystem::path& suggestion) override;

 private:
  std::filesystem::path last_folder_;
};

}  // namespace tenora
