// Writes the page of a document and the sections after its first.
#pragma once

#include "platform/richtext/document.h"
#include "platform/richtext/write/source_text.h"

namespace tenora::richtext {

// The words of the borders around the page.
void WritePageBorders(const PageSetup& page, SourceText* out);
// What follows \sect: how the section begins, its page, headers and footers.
void WriteSection(const Section& section, SourceText* out);

}  // namespace tenora::richtext
