// Undo and redo of a letter. Changes of its looks alone, such as those of zooming, are not steps.
#pragma once

#include <functional>

#include "ui/editor/document/edited_letter.h"

namespace tenora {

class UndoHistory {
 public:
  // The letter outlives this object.
  explicit UndoHistory(EditedLetter& letter) : letter_(letter) {}
  UndoHistory(const UndoHistory&) = delete;
  UndoHistory& operator=(const UndoHistory&) = delete;

  void Undo();
  void Redo();
  // Runs a change of the document that leaves the letter as it is. In a letter without a history it
  // leaves nothing to undo. Otherwise Qt records it, since its history cannot be switched off
  // without losing the writer's steps, and Undo and Redo skip it.
  void ChangeLooks(const std::function<void()>& change);

 private:
  void Step(void (QTextEdit::*step)(), bool (QTextDocument::*available)() const);

  EditedLetter& letter_;
  // How many of Qt's commands that the current step has undone or redone changed looks alone.
  int looks_commands_ = 0;
};

}  // namespace tenora
