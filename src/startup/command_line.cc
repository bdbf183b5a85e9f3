#include "startup/command_line.h"

#include <algorithm>
#include <array>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::array<std::string_view, 11> kParameterNames{
    "PRINTRECEIPT", "FORMAT", "DEFAULT", "TOPRINTER", "TOEMAIL", "REPRINT",
    "PRINTCHEQUE",  "PAYEE",  "VALUE",   "DOLLARS",   "CENTS",
};

bool IsName(std::string_view word) {
  return std::ranges::any_of(kParameterNames,
                             [&](std::string_view name) { return EqualsNoCase(word, name); });
}

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Whether an argument is a parameter of its own: a known name, alone or followed by "=", or an
// unknown one with "=". A parameter that only another version knows must not become part of the
// value before it.
bool IsParameter(std::string_view argument) {
  const std::size_t equals = argument.find('=');
  const std::string_view name = argument.substr(0, equals);
  if (IsName(name)) return true;
  return equals != std::string_view::npos && !name.empty() && std::ranges::all_of(name, IsLetter);
}

// One argument that holds the whole line but no quotes, cut before each parameter.
std::vector<std::string> SplitUnquotedLine(const std::string& line) {
  std::vector<std::string> parts;
  for (const std::string& word : Split(line, " ")) {
    if (parts.empty() || IsParameter(word)) {
      parts.push_back(word);
    } else {
      parts.back().append(" ").append(word);
    }
  }
  return parts;
}

// Concatenates arguments and counts their quotes.
class LineWriter {
 public:
  void Add(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    const bool quoted = argument.find('"') != std::string::npos;
    if (!Inside() && !quoted && equals != std::string::npos && IsParameter(argument)) {
      CloseValue();
      Separate();
      line_.append(argument, 0, equals + 1).append("\"").append(argument, equals + 1);
      in_value_ = true;
      return;
    }
    if (Inside() || quoted || IsParameter(argument)) CloseValue();
    const bool empty_value = in_value_ && line_.back() == '"';
    if (!empty_value) Separate();
    line_.append(argument);
    own_quotes_ += static_cast<std::size_t>(std::ranges::count(argument, '"'));
  }

  std::string Finish() {
    CloseValue();
    return std::move(line_);
  }

 private:
  // Inside a value whose opening quote came with the arguments.
  bool Inside() const { return own_quotes_ % 2 != 0; }
  void CloseValue() {
    if (in_value_) line_ += '"';
    in_value_ = false;
  }
  void Separate() {
    if (!line_.empty()) line_ += ' ';
  }

  std::string line_;
  std::size_t own_quotes_ = 0;
  bool in_value_ = false;  // inside a value whose quotes are put back
};

}  // namespace

CommandLine CommandLine::FromArguments(const std::vector<std::string>& arguments) {
  const bool whole_line = arguments.size() == 1 && arguments[0].find('"') == std::string::npos;
  LineWriter writer;
  for (const std::string& argument : whole_line ? SplitUnquotedLine(arguments[0]) : arguments) {
    writer.Add(argument);
  }
  return CommandLine(writer.Finish());
}

bool CommandLine::Contains(std::string_view word) const { return ContainsNoCase(text_, word); }

std::string CommandLine::GetCommandParameter(std::string_view name,
                                             std::string_view default_text) const {
  // The first occurrence wins wherever it is, also inside another value or a longer word, and the
  // two characters after it (by convention an equals sign and a quote) are not looked at. The
  // package's command lines rely on no more; both are deliberate.
  const std::size_t found = FindNoCase(text_, name);
  if (found == std::string::npos) return std::string(default_text);
  std::string_view value = std::string_view(text_).substr(found + name.size());
  for (int skipped = 0; skipped < 2 && !value.empty(); ++skipped) TakeCodePoint(value);
  const std::size_t end = value.find('"');
  // Not the default: an unclosed value must fail rather than print something else.
  return end == std::string_view::npos ? std::string() : std::string(value.substr(0, end));
}

}  // namespace tenora
