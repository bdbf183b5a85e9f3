// The format of a paragraph's mark in Qt's document.
#pragma once

#include <QTextCharFormat>
#include <QTextCursor>

namespace tenora {

// Gives the mark of the paragraph at the cursor this format. It is undone with the rest of its
// step, also in the first paragraph, of which Qt keeps no history.
void SetParagraphMark(QTextCursor* cursor, const QTextCharFormat& mark);

}  // namespace tenora
