// The text control that a letter is written in: the letter of a RichTextBox, with the commands, the
// paper and the merge codes around it.
#pragma once

#include <QMenu>
#include <QStringList>
#include <QTextEdit>
#include <functional>
#include <vector>

#include "platform/richtext/rich_text_box.h"
#include "ui/editor/codes/code_completer.h"
#include "ui/editor/codes/code_marker.h"
#include "ui/editor/commands/format_commands.h"
#include "ui/editor/commands/letter_search.h"
#include "ui/editor/commands/picture_commands.h"
#include "ui/editor/commands/table_commands.h"
#include "ui/editor/commands/typing_keys.h"
#include "ui/editor/document/edited_letter.h"
#include "ui/editor/document/undo_history.h"
#include "ui/editor/screen/page_sheet.h"
#include "ui/editor/screen/paper_layout.h"
#include "ui/editor/screen/picture_handles.h"

namespace tenora {

class LetterEditor : public QTextEdit {
  Q_OBJECT

 public:
  // The box outlives the editor; what is typed is in the box whenever the box is asked.
  explicit LetterEditor(RichTextBox& box, QWidget* parent = nullptr);

  LetterFormats& formats() { return letter_.formats(); }
  FormatCommands& formatting() { return formatting_; }
  TableCommands& tables() { return tables_; }
  LetterSearch& search() { return search_; }
  PictureCommands& pictures() { return pictures_; }
  PaperLayout& paper() { return paper_; }

  // Shows at once what was changed through the box; it happens by itself before the next paint or
  // key.
  void ShowBox() { letter_.ShowBox(); }
  // The letter as it is now is on the disk.
  void MarkSaved() { letter_.MarkSaved(); }
  // Nor is any state of it that undo or redo may bring back.
  void MarkUnsaved() { letter_.MarkUnsaved(); }
  // Where the pages after the first begin, as positions in the letter.
  void ShowPageStarts(const std::vector<int>& positions);
  void InsertPageBreak();
  void PastePlainText();
  void Cut();
  // The files of this computer among what is dragged or pasted.
  static QStringList FilesOf(const QMimeData& data);
  // Puts the files that are pictures at the caret; the others are left to FilesGiven.
  void InsertFiles(const QStringList& files);
  void Undo() { history_.Undo(); }
  void Redo() { history_.Redo(); }

  // The names that are known between "<<" and ">>": they are offered while typing, others are
  // marked as unknown.
  void SetCodes(const QStringList& names);
  // What is known about words; without `misspelt` none is checked.
  struct Spelling {
    std::function<bool(const QString&)> misspelt;  // such words are underlined
    std::function<QStringList(const QString&)> suggestions;
    std::function<void(const QString&)> add, ignore;
  };
  void SetSpelling(Spelling spelling);
  // What can be done about the misspelt word at the caret, if there is one.
  void AddSpellingTo(QMenu& menu);

 signals:
  // Undo or redo has brought back the letter as it was last marked as saved.
  void SavedAgain();
  // A context menu was asked for; the caret is already where it was asked for.
  void MenuWanted(const QPoint& on_screen);
  // Files that are no pictures were dropped on the letter or pasted into it.
  void FilesGiven(const QStringList& files);

 protected:
  bool event(QEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  QMimeData* createMimeDataFromSelection() const override;
  bool canInsertFromMimeData(const QMimeData* source) const override;
  void insertFromMimeData(const QMimeData* source) override;

 private:
  // Scrolls up to the sheet's edge where the caret is in the first line.
  void ShowTop();
  // True where the selection, or the caret's place, may be changed.
  bool MayChangeSelection();

  mutable EditedLetter letter_;  // copying adds to the tables of its formats
  UndoHistory history_{letter_};
  FormatCommands formatting_{letter_};
  TableCommands tables_{letter_, formatting_};
  LetterSearch search_{letter_};
  PictureCommands pictures_{letter_, [this] { return paper_.PageTextWidth(); }};
  PictureHandles handles_{letter_, pictures_};
  TypingKeys keys_{letter_, formatting_, tables_};
  PaperLayout paper_{letter_, history_};
  PageSheet sheet_{letter_, paper_};
  CodeMarker* marker_;
  Spelling spelling_;
  CodeCompleter* completer_;
};

}  // namespace tenora
