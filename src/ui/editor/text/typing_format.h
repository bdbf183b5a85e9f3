// The format that text gets which is typed or pasted at the caret.
#pragma once

#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextEdit>

#include "ui/editor/text/letter_formats.h"

namespace tenora {

// The format that typing has at the caret; of a selection, that of its first character.
QTextCharFormat FormatAtCaret(const QTextEdit& control);
// `format`, or what is left of it where the text at the cursor takes no part of its surroundings:
// next to a field or protected text, and in an empty cell.
QTextCharFormat TypingFormat(const QTextCursor& cursor, const QTextCharFormat& format,
                             LetterFormats& formats);
// Makes that the format of what is typed next, unless something is selected.
void SetTypingFormat(QTextEdit* control, LetterFormats& formats);

}  // namespace tenora
