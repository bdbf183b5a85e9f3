#include "platform/dialogs/terminal_text.h"

#include <array>
#include <cstdio>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

bool IsUnsafe(char32_t c) {
  const bool control = (c < 0x20 && c != '\n' && c != '\t') || (c >= 0x7F && c <= 0x9F);
  const bool separator = c == 0x2028 || c == 0x2029;
  const bool direction =
      c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
  return control || separator || direction;
}

}  // namespace

std::string TerminalText(std::string_view text) {
  std::string safe;
  safe.reserve(text.size());
  while (!text.empty()) {
    const char32_t c = TakeCodePoint(text);
    if (c == '\r') {
      if (!text.starts_with('\n')) safe += '\n';
    } else if (IsUnsafe(c)) {
      std::array<char, 16> shown{};
      std::snprintf(shown.data(), shown.size(), "<U+%04X>", static_cast<unsigned>(c));
      safe += shown.data();
    } else {
      AppendUtf8(safe, c);
    }
  }
  return safe;
}

std::string TerminalLine(std::string_view text) {
  std::string line = TerminalText(text);
  for (char& c : line) {
    if (c == '\n' || c == '\t') c = ' ';
  }
  return line;
}

}  // namespace tenora
