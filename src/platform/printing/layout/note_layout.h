// Lays out footnotes and endnotes.
#pragma once

#include <memory>

#include "platform/printing/layout/layout_context.h"
#include "platform/printing/layout/note_marks.h"
#include "platform/printing/layout/strip.h"

namespace tenora::printing {

// The note's text in lines of this width, twips.
Strips LayOutNote(LayoutContext& context, const Note& note, double width);

// The short line between the text and its notes; `position` is that of the note below it.
std::shared_ptr<Strip> NoteSeparator(int position);

}  // namespace tenora::printing
