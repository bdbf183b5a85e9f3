// Copies parts of letters as RTF, HTML and plain text, and pastes what other programs offer.
#pragma once

#include <QMimeData>
#include <QTextCursor>
#include <vector>

#include "platform/richtext/document.h"
#include "ui/editor/text/letter_formats.h"

namespace tenora {

// The selection; the caller owns it.
QMimeData* CopySelection(const QTextCursor& selection, LetterFormats& formats);
bool CanPaste(const QMimeData& data);
// What is offered as parts of a letter, with font and colour numbers of this letter's tables, from
// the richest form: RTF, HTML, pictures, plain text (in `format`). Empty when nothing can be
// pasted.
std::vector<richtext::Block> BlocksOf(const QMimeData& data, LetterFormats& formats,
                                      const richtext::CharFormat& format);

}  // namespace tenora
