#include "startup/shell_line.h"

#include <algorithm>
#include <cctype>

namespace tenora {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

bool HasControls(std::string_view text) {
  return std::ranges::any_of(
      text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
}

bool NeedsNoQuoting(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 || std::isalnum(byte) != 0 ||
         std::string_view("_-+,./%").find(c) != std::string_view::npos;
}

// What all the texts begin with, not ending in the middle of a UTF-8 character; at least the first
// `known` bytes.
std::string CommonStart(const std::vector<std::string>& texts, std::size_t known) {
  std::string common = texts.front();
  for (const std::string& text : texts) {
    common.resize(std::ranges::mismatch(common, text).in1 - common.begin());
  }
  const auto inside = [&common](const std::string& text) {
    return text.size() > common.size() && (text[common.size()] & 0xc0) == 0x80;
  };
  while (common.size() > known && std::ranges::any_of(texts, inside)) common.pop_back();
  return common;
}

}  // namespace

ShellLine::ShellLine(std::string_view line, std::string_view replaced) {
  Read(line);
  replaced_ = quote_ == '\0' ? replaced : line.substr(quote_start_);
  if (open_escape_ && replaced_.ends_with('\\')) replaced_.pop_back();
}

void ShellLine::Read(std::string_view line) {
  bool in_word = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quote_ == '\0' && IsBlank(c)) {
      if (in_word) words_.push_back(std::move(current_));
      current_.clear();
      in_word = false;
      continue;
    }
    in_word = true;
    open_escape_ = c == '\\' && quote_ != '\'' && i + 1 == line.size();
    if (open_escape_) break;
    const char next = i + 1 < line.size() ? line[i + 1] : '\0';
    const bool escapes =
        c == '\\' && next != '\0' &&
        (quote_ == '\0' ||
         (quote_ == '"' && std::string_view("\"$`\\").find(next) != std::string_view::npos));
    if (escapes) {
      current_ += next;
      ++i;
    } else if (c == quote_) {
      quote_ = '\0';
    } else if (quote_ == '\0' && (c == '"' || c == '\'')) {
      quote_ = c;
      quote_start_ = i + 1;
    } else {
      current_ += c;
    }
  }
}

// Quoted for the place of the cursor. `otherwise` begins a character that needs quoting in another
// way, so that two such texts share no beginning.
std::string ShellLine::Quoted(std::string_view text, bool otherwise) const {
  std::string quoted;
  for (const char& c : text) {
    const bool first = otherwise && quoted.empty();
    if (quote_ == '\'') {
      quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    } else if (quote_ == '"') {
      const bool special = std::string_view("\"$`\\!").find(c) != std::string_view::npos;
      // A backslash before "!" stays inside double quotes, so the quotes are closed and opened
      // again; but not at the end, where the shell adds the closing quote and "!" means nothing.
      const bool apart = (c == '!' && &c != &text.back()) || (special && c != '!' && first);
      quoted += apart ? std::string("\"\\") + c + '"'
                      : (special && c != '!' ? "\\" : "") + std::string(1, c);
    } else if (NeedsNoQuoting(c)) {
      quoted += c;
    } else {
      quoted += first ? std::string(c == '\'' ? "\"" : "'") + c + (c == '\'' ? "\"" : "'")
                      : std::string("\\") + c;
    }
  }
  return quoted;
}

std::vector<std::string> ShellLine::Completions(std::vector<std::string> candidates) const {
  std::erase_if(candidates, [&](const std::string& candidate) {
    return !candidate.starts_with(current_) || HasControls(candidate);
  });
  std::vector<std::string> distinct;
  for (std::string& candidate : candidates) {
    if (std::ranges::find(distinct, candidate) == distinct.end()) {
      distinct.push_back(std::move(candidate));
    }
  }
  if (distinct.empty()) return {};
  const std::string common = CommonStart(distinct, current_.size());
  const std::string start = replaced_ + Quoted(common.substr(current_.size()), false);
  std::vector<std::string> completions;
  for (const std::string& candidate : distinct) {
    completions.push_back(
        start + Quoted(std::string_view(candidate).substr(common.size()), completions.empty()));
  }
  return completions;
}

}  // namespace tenora
