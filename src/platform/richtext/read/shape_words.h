// The control words of a shape's box.
#pragma once

#include "platform/richtext/document.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

// Other words change nothing.
void ApplyShapeWord(const Token& word, ShapeBox* box);

}  // namespace tenora::richtext
