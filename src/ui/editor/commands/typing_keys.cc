#include "ui/editor/commands/typing_keys.h"

#include <QKeySequence>
#include <QTextBlock>
#include <QTextTable>

#include "ui/editor/document/letter_loader.h"
#include "ui/editor/text/text_properties.h"
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
  revision_ = cursor.document()->revision();
  if (StepOverPad(event, &cursor)) return Handling::kDone;
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
  if (event.matches(QKeySequence::InsertParagraphSeparator)) {
    // Qt would take Enter in an empty paragraph for the end of its format, as in Markdown.
    letter_.control().textCursor().insertBlock();
    letter_.control().ensureCursorVisible();
    return Handling::kTyped;
  }
  return Handling::kPassOn;
}

void TypingKeys::Pressed() {
  if (letter_.control().document()->revision() != revision_) ShowEmptyLinesBehindTable();
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

bool TypingKeys::StepOverPad(const QKeyEvent& event, QTextCursor* cursor) {
  const bool back = event.key() == Qt::Key_Backspace;
  if (cursor->hasSelection() || (!back && event.key() != Qt::Key_Delete)) return false;
  const QTextBlock block = cursor->block();
  if (block.length() != 2) return false;
  const auto object =
      SharedProperty<InlineObject>(block.begin().fragment().charFormat(), kObjectProperty);
  if (object == nullptr || object->kind != InlineObject::Kind::kPad) return false;
  // What is before it is the table, which no key joins with a line.
  if (back) return true;
  cursor->movePosition(QTextCursor::EndOfBlock);
  letter_.control().setTextCursor(*cursor);
  return false;
}

void TypingKeys::ShowEmptyLinesBehindTable() {
  const QTextBlock here = letter_.control().textCursor().block();
  LetterLoader loader(letter_.formats());
  for (const QTextBlock& block : {here.previous(), here}) {
    if (!block.isValid()) continue;
    QTextCursor cursor(block);
    cursor.joinPreviousEditBlock();
    loader.PadBehindTable(&cursor);
    cursor.endEditBlock();
  }
}

}  // namespace tenora
