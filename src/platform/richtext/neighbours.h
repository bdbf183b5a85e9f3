// What paragraphs that follow each other share.
#pragma once

#include "platform/richtext/document.h"

namespace tenora::richtext {

// Whether there is no space between two paragraphs: of one style, or items whose space is
// automatic.
bool WithoutSpaceBetween(const ParagraphFormat& upper, const ParagraphFormat& lower);

// \htmautsp: of the space below a paragraph and that above the next, the larger counts, as in HTML.
bool HasHtmlSpacing(const Document& document);

// The space between a paragraph and its neighbours, twips; they are null at the ends of the text,
// of a cell and beside tables. What is above the lower of two comes in addition to what is below
// the upper one.
int SpaceAbove(const ParagraphFormat& format, const ParagraphFormat* above, bool html_spacing);
int SpaceBelow(const ParagraphFormat& format, const ParagraphFormat* below);

// Whether two paragraphs that follow each other share one frame. Within borders, each may have its
// own shading.
bool SameFrame(const ParagraphFormat& one, const ParagraphFormat& other);

}  // namespace tenora::richtext
