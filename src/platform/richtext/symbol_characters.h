// Symbol fonts, whose character codes are glyph numbers. Documents keep those numbers; for a reader
// they are mapped to Unicode characters that other fonts have.
#pragma once

#include <string_view>

namespace tenora::richtext {

enum class SymbolFont { kNone, kSymbol, kWingdings, kWingdings2, kWebdings };

SymbolFont SymbolFontOf(std::string_view font_name);

// What a code draws in the font: 0x20 to 0xFF and U+F020 to U+F0FF are glyph numbers, other
// characters stay. A glyph that Unicode lacks is a bullet.
char32_t UnicodeSymbol(SymbolFont font, char32_t code);

// U+F020 to U+F0FF: a glyph number wherever it stands.
bool IsPrivateSymbol(char32_t code);

}  // namespace tenora::richtext
