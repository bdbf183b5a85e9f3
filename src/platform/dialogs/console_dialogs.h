// Boxes for a program without a display: they are written as text, and questions are answered a
// line at a time.
#pragma once

#include <istream>
#include <ostream>

#include "platform/dialogs/dialogs.h"

namespace tenora {

class ConsoleDialogs : public Dialogs {
 public:
  // Usually standard input and standard error; both must outlive the dialogs.
  ConsoleDialogs(std::istream& input, std::ostream& output) : input_(input), output_(output) {}

  // Never asks: takes the default answer, and says so where there was a choice.
  Answer Show(const MessageBox& box) override;
  // An empty line takes the default answer; an end of input, or a line too long, is Cancel.
  std::optional<std::string> AskText(const std::string& prompt, const std::string& title,
                                     const std::string& default_answer) override;
  // In a run "/all TEXT" answers for all letters from there on, and "/stop" ends it.
  LetterAnswer AskForLetter(const LetterQuestion& question) override;
  // A numbered list, the default item starred. An empty line or an end of input is Cancel, as is
  // the last of a few wrong numbers.
  std::optional<std::size_t> Choose(const std::string& title, const std::vector<std::string>& items,
                                    std::size_t default_item) override;
  // Both ask for a path; one that names no file is asked for again a few times.
  std::optional<std::filesystem::path> ChooseFileToOpen(const std::string& title,
                                                        const std::string& filter) override;
  std::optional<std::filesystem::path> ChooseFileToSave(
      const std::string& title, const std::string& filter,
      const std::filesystem::path& suggestion) override;

 private:
  std::optional<std::string> ReadLine();

  std::istream& input_;
  std::ostream& output_;
};

}  // namespace tenora
