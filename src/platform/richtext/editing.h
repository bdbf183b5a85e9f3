// Changes to a document by positions, as document_text.h counts them.
#pragma once

#include <string>
#include <string_view>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// A new document that holds a plain text; any kind of line end begins a paragraph.
Document DocumentOfText(std::string_view utf8);

// Replaces a range by plain text in the format at its start, and returns the position after it.
// Cells that the range touches lose their text, not themselves.
int ReplaceRange(Document* document, int start, int length, std::string_view utf8);
// The same with the first picture or carried-through object of another document; -1, and nothing
// changed, when that has none.
int ReplaceRangeByObject(Document* document, int start, int length, const Document& from);

}  // namespace tenora::richtext
