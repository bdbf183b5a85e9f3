// What paragraphs that follow each other share.
#pragma once

#include "platform/richtext/document.h"

namespace tenora::richtext {

// Whether there is no space between two paragraphs of one style.
bool WithoutSpaceBetween(const ParagraphFormat& one, const ParagraphFormat& other);

// Whether two paragraphs share one frame.
bool SameFrame(const ParagraphFormat& one, const ParagraphFormat& other);

}  // namespace tenora::richtext
