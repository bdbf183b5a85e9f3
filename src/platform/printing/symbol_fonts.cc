#include "platform/printing/symbol_fonts.h"

namespace tenora::printing {
namespace {

QChar Drawn(SymbolFont font, QChar c) {
  return QChar(static_cast<char16_t>(richtext::UnicodeSymbol(font, c.unicode())));
}

}  // namespace

QString WithUnicodeSymbols(QString text, SymbolFont font) {
  if (font == SymbolFont::kNone) return text;
  for (QChar& c : text) c = Drawn(font, c);
  return text;
}

QString UnicodeBullet(QString bullet) {
  for (QChar& c : bullet) {
    // The round bullet is Symbol's; other private bullets come from Wingdings.
    if (c == QChar(0x00B7) || c == QChar(0xF0B7)) {
      c = Drawn(SymbolFont::kSymbol, c);
    } else if (richtext::IsPrivateSymbol(c.unicode())) {
      c = Drawn(SymbolFont::kWingdings, c);
    }
  }
  return bullet;
}

}  // namespace tenora::printing
