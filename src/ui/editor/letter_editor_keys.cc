// What keys do, beyond what they do in any text.
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QTextBlock>
#include <QTextTable>

#include "ui/editor/commands/table_commands.h"
#include "ui/editor/document/letter_loader.h"
#include "ui/editor/letter_editor.h"
#include "ui/editor/text/protected_text.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

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

void LetterEditor::keyPressEvent(QKeyEvent* event) {
  // The list of merge codes takes its keys itself once the editor leaves them alone.
  if (completer_->TakesKey(*event)) return event->ignore();
  if (event->matches(QKeySequence::Undo)) return Undo();
  if (event->matches(QKeySequence::Redo)) return Redo();
  if (event->matches(QKeySequence::Cut)) return Cut();
  if (GoToCell(*event) || !MayType(*event) || LeaveList(*event)) return;
  if (event->key() == Qt::Key_Backspace && !textCursor().hasSelection() &&
      textCursor().atBlockStart()) {
    // Qt would take it for a smaller indent.
    textCursor().deletePreviousChar();
    return;
  }
  if (Types(*event) && textCursor().hasSelection()) {
    TypeOver(event->text());
  } else {
    CleanTypingFormat();
    QTextEdit::keyPressEvent(event);
  }
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) ShowEmptyLineBehindTable();
  completer_->Typed(*event);
}

void LetterEditor::inputMethodEvent(QInputMethodEvent* event) {
  const QString text = event->commitString();
  const QTextCursor cursor = textCursor();
  const bool changes = !text.isEmpty() || !event->preeditString().isEmpty();
  if (changes && !MayChange(cursor.selectionStart(), cursor.selectionEnd())) return;
  if (!text.isEmpty()) CleanTypingFormat();
  QTextEdit::inputMethodEvent(event);
  if (!text.isEmpty()) completer_->Typed(QKeyEvent(QEvent::KeyPress, 0, Qt::NoModifier, text));
}

bool LetterEditor::MayType(const QKeyEvent& event) {
  QTextCursor cursor = textCursor();
  const bool enter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
  if (!SelectDeleted(event, &cursor) && !Types(event) && !enter) return true;
  return MayChange(cursor.selectionStart(), cursor.selectionEnd());
}

bool LetterEditor::GoToCell(const QKeyEvent& event) {
  if (!CaretInTable(*this)) return false;
  const bool forth = event.key() == Qt::Key_Tab && event.modifiers() == Qt::NoModifier;
  if (!forth && event.key() != Qt::Key_Backtab) return false;
  MoveToCell(*this, forth ? Side::kAfter : Side::kBefore);
  return true;
}

void LetterEditor::ShowEmptyLineBehindTable() {
  const QTextBlock empty = textCursor().block().previous();
  if (!empty.isValid() || empty.length() != 1 || !empty.previous().isValid()) return;
  const QTextTable* table = QTextCursor(empty.previous()).currentTable();
  if (table == nullptr || table->lastPosition() + 1 != empty.position()) return;
  QTextCursor cursor(empty);
  cursor.joinPreviousEditBlock();
  LetterLoader(formats_).InsertObject(&cursor, {}, formats_.CharOf(empty.charFormat()), nullptr);
  cursor.endEditBlock();
}

bool LetterEditor::LeaveList(const QKeyEvent& event) {
  const QTextCursor cursor = textCursor();
  if (cursor.hasSelection() || !cursor.atBlockStart()) return false;
  const bool enter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
  if (event.key() != Qt::Key_Backspace && !(enter && cursor.atBlockEnd())) return false;
  if (ParagraphAtCaret().bullet.kind == richtext::Bullet::Kind::kNone) return false;
  ChangeParagraphs([](richtext::ParagraphFormat& format) {
    format.bullet = {};
    format.left_indent = format.first_indent = 0;
  });
  return true;
}

void LetterEditor::CleanTypingFormat() {
  const QTextCursor cursor = textCursor();
  // A format set now would be that of all that is selected.
  if (cursor.hasSelection()) return;
  const QTextCharFormat format = currentCharFormat();
  const QTextCharFormat clean = CleanFormat(cursor, format);
  if (clean != format) setCurrentCharFormat(clean);
}

void LetterEditor::TypeOver(const QString& text) {
  QTextCursor cursor = textCursor();
  cursor.beginEditBlock();
  cursor.removeSelectedText();
  cursor.insertText(text, CleanFormat(cursor, cursor.charFormat()));
  cursor.endEditBlock();
  setTextCursor(cursor);
}

QTextCharFormat LetterEditor::CleanFormat(const QTextCursor& cursor,
                                          const QTextCharFormat& format) {
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
  richtext::CharFormat own = formats_.CharOf(format);
  own.protect = false;
  return formats_.Char(own);
}

}  // namespace tenora
