// Writes the sections after a document's first.
#pragma once

#include "platform/richtext/document.h"
#include "platform/richtext/write/source_text.h"

namespace tenora::richtext {

// What follows \sect: how the section begins, its page, headers and footers.
void WriteSection(const Section& section, SourceText* out);

}  // namespace tenora::richtext
