// Symbol fonts, whose character codes are glyph numbers. Documents keep those numbers; for drawing
// they are mapped to Unicode characters that other fonts have.
#pragma once

#include <QString>
#include <string_view>

namespace tenora::printing {

enum class SymbolFont { kNone, kSymbol, kWingdings };

SymbolFont SymbolFontOf(std::string_view font_name);

// Character by character: 0x20 to 0xFF and U+F020 to U+F0FF are glyph numbers, others stay.
QString WithUnicodeSymbols(QString text, SymbolFont font);

// As WithUnicodeSymbols, for a list's bullet, whose font is not recorded in the document.
QString UnicodeBullet(QString bullet);

}  // namespace tenora::printing
