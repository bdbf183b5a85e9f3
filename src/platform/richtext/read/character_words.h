// What the control words of character formatting do.
#pragma once

#include "platform/richtext/document.h"
#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/read/font_table.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

// The format after \plain. The font is kDefaultFont until a word names one: the font table may
// still be to come.
inline constexpr int kDefaultFont = -1;
CharFormat PlainFormat();

bool IsCharacterWord(std::string_view name);
// False when the word is not one of character formatting.
bool ApplyCharacterWord(const Token& word, FontTable& fonts, const ColourTable& colours,
                        CharFormat* format);

// True for words that word processors add to text and that have no visible effect:
// languages, revision numbers, proofing marks, fonts for scripts that the text is not in.
bool IsInvisibleWord(std::string_view name);

}  // namespace tenora::richtext
