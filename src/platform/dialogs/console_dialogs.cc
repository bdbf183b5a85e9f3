#include "platform/dialogs/console_dialogs.h"

#include <charconv>
#include <string_view>
#include <system_error>

#include "platform/dialogs/file_filter.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::size_t kLongestLine = 64 * 1024;
constexpr int kChooseAttempts = 3;
// The words at a letter's question; docs/generating.md names them.
constexpr const char* kForAll = "/all";
constexpr const char* kStop = "/stop";

const char* AnswerName(Answer answer) {
  switch (answer) {
    case Answer::kOk:
      return "OK";
    case Answer::kCancel:
      return "Cancel";
    case Answer::kYes:
      return "Yes";
    case Answer::kNo:
      return "No";
    case Answer::kOther:
      break;
  }
  return "";
}

// "Title: text" in one line, or the title and then the lines indented under it.
std::string Layout(std::string_view title, std::string_view text) {
  std::string safe = TerminalText(text);
  while (safe.ends_with('\n')) safe.pop_back();
  std::string result = TerminalLine(title) + ":";
  const bool one_line = safe.find('\n') == std::string::npos;
  if (one_line) return safe.empty() ? result : result + " " + safe;
  for (const std::string& line : Split(safe, "\n")) {
    result += line.empty() ? "\n" : "\n  " + line;
  }
  return result;
}

std::optional<std::size_t> ReadPosition(std::string_view line, std::size_t count) {
  line = TrimBlanks(line);
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
  if (error != std::errc() || end != line.data() + line.size()) return std::nullopt;
  if (number < 1 || number > count) return std::nullopt;
  return number - 1;
}

// Invalid UTF-8 in the input becomes U+FFFD.
std::string ValidText(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) AppendUtf8(text, TakeCodePoint(bytes));
  return text;
}

}  // namespace

Answer ConsoleDialogs::Show(const MessageBox& box) {
  output_ << Layout(box.title, box.text);
  if (box.buttons != Buttons::kOk) output_ << " [" << AnswerName(box.default_answer) << "]";
  output_ << std::endl;
  return box.default_answer;
}

std::optional<std::string> ConsoleDialogs::AskText(const std::string& prompt,
                                                   const std::string& title,
                                                   const std::string& default_answer) {
  output_ << Layout(title, prompt);
  if (!default_answer.empty()) output_ << " [" << TerminalLine(default_answer) << "]";
  output_ << " " << std::flush;
  const std::optional<std::string> line = ReadLine();
  if (!line) return std::nullopt;
  return line->empty() ? default_answer : ValidText(*line);
}

LetterAnswer ConsoleDialogs::AskForLetter(const LetterQuestion& question) {
  if (question.progress.empty()) return Dialogs::AskForLetter(question);
  const std::optional<std::string> line =
      AskText(question.prompt + "\n(" + question.progress + "; \"" + kForAll +
                  " TEXT\" answers for all letters from here on, \"" + kStop +
                  "\" ends the run before this one)",
              kApplicationTitle, "");
  if (!line) return {};
  const std::string_view text = TrimBlanks(*line);
  if (text == kStop) return {.way = LetterAnswer::Way::kStopRun};
  LetterAnswer answer{.way = LetterAnswer::Way::kText, .text = *line};
  const std::string_view all = kForAll;
  if (text == all || text.starts_with(std::string(all) + " ")) {
    answer.text = TrimBlanks(text.substr(all.size()));
    answer.for_all = true;
  }
  return answer;
}

std::optional<std::size_t> ConsoleDialogs::Choose(const std::string& title,
                                                  const std::vector<std::string>& items,
                                                  std::size_t default_item) {
  output_ << TerminalLine(title) << ":\n";
  for (std::size_t i = 0; i < items.size(); ++i) {
    output_ << (i == default_item ? " * " : "   ") << i + 1 << "  " << TerminalLine(items[i])
            << "\n";
  }
  if (items.empty()) return std::nullopt;
  for (int attempt = 0; attempt < kChooseAttempts; ++attempt) {
    output_ << "Number (empty to cancel): " << std::flush;
    const std::optional<std::string> line = ReadLine();
    if (!line || TrimBlanks(*line).empty()) return std::nullopt;
    const std::optional<std::size_t> position = ReadPosition(*line, items.size());
    if (position) return position;
    output_ << "Please answer with a number from 1 to " << items.size() << "." << std::endl;
  }
  return std::nullopt;
}

std::optional<std::filesystem::path> ConsoleDialogs::ChooseFileToOpen(const std::string& title,
                                                                      const std::string& filter) {
  std::string prompt = "Path of the file";
  const std::vector<FileFilter> filters = ParseFileFilter(filter);
  if (!filters.empty()) prompt += " (" + filters.front().name + ")";
  for (int attempt = 0; attempt < kChooseAttempts; ++attempt) {
    const std::optional<std::string> line = AskText(prompt, title, "");
    if (!line || TrimBlanks(*line).empty()) return std::nullopt;
    const std::filesystem::path path(TrimBlanks(*line));
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) return path;
    output_ << "There is no file " << TerminalLine(path.string()) << "." << std::endl;
  }
  return std::nullopt;
}

std::optional<std::filesystem::path> ConsoleDialogs::ChooseFileToSave(
    const std::string& title, const std::string& /*filter*/,
    const std::filesystem::path& suggestion) {
  const std::optional<std::string> line = AskText("Save as", title, suggestion.string());
  if (!line || TrimBlanks(*line).empty()) return std::nullopt;
  return std::filesystem::path(TrimBlanks(*line));
}

// None at the end of input and for an overlong line, whose rest is skipped.
std::optional<std::string> ConsoleDialogs::ReadLine() {
  std::string line;
  bool too_long = false;
  for (int c = input_.get(); c != '\n'; c = input_.get()) {
    if (c == std::istream::traits_type::eof()) {
      // On a terminal the next question may be answered again.
      input_.clear();
      // The last line may lack its line break.
      if (line.empty()) {
        output_ << std::endl;
        return std::nullopt;
      }
      break;
    }
    if (line.size() < kLongestLine) {
      line += static_cast<char>(c);
    } else {
      too_long = true;
    }
  }
  if (too_long) {
    output_ << "The answer is too long." << std::endl;
    return std::nullopt;
  }
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

}  // namespace tenora
