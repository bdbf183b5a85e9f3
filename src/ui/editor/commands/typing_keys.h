// What keys do in a letter beyond what they do in any text.
#pragma once

#include <QKeyEvent>
#include <QString>

#include "ui/editor/commands/format_commands.h"
#include "ui/editor/commands/table_commands.h"
#include "ui/editor/document/edited_letter.h"

namespace tenora {

class TypingKeys {
 public:
  enum class Handling {
    kDone,    // nothing is left to do
    kTyped,   // text was typed
    kPassOn,  // the control handles the key as in any text
  };

  // All outlive this object.
  TypingKeys(EditedLetter& letter, FormatCommands& formats, TableCommands& tables)
      : letter_(letter), formats_(formats), tables_(tables) {}

  // Moves between cells, leaves lists, types over selections, and keeps protected text as it is.
  Handling Press(const QKeyEvent& event);
  // To be called when a key has been handled here or by the control.
  void Pressed();
  // Keeps what the last change left of lines at the caret visible, as a part of that change.
  void ShowEmptyLinesBehindTable();

 private:
  bool GoToCell(const QKeyEvent& event);
  // False where the key would change protected text.
  bool MayType(const QKeyEvent& event);
  bool LeaveList(const QKeyEvent& event);
  void TypeOver(const QString& text);
  // The pad of an empty line is not there for the keys that delete; true where nothing is left to
  // do.
  bool StepOverPad(const QKeyEvent& event, QTextCursor* cursor);

  EditedLetter& letter_;
  FormatCommands& formats_;
  TableCommands& tables_;
  int revision_ = 0;  // of the document, before the key
};

}  // namespace tenora
