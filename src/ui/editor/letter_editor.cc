#include "ui/editor/letter_editor.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QStatusTipEvent>
#include <QTextBlock>
#include <algorithm>
#include <utility>

#include "platform/richtext/document_text.h"
#include "platform/richtext/editing.h"
#include "ui/editor/clipboard/letter_clipboard.h"
#include "ui/editor/document/letter_loader.h"
#include "ui/editor/document/letter_reader.h"
#include "ui/editor/document/letter_update.h"
#include "ui/editor/screen/inline_objects.h"
#include "ui/editor/text/protected_text.h"

namespace tenora {

LetterEditor::LetterEditor(RichTextBox& box, QWidget* parent) : QTextEdit(parent), box_(box) {
  setAccessibleName(tr("Letter"));
  marker_ = new CodeMarker(document());
  completer_ = new CodeCompleter(*this);
  setFrameShape(QFrame::NoFrame);
  document()->documentLayout()->registerHandler(kLetterObject, new InlineObjects(document()));
  connect(document(), &QTextDocument::contentsChange, this, &LetterEditor::ContentsChanged);
  connect(
      document(), &QTextDocument::redoAvailable, this,
      [this](bool redo) {
        if (!redo && indents_wait_) FitIndentsToZoom();
      },
      Qt::QueuedConnection);
  connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, &LetterEditor::LayOutPaper,
          Qt::QueuedConnection);
  SetPaper(PaperLook());
  SetZoom(1);
  box_.AttachView(this);
  ShowBox();
}

LetterEditor::~LetterEditor() { box_.AttachView(nullptr); }

void LetterEditor::BoxChanged(Change change) {
  const bool waiting = pending_.has_value();
  if (pending_ != Change::kNewLetter) pending_ = change;
  if (!waiting) QMetaObject::invokeMethod(this, &LetterEditor::ShowBox, Qt::QueuedConnection);
}

void LetterEditor::ShowBox() {
  if (!pending_) return;
  const Change change = *std::exchange(pending_, std::nullopt);
  richtext::Document letter = box_.Document();
  const int start = box_.SelStart(), length = box_.SelLength();
  showing_ = true;
  if (change == Change::kNewLetter) {
    Load(letter);
  } else {
    formats_.Adopt(&letter);
    const Snapshot before = Current();
    richtext::Document head = letter;
    formats_.SetHead(std::move(head));
    UpdateLetter(document(), &formats_, before.blocks, before.positions, letter.blocks);
  }
  showing_ = false;
  snapshot_.reset();
  box_.ViewShown();
  PlaceCaret(start, length);
}

void LetterEditor::Load(const richtext::Document& letter) {
  formats_.SetHead(letter);
  document()->clear();
  document()->setIndentWidth(PixelsOfTwips(1));
  LayOutPaper();
  document()->setUndoRedoEnabled(false);
  QTextCursor cursor(document());
  cursor.beginEditBlock();
  LetterLoader(formats_).Insert(&cursor, letter.blocks, true);
  cursor.endEditBlock();
  document()->setUndoRedoEnabled(true);
  looks_in_history_ = false;
}

const LetterEditor::Snapshot& LetterEditor::Current() {
  if (!snapshot_) {
    LetterReader reader(formats_);
    snapshot_.emplace();
    snapshot_->blocks = reader.Read(*document());
    snapshot_->positions = reader.positions();
  }
  return *snapshot_;
}

richtext::Document LetterEditor::Content() {
  std::vector<richtext::Block> blocks = Current().blocks;
  richtext::Document letter = formats_.head();
  letter.blocks = std::move(blocks);
  return letter;
}

RichTextView::Range LetterEditor::Selection() {
  const QTextCursor cursor = textCursor();
  const PositionMap& positions = Current().positions;
  const int start = positions.ToBox(cursor.selectionStart());
  return {start, positions.ToBox(cursor.selectionEnd()) - start};
}

void LetterEditor::Select(Range range) { PlaceCaret(range.start, range.length); }

void LetterEditor::PlaceCaret(int start, int length) {
  const PositionMap& positions = Current().positions;
  const int last = document()->characterCount() - 1;
  QTextCursor cursor = textCursor();
  const int from = std::clamp(positions.ToQt(std::max(start, 0)), 0, last);
  cursor.setPosition(from);
  if (length > 0)
    cursor.setPosition(std::clamp(positions.ToQt(start + length), from, last),
                       QTextCursor::KeepAnchor);
  setTextCursor(cursor);
}

void LetterEditor::ReplaceSelection(std::string_view utf8) {
  ShowBox();
  QTextCursor cursor = textCursor();
  if (!MayChange(cursor.selectionStart(), cursor.selectionEnd())) return;
  QTextCursor model = cursor;
  if (cursor.hasSelection()) {
    model.setPosition(cursor.selectionStart());
    model.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
  }
  CleanTypingFormat();
  const richtext::CharFormat format =
      formats_.CharOf(cursor.hasSelection() ? model.charFormat() : currentCharFormat());
  const auto field = SharedProperty<richtext::Field>(
      cursor.hasSelection() ? model.charFormat() : currentCharFormat(), kFieldProperty);
  richtext::Document text = richtext::DocumentOfText(utf8);
  for (richtext::Block& block : text.blocks) {
    auto& paragraph = std::get<richtext::Paragraph>(block);
    paragraph.format = ParagraphAtCaret();
    paragraph.mark = format;
    for (richtext::Run& run : paragraph.runs) {
      run.format = format;
      run.field = field;
    }
  }
  InsertBlocks(text.blocks);
}

void LetterEditor::InsertBlocks(const std::vector<richtext::Block>& blocks) {
  ShowBox();
  QTextCursor cursor = textCursor();
  if (!MayChange(cursor.selectionStart(), cursor.selectionEnd())) return;
  cursor.beginEditBlock();
  cursor.removeSelectedText();
  const bool only_text = blocks.size() == 1 && blocks.front().index() == 0;
  LetterLoader(formats_).Insert(&cursor, blocks, !only_text && cursor.block().length() == 1);
  cursor.endEditBlock();
  setTextCursor(cursor);
}

void LetterEditor::InsertPageBreak() {
  richtext::Paragraph paragraph;
  richtext::Run run;
  run.format = CharAtCaret();
  run.text = "\f";
  paragraph.runs.push_back(std::move(run));
  InsertBlocks({std::move(paragraph)});
}

void LetterEditor::PastePlainText() {
  const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
  if (offered == nullptr || !offered->hasText()) return;
  QMimeData text;
  text.setText(offered->text());
  insertFromMimeData(&text);
}

void LetterEditor::Cut() {
  ShowBox();
  QTextCursor cursor = textCursor();
  if (!cursor.hasSelection() || !MayChange(cursor.selectionStart(), cursor.selectionEnd())) return;
  QTextEdit::cut();
}

void LetterEditor::dropEvent(QDropEvent* event) {
  const QTextCursor cursor = textCursor();
  const bool own = event->source() == this || event->source() == viewport();
  // Protected text is copied, not moved.
  if (own && TouchesProtected(*document(), cursor.selectionStart(), cursor.selectionEnd()))
    event->setDropAction(Qt::CopyAction);
  QTextEdit::dropEvent(event);
}

void LetterEditor::contextMenuEvent(QContextMenuEvent* event) {
  ShowBox();
  if (event->reason() != QContextMenuEvent::Mouse)
    return emit MenuWanted(viewport()->mapToGlobal(cursorRect().bottomLeft()));
  const QTextCursor there = cursorForPosition(event->pos()), here = textCursor();
  if (there.position() < here.selectionStart() || there.position() > here.selectionEnd())
    setTextCursor(there);
  emit MenuWanted(event->globalPos());
}

bool LetterEditor::MayChange(int start, int end) {
  const bool refused = TouchesProtected(*document(), start, end);
  if (refused || told_refusal_) {
    QStatusTipEvent tip(refused ? tr("This text is protected and cannot be changed.") : QString());
    QApplication::sendEvent(this, &tip);
  }
  told_refusal_ = refused;
  return !refused;
}

QMimeData* LetterEditor::createMimeDataFromSelection() const {
  return CopySelection(textCursor(), formats_);
}

bool LetterEditor::canInsertFromMimeData(const QMimeData* source) const {
  return CanPaste(*source);
}

void LetterEditor::insertFromMimeData(const QMimeData* source) {
  ShowBox();
  CleanTypingFormat();
  const auto blocks = BlocksOf(*source, formats_, CharAtCaret());
  if (!blocks.empty()) InsertBlocks(blocks);
  ensureCursorVisible();
}

// A step that changed the looks alone, as zooming leaves them, is passed over.
void LetterEditor::Undo() {
  ShowBox();
  bool passed = true;
  while (passed && document()->isUndoAvailable()) {
    const std::vector<richtext::Block> before = Current().blocks;
    undo();
    passed = looks_in_history_ && SameBlocks(before, Current().blocks);
  }
}

void LetterEditor::Redo() {
  ShowBox();
  bool passed = true;
  while (passed && document()->isRedoAvailable()) {
    const std::vector<richtext::Block> before = Current().blocks;
    redo();
    passed = looks_in_history_ && SameBlocks(before, Current().blocks);
  }
}

void LetterEditor::ContentsChanged(int, int, int) {
  snapshot_.reset();
  if (!showing_) box_.ViewEdited();
}

bool LetterEditor::event(QEvent* event) {
  if (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride ||
      event->type() == QEvent::InputMethod)
    ShowBox();
  return QTextEdit::event(event);
}

bool LetterEditor::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::Paint || event->type() == QEvent::MouseButtonPress ||
      event->type() == QEvent::Drop)
    ShowBox();
  return QTextEdit::viewportEvent(event);
}

void LetterEditor::SetCodes(const QStringList& names) {
  completer_->SetCodes(names);
  marker_->SetCodes(QSet<QString>(names.begin(), names.end()));
}

void LetterEditor::SetMisspelt(std::function<bool(const QString&)> misspelt) {
  marker_->SetMisspelt(std::move(misspelt));
}

}  // namespace tenora
