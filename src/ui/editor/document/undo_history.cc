#include "ui/editor/document/undo_history.h"

#include <QTextCursor>
#include <QTextDocument>
#include <cstdlib>

namespace tenora {
namespace {

// Follows a change of looks in Qt's history and counts its commands when they are undone or redone.
class LooksCommand : public QAbstractUndoItem {
 public:
  LooksCommand(int commands, int* total) : commands_(commands), total_(*total) {}
  void undo() override { total_ += commands_; }
  void redo() override { total_ += commands_; }

 private:
  int commands_;  // this one included
  int& total_;
};

}  // namespace

void UndoHistory::Undo() { Step(&QTextEdit::undo, &QTextDocument::isUndoAvailable); }

void UndoHistory::Redo() { Step(&QTextEdit::redo, &QTextDocument::isRedoAvailable); }

void UndoHistory::Step(void (QTextEdit::*step)(), bool (QTextDocument::*available)() const) {
  letter_.ShowBox();
  QTextEdit& control = letter_.control();
  const QTextDocument& document = *control.document();
  bool passed = true;
  while (passed && (document.*available)()) {
    const int before = document.availableUndoSteps();
    looks_commands_ = 0;
    (control.*step)();
    const int commands = std::abs(document.availableUndoSteps() - before);
    passed = commands > 0 && commands == looks_commands_;
  }
}

void UndoHistory::ChangeLooks(const std::function<void()>& change) {
  letter_.WithoutEdit([&] {
    QTextDocument* const document = letter_.control().document();
    const bool modified = document->isModified();
    if (!document->isUndoAvailable() && !document->isRedoAvailable()) {
      document->setUndoRedoEnabled(false);
      change();
      document->setUndoRedoEnabled(true);
    } else {
      QTextCursor cursor(document);
      cursor.joinPreviousEditBlock();
      const int before = document->availableUndoSteps();
      change();
      const int commands = document->availableUndoSteps() - before;
      if (commands > 0) document->appendUndoItem(new LooksCommand(commands + 1, &looks_commands_));
      cursor.endEditBlock();
    }
    if (!modified) document->setModified(false);
  });
}

}  // namespace tenora
