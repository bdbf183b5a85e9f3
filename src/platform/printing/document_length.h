// How long the parts of a document are, as positions in it are counted: in UTF-16 units, an object
// one, a paragraph's end one.
#pragma once

#include <string_view>

#include "platform/richtext/document.h"

namespace tenora::printing {

int TextUnits(std::string_view utf8);
int Length(const richtext::Paragraph& paragraph);
int Length(const richtext::Cell& cell);
int Length(const richtext::Row& row);
int Length(const richtext::Block& block);
// The text of its notes, which comes after all else, is part of it.
int DocumentLength(const richtext::Document& document);

}  // namespace tenora::printing
