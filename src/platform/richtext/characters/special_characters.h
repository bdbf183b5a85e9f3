// Control words and symbols that stand for one character.
#pragma once

#include <string_view>

namespace tenora::richtext {

// 0 for any other word. "\t", "\v" and "\f" are a tab, a line break and a page break.
char32_t CharacterOfWord(std::string_view word);
char32_t CharacterOfSymbol(char symbol);

// A character as a document may hold it: 0 for control characters, which are dropped; U+FFFD for
// invalid code points and for U+FFFC, which represents objects.
char32_t CleanCharacter(char32_t character);

}  // namespace tenora::richtext
