// The command line as the management package writes it, and its named parameters.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tenora {

class CommandLine {
 public:
  // `text` is the whole text after the program name.
  explicit CommandLine(std::string text) : text_(std::move(text)) {}

  // Puts the line back together from the arguments (without the program's) that an operating system
  // split it into. A shell also takes the quotes away: NAME=value gets them back, and bare words
  // after it other than a command word belong to its value, so that FORMAT=Rent review reads like
  // FORMAT="Rent review". Arguments that still hold their quotes stay as they are.
  static CommandLine FromArguments(const std::vector<std::string>& arguments);

  const std::string& text() const { return text_; }
  bool Contains(std::string_view word) const;

  // The value of a named parameter: of the first NAME="value", in any letter case, that is not
  // inside another value. A line without one is read by the first place outside the values where
  // the name occurs at all; `default_text` where it does not. Empty for a value that is not closed
  // by a double quote.
  std::string GetCommandParameter(std::string_view name, std::string_view default_text) const;

 private:
  std::string text_;
};

// The files that are to be opened, as absolute paths, where every argument is one: names a file
// that is there, or has a file name's extension. Empty for the package's command lines.
std::vector<std::filesystem::path> FilesToOpen(const std::vector<std::string>& arguments);
// The first argument that is no parameter and names a folder, as an absolute path; empty where none
// does.
std::filesystem::path FolderAmong(const std::vector<std::string>& arguments);

}  // namespace tenora
