#include "platform/dialogs/scripted_dialogs.h"

#include <utility>

namespace tenora {

ScriptedDialogs& ScriptedDialogs::WillPress(Answer answer) {
  answers_.emplace_back(answer);
  return *this;
}

ScriptedDialogs& ScriptedDialogs::WillType(std::string text) {
  answers_.emplace_back(std::move(text));
  return *this;
}

ScriptedDialogs& ScriptedDialogs::WillChoose(std::size_t position) {
  answers_.emplace_back(Position{position});
  return *this;
}

ScriptedDialogs& ScriptedDialogs::WillCancel() {
  answers_.emplace_back(Cancel{});
  return *this;
}

ScriptedDialogs& ScriptedDialogs::WillAnswer(LetterAnswer answer) {
  answers_.emplace_back(std::move(answer));
  return *this;
}

Answer ScriptedDialogs::Show(const MessageBox& box) {
  shown_.push_back({.kind = ShownBox::Kind::kMessage,
                    .text = box.text,
                    .title = box.title,
                    .buttons = box.buttons,
                    .icon = box.icon,
                    .default_choice = box.default_answer,
                    .other_button = box.other_button});
  if (box.buttons == Buttons::kOk) {
    const Answer* next = answers_.empty() ? nullptr : std::get_if<Answer>(&answers_.front());
    if (box.other_button.empty() || next == nullptr || *next != Answer::kOther) return Answer::kOk;
  }
  const Scripted answer = NextAnswer(box.text);
  if (std::holds_alternative<Cancel>(answer)) return Answer::kCancel;
  if (const Answer* pressed = std::get_if<Answer>(&answer)) return *pressed;
  Refuse(box.text, "the next scripted answer is no button");
}

std::optional<std::string> ScriptedDialogs::AskText(const std::string& prompt,
                                                    const std::string& title,
                                                    const std::string& default_answer) {
  shown_.push_back({.kind = ShownBox::Kind::kText,
                    .text = prompt,
                    .title = title,
                    .default_answer = default_answer});
  return NextText(prompt);
}

LetterAnswer ScriptedDialogs::AskForLetter(const LetterQuestion& question) {
  const LetterAnswer* scripted =
      answers_.empty() ? nullptr : std::get_if<LetterAnswer>(&answers_.front());
  LetterAnswer answer;
  if (scripted != nullptr) {
    shown_.push_back(
        {.kind = ShownBox::Kind::kText, .text = question.prompt, .title = kApplicationTitle});
    answer = *scripted;
    answers_.pop_front();
  } else {
    answer = Dialogs::AskForLetter(question);
  }
  shown_.back().progress = question.progress;
  return answer;
}

std::optional<std::size_t> ScriptedDialogs::Choose(const std::string& title,
                                                   const std::vector<std::string>& items,
                                                   std::size_t default_item) {
  shown_.push_back({.kind = ShownBox::Kind::kChoice,
                    .title = title,
                    .items = items,
                    .default_item = default_item});
  const Scripted answer = NextAnswer(title);
  if (std::holds_alternative<Cancel>(answer)) return std::nullopt;
  const Position* position = std::get_if<Position>(&answer);
  if (position == nullptr) Refuse(title, "the next scripted answer is no position");
  if (position->value >= items.size()) Refuse(title, "the scripted position is not in the list");
  return position->value;
}

std::optional<std::filesystem::path> ScriptedDialogs::ChooseFileToOpen(const std::string& title,
                                                                       const std::string& filter) {
  shown_.push_back({.kind = ShownBox::Kind::kOpenFile, .title = title, .filter = filter});
  return NextText(title);
}

std::optional<std::filesystem::path> ScriptedDialogs::ChooseFileToSave(
    const std::string& title, const std::string& filter, const std::filesystem::path& suggestion) {
  shown_.push_back({.kind = ShownBox::Kind::kSaveFile,
                    .title = title,
                    .default_answer = suggestion.string(),
                    .filter = filter});
  return NextText(title);
}

std::vector<std::string> ScriptedDialogs::Texts() const {
  std::vector<std::string> texts;
  for (const ShownBox& box : shown_) texts.push_back(box.text);
  return texts;
}

ScriptedDialogs::Scripted ScriptedDialogs::NextAnswer(const std::string& question) {
  if (answers_.empty()) Refuse(question, "the script has no more answers");
  Scripted answer = std::move(answers_.front());
  answers_.pop_front();
  return answer;
}

std::optional<std::string> ScriptedDialogs::NextText(const std::string& question) {
  const Scripted answer = NextAnswer(question);
  if (std::holds_alternative<Cancel>(answer)) return std::nullopt;
  if (const std::string* text = std::get_if<std::string>(&answer)) return *text;
  Refuse(question, "the next scripted answer is no text");
}

void ScriptedDialogs::Refuse(const std::string& question, const char* why) {
  unexpected_.push_back("Unexpected question \"" + question + "\": " + why);
  throw UnexpectedQuestion(unexpected_.back());
}

}  // namespace tenora
