// Test double for the user: records every box shown and answers from a script.
#pragma once

#include <deque>
#include <stdexcept>
#include <variant>

#include "platform/dialogs/dialogs.h"

namespace tenora {

// The script has no answer for a question, or one of another kind.
class UnexpectedQuestion : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

struct ShownBox {
  enum class Kind { kMessage, kText, kChoice, kOpenFile, kSaveFile };
  Kind kind = Kind::kMessage;
  std::string text = {};  // the message or the prompt; empty for a chooser
  std::string title = {};
  Buttons buttons = Buttons::kOk;
  Icon icon = Icon::kNone;
  Answer default_choice = Answer::kOk;  // of a message
  std::string other_button = {};        // of a message
  std::string default_answer = {};      // of an input box
  std::vector<std::string> items = {};  // of a chooser
  std::size_t default_item = 0;
  std::string progress = {};  // of a question that a letter asks
  std::string filter = {};    // of a file chooser; its suggestion is the default answer
};

class ScriptedDialogs : public Dialogs {
 public:
  // Each appends one answer; questions take them in this order. An OK-only box is no question,
  // unless its other button is to be pressed.
  ScriptedDialogs& WillPress(Answer answer);
  // Also the path that a file chooser gives.
  ScriptedDialogs& WillType(std::string text);
  ScriptedDialogs& WillChoose(std::size_t position);
  ScriptedDialogs& WillCancel();
  // To a letter's question; those that WillType and WillCancel answer serve too.
  ScriptedDialogs& WillAnswer(LetterAnswer answer);

  // All raise UnexpectedQuestion where the script does not fit. The caller may trap that error like
  // any other, so it is recorded in `unexpected` as well.
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

  const std::vector<ShownBox>& shown() const { return shown_; }
  // The texts of all boxes, in order.
  std::vector<std::string> Texts() const;
  const std::vector<std::string>& unexpected() const { return unexpected_; }
  std::size_t answers_left() const { return answers_.size(); }
  void ForgetShown() { shown_.clear(); }

 private:
  struct Cancel {};
  struct Position {
    std::size_t value;
  };
  using Scripted = std::variant<Cancel, Answer, std::string, Position, LetterAnswer>;

  Scripted NextAnswer(const std::string& question);
  std::optional<std::string> NextText(const std::string& question);
  [[noreturn]] void Refuse(const std::string& question, const char* why);

  std::deque<Scripted> answers_;
  std::vector<ShownBox> shown_;
  std::vector<std::string> unexpected_;
};

}  // namespace tenora
