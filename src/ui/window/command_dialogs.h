// The boxes of a print command. The management package starts it on a desktop, with nobody at a
// terminal to answer: the boxes are windows then. They are text for whoever answers on standard
// input, and where no display answers.
#pragma once

#include <memory>

#include "platform/dialogs/dialogs.h"
#include "ui/window/desktop.h"

namespace tenora {

class CommandDialogs : public Dialogs {
 public:
  // The arguments are the process's; all outlive this.
  CommandDialogs(int& argc, char** argv, Dialogs& text) : argc_(argc), argv_(argv), text_(text) {}

  // Which of the two it is, decided once, at the first box or here. Call before anything prints:
  // printing alone makes an application that has no windows, and Qt allows one in a process.
  Dialogs& Decide();

  Answer Show(const MessageBox& box) override { return Decide().Show(box); }
  std::optional<std::string> AskText(const std::string& prompt, const std::string& title,
                                     const std::string& default_answer) override {
    return Decide().AskText(prompt, title, default_answer);
  }
  std::optional<std::size_t> Choose(const std::string& title, const std::vector<std::string>& items,
                                    std::size_t default_item) override {
    return Decide().Choose(title, items, default_item);
  }
  std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>& printers,
                                           const PrintChoice& shown) override {
    return Decide().ChoosePrinter(printers, shown);
  }
  std::optional<std::filesystem::path> ChooseFileToOpen(const std::string& title,
                                                        const std::string& filter) override {
    return Decide().ChooseFileToOpen(title, filter);
  }
  std::optional<std::filesystem::path> ChooseFileToSave(
      const std::string& title, const std::string& filter,
      const std::filesystem::path& suggestion) override {
    return Decide().ChooseFileToSave(title, filter, suggestion);
  }

 private:
  int& argc_;
  char** argv_;
  Dialogs& text_;
  std::unique_ptr<Desktop> desktop_;
  Dialogs* decided_ = nullptr;
};

}  // namespace tenora
