// What the control words of a border do, be it a paragraph's or a cell's.
#pragma once

#include <string_view>

#include "platform/richtext/document.h"
#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

bool IsBorderWord(std::string_view name);
void ApplyBorderWord(const Token& word, const ColourTable& colours, Border* border);

}  // namespace tenora::richtext
