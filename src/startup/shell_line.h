// A command line as it is being typed in bash, for completion.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tenora {

class ShellLine {
 public:
  // `line` reaches up to the cursor. `replaced` is the end of it that the shell replaces with a
  // completion, as it stands there: it begins after the last of the shell's break characters, as in
  // `--template=Rent\ r`, and after the quote while one is open.
  ShellLine(std::string_view line, std::string_view replaced);

  // The words before the one at the cursor, without their quotes; the first is the command.
  const std::vector<std::string>& words() const { return words_; }
  // The word at the cursor without its quotes; empty after a blank.
  const std::string& current() const { return current_; }

  // What the shell is to be told for those of the candidates that begin with the current word, in
  // their order: `replaced` and the rest, quoted so that no character means anything to the shell.
  // The beginning that the texts share is that of the candidates: it never ends inside a quoting.
  // Candidates with control characters are left out.
  std::vector<std::string> Completions(std::vector<std::string> candidates) const;

 private:
  void Read(std::string_view line);
  std::string Quoted(std::string_view text, bool otherwise) const;

  std::vector<std::string> words_;
  std::string current_;
  std::string replaced_;
  char quote_ = '\0';            // that is open at the cursor
  std::size_t quote_start_ = 0;  // in the line, after the quote
  bool open_escape_ = false;     // the line ends with a backslash that escapes nothing yet
};

}  // namespace tenora
