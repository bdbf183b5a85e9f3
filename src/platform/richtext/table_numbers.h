// The font and colour numbers in a document's formats and in carried-through sources.
#pragma once

#include <string_view>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// Leaves only fonts and colours in use in the tables, the default font first.
void Renumber(Document* document);

// Puts the document on these tables: its fonts and colours get the positions of their equals, those
// without are added at the end. Fonts of one name are equal, but for the symbols' character set.
// The document then holds copies of both tables.
void MoveToTables(Document* document, std::vector<Font>* fonts, std::vector<Colour>* colours);

// What a word's parameter counts: a font, a colour, or neither.
enum class Reference { kNone, kFont, kColour };
Reference ReferenceOf(std::string_view word);

}  // namespace tenora::richtext
