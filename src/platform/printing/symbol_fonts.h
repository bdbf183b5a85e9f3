// Text in symbol fonts, as Qt draws it.
#pragma once

#include <QString>

#include "platform/richtext/symbol_characters.h"

namespace tenora::printing {

using richtext::SymbolFont;
using richtext::SymbolFontOf;

// Character by character, as richtext::UnicodeSymbol.
QString WithUnicodeSymbols(QString text, SymbolFont font);

// As WithUnicodeSymbols, for a list's bullet, whose font is not recorded in the document.
QString UnicodeBullet(QString bullet);

}  // namespace tenora::printing
