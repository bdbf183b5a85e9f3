#include "platform/richtext/read/equation_text.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr int kDeepest = 20;  // of elements in elements

bool IsLetter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }

class EquationReader {
 public:
  explicit EquationReader(std::string_view text) : text_(text) {}

  // Up to the end of the element around, which `depth` counts.
  std::string Read(int depth) {
    std::string read;
    while (!text_.empty()) {
      const char c = text_.front();
      if (depth > 0 && (c == ')' || c == ',' || c == ';')) break;
      text_.remove_prefix(1);
      if (c == '\\')
        read += ReadSwitch(depth);
      else
        read += c;
    }
    return read;
  }

 private:
  // What follows a backslash.
  std::string ReadSwitch(int depth) {
    if (text_.empty()) return {};
    const char kind = text_.front();
    text_.remove_prefix(1);
    if (kind == '*') {
      SkipFormat();
      return {};
    }
    if (!IsLetter(kind)) return std::string(1, kind);
    // The options of an element: \a\al\co2(…), \b\bc\[(…), \s\up8(…).
    std::string bracket;
    while (!text_.empty() && text_.front() != '(') {
      const std::string_view option = text_.substr(0, 4);
      if (option == "\\bc\\" || option == "\\lc\\" || option == "\\rc\\") {
        bracket = text_.substr(option.size(), 1);
        text_.remove_prefix(std::min(option.size() + 1, text_.size()));
        continue;
      }
      const char c = text_.front();
      const bool digit = std::isdigit(static_cast<unsigned char>(c)) != 0;
      if (!IsLetter(c) && !digit && c != '-' && c != ' ' && c != '\\') return {};
      text_.remove_prefix(1);
    }
    if (text_.empty() || depth >= kDeepest) return {};
    return Join(kind, bracket, ReadElements(depth));
  }

  std::vector<std::string> ReadElements(int depth) {
    std::vector<std::string> elements;
    while (!text_.empty()) {
      const char before = text_.front();
      text_.remove_prefix(1);
      if (before == ')') break;
      elements.push_back(Read(depth + 1));
    }
    return elements;
  }

  // \* jc2 or \* "Font:Arial": no part of what is shown.
  void SkipFormat() {
    text_.remove_prefix(std::min(text_.find_first_not_of(' '), text_.size()));
    const bool quoted = text_.starts_with('"');
    if (quoted) text_.remove_prefix(1);
    const std::size_t end = text_.find(quoted ? '"' : ' ');
    text_.remove_prefix(end == std::string_view::npos ? text_.size() : end + 1);
  }

  static std::string Join(char kind, const std::string& bracket,
                          const std::vector<std::string>& elements) {
    const auto at = [&](std::size_t i) { return i < elements.size() ? elements[i] : ""; };
    switch (kind) {
      case 'b':
      case 'B':
        return bracket.empty() ? "(" + at(0) + ")" : bracket + at(0) + Closing(bracket);
      case 'd':
      case 'D':
        return {};
      case 'f':
      case 'F':
        return at(0) + "/" + at(1);
      case 'i':
      case 'I':
        return "\u222b" + at(2);
      case 'r':
      case 'R':
        return elements.size() < 2 ? "\u221a" + at(0) : at(0) + "\u221a" + at(1);
      default:
        break;
    }
    std::string joined;
    for (const std::string& element : elements) {
      if (!joined.empty() && (kind == 'a' || kind == 'l')) joined += ' ';
      joined += element;
    }
    return joined;
  }

  static std::string Closing(const std::string& bracket) {
    constexpr std::string_view kOpen = "([{<", kClose = ")]}>";
    const std::size_t found = kOpen.find(bracket);
    return found == std::string_view::npos ? bracket : std::string(1, kClose[found]);
  }

  std::string_view text_;
};

}  // namespace

std::string TextOfEquation(std::string_view text) {
  return std::string(TrimBlanks(EquationReader(text).Read(0)));
}

}  // namespace tenora::richtext
