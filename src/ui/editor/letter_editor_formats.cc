// The formats of the selection and of what is typed next.
#include <QTextBlock>
#include <QTextDocument>
#include <QTextTable>
#include <algorithm>
#include <utility>
#include <vector>

#include "ui/editor/letter_editor.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

// Qt keeps no history of the format of the first paragraph's mark.
class FirstMarkStep : public QAbstractUndoItem {
 public:
  FirstMarkStep(QTextDocument* document, QTextCharFormat before, QTextCharFormat after)
      : document_(document), before_(std::move(before)), after_(std::move(after)) {}
  void undo() override { QTextCursor(document_).setBlockCharFormat(before_); }
  void redo() override { QTextCursor(document_).setBlockCharFormat(after_); }

 private:
  QTextDocument* document_;
  QTextCharFormat before_, after_;
};

void SetMark(QTextCursor* cursor, const QTextCharFormat& mark) {
  if (cursor->block().position() == 0) {
    QTextDocument* document = cursor->document();
    document->appendUndoItem(new FirstMarkStep(document, cursor->blockCharFormat(), mark));
  }
  cursor->setBlockCharFormat(mark);
}

}  // namespace

richtext::CharFormat LetterEditor::CharAtCaret() {
  ShowBox();
  QTextCursor cursor = textCursor();
  if (cursor.hasSelection()) {
    cursor.setPosition(cursor.selectionStart());
    cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    return formats_.CharOf(cursor.charFormat());
  }
  return formats_.CharOf(currentCharFormat());
}

richtext::ParagraphFormat LetterEditor::ParagraphAtCaret() {
  ShowBox();
  return formats_.ParagraphOf(textCursor().blockFormat());
}

std::vector<QTextBlock> LetterEditor::SelectedBlocks() const {
  const QTextCursor cursor = textCursor();
  std::vector<QTextBlock> blocks;
  if (const QTextTable* table = cursor.currentTable(); cursor.hasComplexSelection()) {
    int row = 0, rows = 0, column = 0, columns = 0;
    cursor.selectedTableCells(&row, &rows, &column, &columns);
    for (int i = 0; i < rows * columns; ++i) {
      const int r = row + i / columns, c = column + i % columns;
      const QTextTableCell cell = table->cellAt(r, c);
      if (cell.row() != r || cell.column() != c) continue;
      for (QTextBlock block = cell.firstCursorPosition().block();
           block.isValid() && block.position() <= cell.lastPosition(); block = block.next())
        blocks.push_back(block);
    }
    return blocks;
  }
  QTextBlock block = document()->findBlock(cursor.selectionStart());
  const int end = cursor.selectionEnd();
  for (; block.isValid(); block = block.next()) {
    if (block.position() > end || (block.position() == end && !blocks.empty())) break;
    blocks.push_back(block);
  }
  return blocks;
}

void LetterEditor::ChangeCharacters(const std::function<void(richtext::CharFormat&)>& change) {
  ShowBox();
  const QTextCursor cursor = textCursor();
  if (MayChange(cursor.selectionStart(), cursor.selectionEnd())) FormatCharacters(change);
}

void LetterEditor::ProtectCharacters(bool protect) {
  ShowBox();
  FormatCharacters([=](richtext::CharFormat& format) { format.protect = protect; });
}

void LetterEditor::FormatCharacters(const std::function<void(richtext::CharFormat&)>& change) {
  QTextCursor cursor = textCursor();
  const auto changed = [&](QTextCharFormat format) {
    richtext::CharFormat own = formats_.CharOf(format);
    change(own);
    QTextCharFormat shown = formats_.Char(own);
    for (const int kept : {int(kFieldProperty), int(kObjectProperty), int(kSerialProperty),
                           int(QTextFormat::ObjectType)}) {
      if (format.hasProperty(kept)) shown.setProperty(kept, format.property(kept));
    }
    return shown;
  };
  int start = cursor.selectionStart(), end = cursor.selectionEnd();
  if (cursor.hasComplexSelection()) {
    start = 0;
    end = document()->characterCount();
  }
  TakeWholeCodes(*document(), &start, &end);
  if (start == end) {
    QTextCharFormat format = changed(currentCharFormat());
    format.clearProperty(QTextFormat::ObjectType);
    if (cursor.block().length() == 1) {
      QTextCharFormat mark = cursor.blockCharFormat();
      mark.merge(formats_.Mark(formats_.CharOf(format)));
      SetMark(&cursor, mark);
    }
    return setCurrentCharFormat(format);
  }
  struct Piece {
    int from, to;
    QTextCharFormat format;
  };
  std::vector<Piece> pieces;
  QTextCursor edit(document());
  edit.beginEditBlock();
  for (const QTextBlock& block : SelectedBlocks()) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
      const int from = std::max(it.fragment().position(), start);
      const int to = std::min(it.fragment().position() + it.fragment().length(), end);
      if (from < to) pieces.push_back({from, to, it.fragment().charFormat()});
    }
    if (block.position() + block.length() - 1 < end || block.length() == 1) {
      edit.setPosition(block.position());
      QTextCharFormat mark = edit.blockCharFormat();
      mark.merge(formats_.Mark(formats_.CharOf(changed(mark))));
      SetMark(&edit, mark);
    }
  }
  for (const Piece& piece : pieces) {
    edit.setPosition(piece.from);
    edit.setPosition(piece.to, QTextCursor::KeepAnchor);
    edit.setCharFormat(changed(piece.format));
  }
  edit.endEditBlock();
  emit currentCharFormatChanged(currentCharFormat());
}

void LetterEditor::ChangeParagraphs(const std::function<void(richtext::ParagraphFormat&)>& change) {
  ShowBox();
  const std::vector<QTextBlock> blocks = SelectedBlocks();
  const QTextBlock& last = blocks.back();
  if (!MayChange(blocks.front().position(), last.position() + last.length() - 1)) return;
  QTextCursor edit(document());
  edit.beginEditBlock();
  for (const QTextBlock& block : blocks) {
    richtext::ParagraphFormat format = formats_.ParagraphOf(block.blockFormat());
    change(format);
    edit.setPosition(block.position());
    edit.setBlockFormat(formats_.Paragraph(format));
  }
  edit.endEditBlock();
}

}  // namespace tenora
