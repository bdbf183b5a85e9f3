// Letters on the clipboard: as RTF, HTML and plain text, and back from what programs offer.
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
// Text of a letter on this letter's tables, from the richest form offered: RTF, HTML, pictures,
// plain text (in `format`). Empty when there is nothing to paste.
std::vector<richtext::Block> BlocksOf(const QMimeData& data, LetterFormats& formats,
                                      const richtext::CharFormat& format);

}  // namespace tenora
