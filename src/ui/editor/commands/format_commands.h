// The formats at the caret, and changes of the formats of what is selected.
#pragma once

#include <QTextBlock>
#include <functional>
#include <vector>

#include "ui/editor/document/edited_letter.h"

namespace tenora {

class FormatCommands {
 public:
  // The letter outlives this object.
  explicit FormatCommands(EditedLetter& letter) : letter_(letter) {}

  // The format that typing has here; of a selection, that of its first character.
  richtext::CharFormat CharAtCaret();
  // Changes the selection, or what is typed next. A merge code is changed as a whole, also one that
  // the caret is in. Protected text stays as it is.
  void ChangeCharacters(const std::function<void(richtext::CharFormat&)>& change);
  richtext::ParagraphFormat ParagraphAtCaret();
  // Changes the paragraphs of the selection, or the caret's, as one undo step.
  void ChangeParagraphs(const std::function<void(richtext::ParagraphFormat&)>& change);
  // Protects the selection from typing and from other commands, or makes it free again.
  void ProtectCharacters(bool protect);

 private:
  // The paragraphs of the selection, which may be cells of some columns only, or the caret's.
  std::vector<QTextBlock> SelectedBlocks() const;
  void FormatCharacters(const std::function<void(richtext::CharFormat&)>& change);
  void FormatRange(int start, int end,
                   const std::function<QTextCharFormat(const QTextCharFormat&)>& changed);

  EditedLetter& letter_;
};

}  // namespace tenora
