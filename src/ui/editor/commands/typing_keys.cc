#include "ui/editor/commands/typing_keys.h"

#include <QKeySequence>
#include <QTextBlock>
#include <QTextTable>

#include "ui/editor/document/letter_loader.h"
#include "ui/editor/text/typing_format.h"

namespace tenora {
namespace {

bool IsEnter(const QKeyEvent& event) {
  return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

// Keys that put a character at the caret.
bool Types(const QKeyEvent& event) {
  const QString text = event.text();
  const bool command =
      (event.modifiers() & Qt::ControlModifier) != 0 && (event.modifiers() & Qt::AltModifier) == 0;
  return !text.isEmpty() && !command &&
         (text.front().isPrint() || text.front() == QLatin1Char('\t'));
}

// Moves the caret over what the key would delete; false where it deletes nothing.
bool SelectDeleted(const QKeyEvent& event, QTextCursor* cursor) {
  const struct {
    QKeySequence::StandardKey key;
    QTextCursor::MoveOperation over;
  } deletions[] = {{QKeySequence::Delete, QTextCursor::NextCharacter},
                   {QKeySequence::Backspace, QTextCursor::PreviousCharacter},
                   {QKeySequence::DeleteEndOfWord, QTextCursor::EndOfWord},
                   {QKeySequence::DeleteStartOfWord, QTextCursor::PreviousWord},
                   {QKeySequence::DeleteEndOfLine, QTextCursor::EndOfBlock}};
  for (const auto& deletion : deletions) {
    if (!event.matches(deletion.key) &&
        !(deletion.key == QKeySequence::Backspace && event.key() == Qt::Key_Backspace &&
          (event.modifiers() & Qt::ControlModifier) == 0))
      continue;
    if (!cursor->hasSelection()) cursor->movePosition(deletion.over, QTextCursor::KeepAnchor);
    return true;
  }
  return false;
}

}  // namespace

TypingKeys::Handling TypingKeys::Press(const QKeyEvent& event) {
  if (GoToCell(event) || !MayType(event) || LeaveList(event)) return Handling::kDone;
  QTextCursor cursor = letter_.control().textCursor();
  if (event.key() == Qt::Key_Backspace && !cursor.hasSelection() && cursor.atBlockStart()) {
    // Qt would take it for a smaller indent.
    cursor.deletePreviousChar();
    return Handling::kDone;
  }
  if (Types(event) && cursor.hasSelection()) {
    TypeOver(event.text());
    return Handling::kTyped;
  }
  SetTypingFormat(&letter_.control(), letter_.formats());
  return Handling::kPassOn;
}

void TypingKeys::Pressed(const QKeyEvent& event) {
  if (IsEnter(event)) ShowEmptyLineBehindTable();
}

bool TypingKeys::MayType(const QKeyEvent& event) {
  QTextCursor cursor = letter_.control().textCursor();
  if (!SelectDeleted(event, &cursor) && !Types(event) && !IsEnter(event)) return true;
  return letter_.MayChange(cursor.selectionStart(), cursor.selectionEnd());
}

bool TypingKeys::GoToCell(const QKeyEvent& event) {
  if (!tables_.CaretInTable()) return false;
  const bool forward = event.key() == Qt::Key_Tab && event.modifiers() == Qt::NoModifier;
  if (!forward && event.key() != Qt::Key_Backtab) return false;
  tables_.MoveToCell(forward ? Side::kAfter : Side::kBefore);
  return true;
}

bool TypingKeys::LeaveList(const QKeyEvent& event) {
  const QTextCursor cursor = letter_.control().textCursor();
  if (cursor.hasSelection() || !cursor.atBlockStart()) return false;
  if (event.key() != Qt::Key_Backspace && !(IsEnter(event) && cursor.atBlockEnd())) return false;
  if (formats_.ParagraphAtCaret().bullet.kind == richtext::Bullet::Kind::kNone) return false;
  formats_.ChangeParagraphs([](richtext::ParagraphFormat& format) {
    format.bullet = {};
    format.left_indent = format.first_indent = 0;
  });
  return true;
}

void TypingKeys::TypeOver(const QString& text) {
  QTextCursor cursor = letter_.control().textCursor();
  cursor.beginEditBlock();
  cursor.removeSelectedText();
  cursor.insertText(text, TypingFormat(cursor, cursor.charFormat(), letter_.formats()));
  cursor.endEditBlock();
  letter_.control().setTextCursor(cursor);
}

void TypingKeys::ShowEmptyLineBehindTable() {
  const QTextBlock empty = letter_.control().textCursor().block().previous();
  if (!empty.isValid() || empty.length() != 1 || !empty.previous().isValid()) return;
  const QTextTable* table = QTextCursor(empty.previous()).currentTable();
  if (table == nullptr || table->lastPosition() + 1 != empty.position()) return;
  LetterFormats& formats = letter_.formats();
  QTextCursor cursor(empty);
  cursor.joinPreviousEditBlock();
  LetterLoader(formats).InsertObject(&cursor, {}, formats.CharOf(empty.charFormat()), nullptr);
  cursor.endEditBlock();
}

}  // namespace tenora
