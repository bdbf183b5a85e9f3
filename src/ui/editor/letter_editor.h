// The letter as its writer sees it: the text control around a letter's RichTextBox.
#pragma once

#include <QTextBlock>
#include <QTextEdit>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/richtext/rich_text_box.h"
#include "platform/richtext/rich_text_view.h"
#include "ui/editor/codes/code_completer.h"
#include "ui/editor/codes/code_marker.h"
#include "ui/editor/screen/zoom_device.h"
#include "ui/editor/text/letter_formats.h"
#include "ui/editor/text/position_map.h"

namespace tenora {

// The paper that a letter is written on. Lengths are twips.
struct PaperLook {
  bool wraps_at_page = false;  // lines end where they will on paper; else at the window's edge
  int width = 11906;
  int left = 1134, right = 1134, top = 567, bottom = 1134;
};

class LetterEditor : public QTextEdit, private RichTextView {
  Q_OBJECT

 public:
  // The box outlives the editor; what is typed is in the box whenever the box is asked.
  explicit LetterEditor(RichTextBox& box, QWidget* parent = nullptr);
  ~LetterEditor() override;

  RichTextBox& box() { return box_; }
  LetterFormats& formats() { return formats_; }
  // Shows at once what was changed through the box; it happens by itself before the next paint or
  // key.
  void ShowBox();

  // The format that typing has here, and its change for the selection or for what is typed next.
  // A merge code is changed as a whole, also one that the caret stands in.
  richtext::CharFormat CharAtCaret();
  void ChangeCharacters(const std::function<void(richtext::CharFormat&)>& change);
  richtext::ParagraphFormat ParagraphAtCaret();
  void ChangeParagraphs(const std::function<void(richtext::ParagraphFormat&)>& change);
  // Puts parts of a letter, whose numbers are on this letter's tables, in the selection's place.
  void InsertBlocks(const std::vector<richtext::Block>& blocks);
  void InsertPageBreak();
  void PastePlainText();
  void Cut();
  void Undo();
  void Redo();
  // Text that typing and commands leave alone from now on, or no more.
  void ProtectCharacters(bool protect);
  // False, and told in the status bar, where a change of the range would change protected text; an
  // empty range stands for typing there.
  bool MayChange(int start, int end);
  // The paragraphs of the selection, which may be cells of some columns only, or the caret's.
  std::vector<QTextBlock> SelectedBlocks() const;

  // 1 is the size on paper.
  double Zoom() const { return zoom_; }
  void SetZoom(double zoom);
  const PaperLook& Paper() const { return paper_; }
  void SetPaper(const PaperLook& paper);
  // Between the paper's edge and the text, twips.
  int TextLeftMargin() const;

  // The names that may stand between "<<" and ">>": offered while typing, others are marked as
  // unknown.
  void SetCodes(const QStringList& names);
  // Tells which words are misspelt, which are then underlined; empty switches it off.
  void SetMisspelt(std::function<bool(const QString&)> misspelt);

 signals:
  void ZoomChanged(double zoom);
  void PaperChanged();
  // The caret stands where the menu was asked for.
  void MenuWanted(const QPoint& on_screen);

 protected:
  bool event(QEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  QMimeData* createMimeDataFromSelection() const override;
  bool canInsertFromMimeData(const QMimeData* source) const override;
  void insertFromMimeData(const QMimeData* source) override;

 private:
  struct Snapshot {
    std::vector<richtext::Block> blocks;
    PositionMap positions;
  };

  richtext::Document Content() override;
  Range Selection() override;
  void Select(Range range) override;
  void ReplaceSelection(std::string_view utf8) override;
  void BoxChanged(Change change) override;

  const Snapshot& Current();
  void Load(const richtext::Document& letter);
  void PlaceCaret(int start, int length);
  void ContentsChanged(int position, int removed, int added);
  void FormatCharacters(const std::function<void(richtext::CharFormat&)>& change);
  // What is typed next to a field or protected text or in an empty cell takes no part of theirs.
  void CleanTypingFormat();
  QTextCharFormat CleanFormat(const QTextCursor& cursor, const QTextCharFormat& format);
  void TypeOver(const QString& text);
  // False where a key would change protected text.
  bool MayType(const QKeyEvent& event);
  // Qt gives an empty block behind a table no room.
  void ShowEmptyLineBehindTable();
  bool LeaveList(const QKeyEvent& event);
  bool GoToCell(const QKeyEvent& event);
  void LayOutPaper();
  void FitIndentsToZoom();
  void WithoutUndoStep(const std::function<void()>& change);
  QRectF VisiblePart() const;  // of the document

  RichTextBox& box_;
  mutable LetterFormats formats_;  // reading text from elsewhere adds to its tables
  ZoomDevice device_;
  double zoom_ = 1;
  PaperLook paper_;
  CodeMarker* marker_;
  CodeCompleter* completer_;
  std::optional<Change> pending_;
  std::optional<Snapshot> snapshot_;
  bool showing_ = false;
  bool indents_wait_ = false;
  bool looks_in_history_ = false;  // steps that zooming left
  bool told_refusal_ = false;
};

}  // namespace tenora
