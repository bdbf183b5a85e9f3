// The steps that can be undone in a letter. Changes of its looks alone, such as zooming makes, are
// none of them.
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
  // Runs a change of the document that leaves the letter as it is. An untouched letter has nothing
  // to undo afterwards. Behind the writer's own steps Qt keeps the change in its history, which
  // cannot be switched off without losing them: Undo and Redo then pass it over.
  void ChangeLooks(const std::function<void()>& change);

 private:
  void Step(void (QTextEdit::*step)(), bool (QTextDocument::*available)() const);

  EditedLetter& letter_;
  // Qt's commands that changed looks alone and were undone or redone by the step in hand.
  int looks_commands_ = 0;
};

}  // namespace tenora
