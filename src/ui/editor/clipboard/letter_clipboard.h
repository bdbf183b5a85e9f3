// Copies parts of letters as RTF, HTML and plain text, and pastes what other programs offer.
#pragma once

#include <QMimeData>
#include <QStringList>
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

// The files of this computer that are offered, as a file manager offers them.
QStringList FilesOf(const QMimeData& data);
// The files that are pictures, one after the other in a paragraph; empty where none is. The rest,
// folders and files over 64 MB among them, is added to `others`.
std::vector<richtext::Block> BlocksOfPictures(const QStringList& files,
                                              const richtext::CharFormat& format,
                                              QStringList* others);

}  // namespace tenora
