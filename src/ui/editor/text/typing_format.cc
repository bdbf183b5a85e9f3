#include "ui/editor/text/typing_format.h"

#include "ui/editor/text/protected_text.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {

QTextCharFormat FormatAtCaret(const QTextEdit& control) {
  QTextCursor cursor = control.textCursor();
  if (!cursor.hasSelection()) return control.currentCharFormat();
  cursor.setPosition(cursor.selectionStart());
  cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
  return cursor.charFormat();
}

QTextCharFormat TypingFormat(const QTextCursor& cursor, const QTextCharFormat& format,
                             LetterFormats& formats) {
  bool clean = !format.hasProperty(kCellProperty) && !format.hasProperty(kObjectProperty) &&
               !IsProtected(format);
  const auto field = SharedProperty<richtext::Field>(format, kFieldProperty);
  if (field != nullptr) {
    QTextCursor next = cursor;
    next.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    clean = clean && !cursor.atBlockEnd() &&
            SharedProperty<richtext::Field>(next.charFormat(), kFieldProperty) == field;
  }
  if (clean) return format;
  richtext::CharFormat own = formats.CharOf(format);
  own.protect = false;
  return formats.Char(own);
}

void SetTypingFormat(QTextEdit* control, LetterFormats& formats) {
  const QTextCursor cursor = control->textCursor();
  // A format set now would be that of all that is selected.
  if (cursor.hasSelection()) return;
  const QTextCharFormat format = control->currentCharFormat();
  const QTextCharFormat typed = TypingFormat(cursor, format, formats);
  if (typed != format) control->setCurrentCharFormat(typed);
}

}  // namespace tenora
