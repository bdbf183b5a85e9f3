// The letter of a RichTextBox in the text control that edits it. Either side may be the newer one:
// what is typed is in the box whenever the box is asked, and what is changed through the box is
// shown before the control next paints or takes a key.
#pragma once

#include <QObject>
#include <QTextDocument>
#include <QTextEdit>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/richtext/rich_text_box.h"
#include "platform/richtext/rich_text_view.h"
#include "ui/editor/text/letter_formats.h"
#include "ui/editor/text/position_map.h"

namespace tenora {

class EditedLetter : public QObject, private RichTextView {
  Q_OBJECT

 public:
  // Both outlive this object.
  EditedLetter(RichTextBox& box, QTextEdit& control);
  ~EditedLetter() override;

  RichTextBox& box() { return box_; }
  QTextEdit& control() { return control_; }
  LetterFormats& formats() { return formats_; }

  // Shows at once what was changed through the box.
  void ShowBox();
  // Where a position in the letter is in the document that the control shows.
  int ShownAt(int position) { return Positions().ToQt(position); }
  // Puts parts of a letter, whose numbers are on this letter's tables, in the selection's place.
  void InsertBlocks(const std::vector<richtext::Block>& blocks);
  // False, with a message in the status bar, where a change of the range would change protected
  // text; an empty range means typing there.
  bool MayChange(int start, int end);
  // Runs a change of the document that is no change of the letter.
  void WithoutEdit(const std::function<void()>& change);
  // The letter as it is now is on the disk.
  void MarkSaved();
  // No state of the letter is known to be there, until the next MarkSaved.
  void MarkUnsaved();

 signals:
  // Undo or redo has brought back the letter as it was last marked as saved.
  void SavedAgain();
  // The document has been emptied and is about to be filled with another letter.
  void Cleared();

 private:
  // The letter as it was last read out of the document.
  struct Reading {
    std::vector<richtext::Block> blocks;
    PositionMap positions;
    bool has_blocks = false;  // not when they have been handed over
  };

  richtext::Document Content() override;
  Range Selection() override;
  void Select(Range range) override;
  void ReplaceSelection(std::string_view utf8) override;
  void BoxChanged(Change change) override;

  Reading& Read();
  const PositionMap& Positions();
  std::vector<richtext::Block> TakeBlocks();
  void Load(richtext::Document letter);
  void Update(richtext::Document letter);
  void ContentsChanged();

  RichTextBox& box_;
  QTextEdit& control_;
  LetterFormats formats_;
  std::optional<Change> pending_;  // a change of the box that is not shown yet
  std::optional<Reading> reading_;
  bool editing_ = true;  // a change of the document is one of the letter
  bool pending_is_saved_ = false;
  bool told_refusal_ = false;
};

}  // namespace tenora
