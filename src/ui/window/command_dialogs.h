// The message boxes of a print command. When the management package starts it on a desktop without
// a terminal, the boxes are windows. They are text if standard input can be answered, and where no
// display is available.
#pragma once

#include <memory>

#include "platform/dialogs/dialogs.h"
#include "ui/window/desktop.h"

namespace tenora {

class CommandDialogs : public Dialogs {
 public:
  // The arguments of the process; all must outlive this object.
  CommandDialogs(int& argc, char** argv, Dialogs& text) : argc_(argc), argv_(argv), text_(text) {}

  // Chooses windows or text, once, at the first box or here. Call before printing: printing creates
  // a QGuiApplication without windows, and Qt allows only one application per process.
  Dialogs& Decide();

  Answer Show(const MessageBox& box) override { return Decide().Show(box); }
  std::optional<std::string> AskText(const std::string& prompt, const std::string& title,
                                     const std::string& default_answer) override {
    return Decide().AskText(prompt, title, default_answer);
  }
  LetterAnswer AskForLetter(const LetterQuestion& question) override {
    return Decide().AskForLetter(question);
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
