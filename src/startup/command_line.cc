#include "startup/command_line.h"

#include <algorithm>
#include <optional>
#include <system_error>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

bool IsCommandWord(std::string_view word) {
  return EqualsNoCase(word, "PRINTRECEIPT") || EqualsNoCase(word, "PRINTCHEQUE");
}

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Whether an argument is a parameter of its own: a command word, or a name followed by "=". A
// parameter that only another version knows must not become part of the value before it. A bare
// name other than a command word is text, as in PAYEE=Two Cents Ltd.
bool IsParameter(std::string_view argument) {
  const std::size_t equals = argument.find('=');
  const std::string_view name = argument.substr(0, equals);
  if (equals == std::string_view::npos) return IsCommandWord(name);
  return !name.empty() && std::ranges::all_of(name, IsLetter);
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

// A name, an equals sign and a value in quotes, found in a line from left to right, so that what
// looks like a parameter inside a value is none.
struct WrittenParameter {
  std::string_view name;
  std::string_view value;  // empty where no quote closes it
};

bool IsNameCharacter(char c) {
  return IsLetter(c) || IsDigit(c) || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

std::string_view WithoutBlanksAtEnd(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

// The name before a value that begins behind this text; empty where it does not end in a name and
// an equals sign. Blanks around the sign are allowed.
std::string_view NameBefore(std::string_view text) {
  text = WithoutBlanksAtEnd(text);
  if (!text.ends_with('=')) return {};
  text = WithoutBlanksAtEnd(text.substr(0, text.size() - 1));
  std::size_t start = text.size();
  while (start > 0 && IsNameCharacter(text[start - 1])) --start;
  return text.substr(start);
}

// The next one of the line from `position` on, which moves behind it.
std::optional<WrittenParameter> NextParameter(std::string_view line, std::size_t& position) {
  const std::size_t begin = position;
  for (std::size_t quote = line.find('"', begin); quote != std::string_view::npos;
       quote = line.find('"', quote + 1)) {
    const std::string_view name = NameBefore(line.substr(begin, quote - begin));
    if (name.empty()) continue;
    const std::string_view value = line.substr(quote + 1);
    const std::size_t close = value.find('"');
    if (close == std::string_view::npos) {
      position = line.size();
      return WrittenParameter{name, value.substr(0, 0)};
    }
    position = quote + 1 + close + 1;
    return WrittenParameter{name, value.substr(0, close)};
  }
  return std::nullopt;
}

std::vector<WrittenParameter> WrittenParameters(std::string_view line) {
  std::vector<WrittenParameter> parameters;
  std::size_t position = 0;
  while (const auto parameter = NextParameter(line, position)) parameters.push_back(*parameter);
  return parameters;
}

// The first place of a name outside the values; npos when there is none.
std::size_t FindOutsideValues(std::string_view line, std::string_view name,
                              const std::vector<WrittenParameter>& parameters) {
  std::size_t found = FindNoCase(line, name);
  for (const WrittenParameter& parameter : parameters) {
    const auto begin = static_cast<std::size_t>(parameter.value.data() - line.data());
    const std::size_t end = begin + parameter.value.size();
    if (found >= begin && found < end) found = FindNoCase(line, name, end);
  }
  return found;
}

}  // namespace

std::vector<std::filesystem::path> FilesToOpen(const std::vector<std::string>& arguments) {
  std::vector<std::filesystem::path> files;
  for (const std::string& argument : arguments) {
    const std::filesystem::path path(argument);
    std::error_code unknown;
    const bool there = std::filesystem::is_regular_file(path, unknown);
    const bool parameter = argument.find_first_of("=\"") != std::string::npos ||
                           IsCommandWord(argument.substr(0, argument.find(' ')));
    const bool named = path.has_extension() && !parameter && !argument.starts_with('-');
    if (!named && (!there || IsParameter(argument))) return {};
    files.push_back(std::filesystem::absolute(path, unknown).lexically_normal());
  }
  return files;
}

std::filesystem::path FolderAmong(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    const std::filesystem::path path(argument);
    std::error_code unknown;
    if (!std::filesystem::is_directory(path, unknown) || IsParameter(argument)) continue;
    return std::filesystem::absolute(path, unknown).lexically_normal();
  }
  return {};
}

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
  const std::vector<WrittenParameter> parameters = WrittenParameters(text_);
  for (const WrittenParameter& parameter : parameters) {
    if (EqualsNoCase(parameter.name, name)) return std::string(parameter.value);
  }
  // A line without it: the first occurrence outside the values wins, also inside a longer word, and
  // the two characters after it (by convention an equals sign and a quote) are not looked at. Both
  // are deliberate, for packages that write less than NAME="value". A name inside a value is none:
  // the payee "Two Cents Ltd" says nothing about the word for cents.
  const std::size_t found = FindOutsideValues(text_, name, parameters);
  if (found == std::string::npos) return std::string(default_text);
  std::string_view value = std::string_view(text_).substr(found + name.size());
  for (int skipped = 0; skipped < 2 && !value.empty(); ++skipped) TakeCodePoint(value);
  const std::size_t end = value.find('"');
  // Not the default: an unclosed value must fail rather than print something else.
  return end == std::string_view::npos ? std::string() : std::string(value.substr(0, end));
}

}  // namespace tenora
