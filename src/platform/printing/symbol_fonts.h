// Fonts whose characters are numbers of their own glyphs. Documents keep those numbers; on paper
// they become the Unicode characters that other fonts have.
#pragma once

#include <QString>
#include <string_view>

namespace tenora::printing {

enum class SymbolFont { kNone, kSymbol, kWingdings };

SymbolFont SymbolFontOf(std::string_view font_name);

// Character by character: 0x20 to 0xFF and U+F020 to U+F0FF are glyph numbers, others stay.
QString WithUnicodeSymbols(QString text, SymbolFont font);

// A list's bullet, whose font the document no longer names.
QString UnicodeBullet(QString bullet);

}  // namespace tenora::printing
