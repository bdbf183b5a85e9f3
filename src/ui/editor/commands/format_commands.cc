#include "ui/editor/commands/format_commands.h"

#include <QTextDocument>
#include <QTextTable>
#include <algorithm>
#include <utility>

#include "ui/editor/codes/merge_code_spans.h"
#include "ui/editor/text/paragraph_mark.h"
#include "ui/editor/text/text_properties.h"
#include "ui/editor/text/typing_format.h"

namespace tenora {
richtext::CharFormat FormatCommands::CharAtCaret() {
  letter_.ShowBox();
  return letter_.formats().CharOf(FormatAtCaret(letter_.control()));
}

richtext::ParagraphFormat FormatCommands::ParagraphAtCaret() {
  letter_.ShowBox();
  return letter_.formats().ParagraphOf(letter_.control().textCursor().blockFormat());
}

std::vector<QTextBlock> FormatCommands::SelectedBlocks() const {
  const QTextCursor cursor = letter_.control().textCursor();
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
  QTextBlock block = letter_.control().document()->findBlock(cursor.selectionStart());
  const int end = cursor.selectionEnd();
  for (; block.isValid(); block = block.next()) {
    if (block.position() > end || (block.position() == end && !blocks.empty())) break;
    blocks.push_back(block);
  }
  return blocks;
}

void FormatCommands::ChangeCharacters(const std::function<void(richtext::CharFormat&)>& change) {
  letter_.ShowBox();
  const QTextCursor cursor = letter_.control().textCursor();
  if (letter_.MayChange(cursor.selectionStart(), cursor.selectionEnd())) FormatCharacters(change);
}

void FormatCommands::ProtectCharacters(bool protect) {
  letter_.ShowBox();
  FormatCharacters([=](richtext::CharFormat& format) { format.protect = protect; });
}

void FormatCommands::FormatCharacters(const std::function<void(richtext::CharFormat&)>& change) {
  QTextEdit& control = letter_.control();
  LetterFormats& formats = letter_.formats();
  QTextCursor cursor = control.textCursor();
  const auto changed = [&](const QTextCharFormat& format) {
    richtext::CharFormat own = formats.CharOf(format);
    change(own);
    QTextCharFormat shown = formats.Char(own);
    for (const int kept : {int(kFieldProperty), int(kObjectProperty), int(kSerialProperty),
                           int(QTextFormat::ObjectType), int(QTextFormat::ObjectIndex)}) {
      if (format.hasProperty(kept)) shown.setProperty(kept, format.property(kept));
    }
    return shown;
  };
  int start = cursor.selectionStart(), end = cursor.selectionEnd();
  if (cursor.hasComplexSelection()) {
    start = 0;
    end = control.document()->characterCount();
  }
  TakeWholeCodes(*control.document(), &start, &end);
  if (start != end) {
    FormatRange(start, end, changed);
    return;
  }
  QTextCharFormat format = changed(control.currentCharFormat());
  format.clearProperty(QTextFormat::ObjectType);
  format.clearProperty(QTextFormat::ObjectIndex);
  if (cursor.block().length() == 1) {
    QTextCharFormat mark = cursor.blockCharFormat();
    mark.merge(formats.Mark(formats.CharOf(format)));
    SetParagraphMark(&cursor, mark);
  }
  control.setCurrentCharFormat(format);
}

void FormatCommands::FormatRange(
    int start, int end, const std::function<QTextCharFormat(const QTextCharFormat&)>& changed) {
  struct Piece {
    int from, to;
    QTextCharFormat format;
  };
  QTextEdit& control = letter_.control();
  LetterFormats& formats = letter_.formats();
  std::vector<Piece> pieces;
  QTextCursor edit(control.document());
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
      mark.merge(formats.Mark(formats.CharOf(changed(mark))));
      SetParagraphMark(&edit, mark);
    }
  }
  for (const Piece& piece : pieces) {
    edit.setPosition(piece.from);
    edit.setPosition(piece.to, QTextCursor::KeepAnchor);
    edit.setCharFormat(changed(piece.format));
  }
  for (const QTextBlock& block : SelectedBlocks()) {
    edit.setPosition(block.position());
    formats.FitLines(&edit);
  }
  edit.endEditBlock();
  emit control.currentCharFormatChanged(control.currentCharFormat());
}

void FormatCommands::ChangeParagraphs(
    const std::function<void(richtext::ParagraphFormat&)>& change) {
  letter_.ShowBox();
  LetterFormats& formats = letter_.formats();
  const std::vector<QTextBlock> blocks = SelectedBlocks();
  const QTextBlock& last = blocks.back();
  if (!letter_.MayChange(blocks.front().position(), last.position() + last.length() - 1)) return;
  QTextCursor edit(letter_.control().document());
  edit.beginEditBlock();
  for (const QTextBlock& block : blocks) {
    richtext::ParagraphFormat format = formats.ParagraphOf(block.blockFormat());
    change(format);
    edit.setPosition(block.position());
    edit.setBlockFormat(formats.Fitted(format, block));
  }
  edit.endEditBlock();
}

}  // namespace tenora
