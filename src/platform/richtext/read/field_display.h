// What a reader of the letter sees of fields whose instruction says it all: symbols, check boxes,
// drop-down lists, prompts to click on, equations.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tenora::richtext {

// SYMBOL 252 \f "Wingdings" \s 12
struct SymbolField {
  char32_t code = 0;
  bool unicode = false;  // else a code below 256 is a byte of the font's
  std::string font;      // UTF-8; empty for the font around
  int half_points = 0;   // 0 for the size around
};

// Both take a field's instruction as RTF source.
std::optional<SymbolField> SymbolOf(std::string_view instruction);
// UTF-8; empty for other fields.
std::string TextOfInstruction(std::string_view instruction);

}  // namespace tenora::richtext
