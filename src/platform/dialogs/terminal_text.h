// Text made safe for a terminal: names and values from the database may hold anything.
#pragma once

#include <string>
#include <string_view>

namespace tenora {

// Control characters, bidirectional overrides and broken UTF-8 become visible ("<U+001B>"), so that
// no text can move the cursor, recolour the screen or disguise what it says. Tabs stay; every line
// break (CR LF, CR, LF) becomes one LF.
std::string TerminalText(std::string_view text);

// As TerminalText, in one line: line breaks and tabs become blanks.
std::string TerminalLine(std::string_view text);

}  // namespace tenora
