// Writes documents as RTF in the canonical form, which docs/rich-text.md describes.
#pragma once

#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// How characters beyond ASCII appear in the source: as the code page's bytes where it has them, or
// all as Unicode escapes, for readers that know no code pages.
enum class Escapes { kCodePage, kUnicode };

std::string WriteRtf(const Document& document, Escapes escapes = Escapes::kCodePage);

// The group of a header or footer of the document with these blocks in place of its own. Its source
// is in canonical form once the document has been written and read.
std::string WriteHeadGroup(const Document& document, const HeadGroup& group,
                           const std::vector<Block>& blocks);

}  // namespace tenora::richtext
