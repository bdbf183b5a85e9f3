#include "ui/editor/letter_editor.h"

#include <QAbstractTextDocumentLayout>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextTable>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/richtext/document_text.h"
#include "platform/richtext/editing.h"
#include "ui/editor/inline_objects.h"
#include "ui/editor/letter_clipboard.h"
#include "ui/editor/letter_loader.h"
#include "ui/editor/letter_overlay.h"
#include "ui/editor/letter_reader.h"
#include "ui/editor/letter_update.h"
#include "ui/editor/table_commands.h"

namespace tenora {
namespace {

constexpr double kLeastZoom = 0.25, kMostZoom = 5;
constexpr int kWindowMargin = 240;  // twips around text that wraps at the window

int ScreenDpi() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen == nullptr ? 96 : static_cast<int>(std::lround(screen->logicalDotsPerInchY()));
}

}  // namespace

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

void LetterEditor::ContentsChanged(int, int, int) {
  snapshot_.reset();
  if (!showing_) box_.ViewEdited();
}

richtext::CharFormat LetterEditor::CharAtCaret() {
  ShowBox();
  QTextCursor cursor = textCursor();
  if (cursor.hasSelection()) {
    cursor.setPosition(cursor.selectionStart());
    cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    return formats_.CharOf(cursor.charFormat());
  }
  return formats_.CharOf(currentCharFormat());
}

richtext::ParagraphFormat LetterEditor::ParagraphAtCaret() {
  ShowBox();
  return formats_.ParagraphOf(textCursor().blockFormat());
}

std::vector<QTextBlock> LetterEditor::SelectedBlocks() const {
  const QTextCursor cursor = textCursor();
  std::vector<QTextBlock> blocks;
  QTextBlock block = document()->findBlock(cursor.selectionStart());
  const int end = cursor.selectionEnd();
  for (; block.isValid(); block = block.next()) {
    if (block.position() > end || (block.position() == end && !blocks.empty())) break;
    blocks.push_back(block);
  }
  return blocks;
}

void LetterEditor::ChangeCharacters(const std::function<void(richtext::CharFormat&)>& change) {
  ShowBox();
  QTextCursor cursor = textCursor();
  const auto changed = [&](QTextCharFormat format) {
    richtext::CharFormat own = formats_.CharOf(format);
    change(own);
    QTextCharFormat shown = formats_.Char(own);
    for (const int kept : {int(kFieldProperty), int(kObjectProperty), int(kSerialProperty),
                           int(QTextFormat::ObjectType)}) {
      if (format.hasProperty(kept)) shown.setProperty(kept, format.property(kept));
    }
    return shown;
  };
  int start = cursor.selectionStart(), end = cursor.selectionEnd();
  TakeWholeCodes(*document(), &start, &end);
  if (start == end) {
    QTextCharFormat format = changed(currentCharFormat());
    format.clearProperty(QTextFormat::ObjectType);
    if (cursor.block().length() == 1) {
      QTextCharFormat mark = cursor.blockCharFormat();
      mark.merge(formats_.Mark(formats_.CharOf(format)));
      cursor.setBlockCharFormat(mark);
    }
    return setCurrentCharFormat(format);
  }
  struct Piece {
    int from, to;
    QTextCharFormat format;
  };
  std::vector<Piece> pieces;
  QTextCursor edit(document());
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
      mark.merge(formats_.Mark(formats_.CharOf(changed(mark))));
      edit.setBlockCharFormat(mark);
    }
  }
  for (const Piece& piece : pieces) {
    edit.setPosition(piece.from);
    edit.setPosition(piece.to, QTextCursor::KeepAnchor);
    edit.setCharFormat(changed(piece.format));
  }
  edit.endEditBlock();
  emit currentCharFormatChanged(currentCharFormat());
}

void LetterEditor::ChangeParagraphs(const std::function<void(richtext::ParagraphFormat&)>& change) {
  ShowBox();
  QTextCursor edit(document());
  edit.beginEditBlock();
  for (const QTextBlock& block : SelectedBlocks()) {
    richtext::ParagraphFormat format = formats_.ParagraphOf(block.blockFormat());
    change(format);
    edit.setPosition(block.position());
    edit.setBlockFormat(formats_.Paragraph(format));
  }
  edit.endEditBlock();
}

void LetterEditor::SetZoom(double zoom) {
  zoom_ = std::clamp(zoom, kLeastZoom, kMostZoom);
  device_.SetDpi(static_cast<int>(std::lround(ScreenDpi() * zoom_)));
  QAbstractTextDocumentLayout* layout = document()->documentLayout();
  layout->setPaintDevice(&device_);
  LayOutPaper();
  formats_.SetZoom(zoom_);
  FitIndentsToZoom();
  document()->markContentsDirty(0, document()->characterCount());
  emit ZoomChanged(zoom_);
}

// Waits while there is something to redo, which a change of the document would drop.
void LetterEditor::FitIndentsToZoom() {
  indents_wait_ = document()->isRedoAvailable();
  if (indents_wait_) return;
  WithoutUndoStep([this] {
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
      const QTextBlockFormat format = block.blockFormat();
      if (format.textIndent() == 0 && format.rightMargin() == 0) continue;
      if (format.hasProperty(kParagraphProperty))
        QTextCursor(block).setBlockFormat(formats_.Paragraph(formats_.ParagraphOf(format)));
    }
  });
}

// Changes of the looks alone leave nothing to undo in an untouched letter; behind the writer's own
// steps Qt keeps them as a step, as its history cannot be left out for a while.
void LetterEditor::WithoutUndoStep(const std::function<void()>& change) {
  const bool was_showing = std::exchange(showing_, true);
  const bool has_history = document()->isUndoAvailable() || document()->isRedoAvailable();
  QTextCursor cursor(document());
  if (has_history)
    cursor.joinPreviousEditBlock();
  else
    document()->setUndoRedoEnabled(false);
  change();
  if (has_history)
    cursor.endEditBlock();
  else
    document()->setUndoRedoEnabled(true);
  showing_ = was_showing;
}

void LetterEditor::SetPaper(const PaperLook& paper) {
  paper_ = paper;
  QPalette colours = palette();
  colours.setColor(QPalette::Base, paper.paper);
  colours.setColor(QPalette::Text, paper.text);
  setPalette(colours);
  LayOutPaper();
  emit PaperChanged();
}

int LetterEditor::TextLeftMargin() const {
  return paper_.wraps_at_page ? paper_.left : kWindowMargin;
}

void LetterEditor::LayOutPaper() {
  const bool was_showing = std::exchange(showing_, true);
  const bool page = paper_.wraps_at_page;
  QTextFrameFormat format = document()->rootFrame()->frameFormat();
  QTextFrameFormat wanted = format;
  wanted.setLeftMargin(PixelsOfTwips(page ? paper_.left : kWindowMargin));
  wanted.setRightMargin(PixelsOfTwips(page ? paper_.right : kWindowMargin));
  wanted.setTopMargin(PixelsOfTwips(page ? paper_.top : kWindowMargin));
  wanted.setBottomMargin(PixelsOfTwips(page ? paper_.bottom : kWindowMargin));
  if (wanted != format) WithoutUndoStep([&] { document()->rootFrame()->setFrameFormat(wanted); });
  int room = 0;  // beside the paper
  if (page) {
    const int width = static_cast<int>(std::lround(PixelsOfTwips(paper_.width) * zoom_));
    setLineWrapMode(QTextEdit::FixedPixelWidth);
    setLineWrapColumnOrWidth(width);
    const bool scrolls = verticalScrollBar()->maximum() > 0;
    room = contentsRect().width() - (scrolls ? verticalScrollBar()->sizeHint().width() : 0) - width;
    room = std::max(room, 0);
  } else {
    setLineWrapMode(QTextEdit::WidgetWidth);
  }
  const QMargins ground(room / 2, 0, room - room / 2, 0);
  if (viewportMargins() != ground) setViewportMargins(ground);
  showing_ = was_showing;
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

void LetterEditor::keyPressEvent(QKeyEvent* event) {
  // The list of merge codes takes its keys itself once the editor leaves them alone.
  if (completer_->TakesKey(*event)) return event->ignore();
  if (LeaveList(*event) || GoToCell(*event)) return;
  if (event->key() == Qt::Key_Backspace && !textCursor().hasSelection() &&
      textCursor().atBlockStart()) {
    // Qt would take it for a smaller indent.
    textCursor().deletePreviousChar();
    return;
  }
  CleanTypingFormat();
  QTextEdit::keyPressEvent(event);
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) ShowEmptyLineBehindTable();
  completer_->Typed(*event);
}

void LetterEditor::inputMethodEvent(QInputMethodEvent* event) {
  const QString text = event->commitString();
  if (!text.isEmpty()) CleanTypingFormat();
  QTextEdit::inputMethodEvent(event);
  if (!text.isEmpty()) completer_->Typed(QKeyEvent(QEvent::KeyPress, 0, Qt::NoModifier, text));
}

bool LetterEditor::GoToCell(const QKeyEvent& event) {
  if (!CaretInTable(*this)) return false;
  const bool forth = event.key() == Qt::Key_Tab && event.modifiers() == Qt::NoModifier;
  if (!forth && event.key() != Qt::Key_Backtab) return false;
  MoveToCell(*this, forth ? Side::kAfter : Side::kBefore);
  return true;
}

void LetterEditor::ShowEmptyLineBehindTable() {
  const QTextBlock empty = textCursor().block().previous();
  if (!empty.isValid() || empty.length() != 1 || !empty.previous().isValid()) return;
  const QTextTable* table = QTextCursor(empty.previous()).currentTable();
  if (table == nullptr || table->lastPosition() + 1 != empty.position()) return;
  QTextCursor cursor(empty);
  cursor.joinPreviousEditBlock();
  LetterLoader(formats_).InsertObject(&cursor, {}, formats_.CharOf(empty.charFormat()), nullptr);
  cursor.endEditBlock();
}

void LetterEditor::SetCodes(const QStringList& names) {
  completer_->SetCodes(names);
  marker_->SetCodes(QSet<QString>(names.begin(), names.end()));
}

void LetterEditor::SetMisspelt(std::function<bool(const QString&)> misspelt) {
  marker_->SetMisspelt(std::move(misspelt));
}

bool LetterEditor::LeaveList(const QKeyEvent& event) {
  const QTextCursor cursor = textCursor();
  if (cursor.hasSelection() || !cursor.atBlockStart()) return false;
  const bool enter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
  if (event.key() != Qt::Key_Backspace && !(enter && cursor.atBlockEnd())) return false;
  if (ParagraphAtCaret().bullet.kind == richtext::Bullet::Kind::kNone) return false;
  ChangeParagraphs([](richtext::ParagraphFormat& format) {
    format.bullet = {};
    format.left_indent = format.first_indent = 0;
  });
  return true;
}

void LetterEditor::CleanTypingFormat() {
  const QTextCursor cursor = textCursor();
  const QTextCharFormat format = currentCharFormat();
  bool clean = !format.hasProperty(kCellProperty) && !format.hasProperty(kObjectProperty);
  const auto field = SharedProperty<richtext::Field>(format, kFieldProperty);
  if (field != nullptr && !cursor.hasSelection()) {
    QTextCursor next = cursor;
    next.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    clean = clean && !cursor.atBlockEnd() &&
            SharedProperty<richtext::Field>(next.charFormat(), kFieldProperty) == field;
  }
  if (!clean) setCurrentCharFormat(formats_.Char(formats_.CharOf(format)));
}

void LetterEditor::paintEvent(QPaintEvent* event) {
  QTextEdit::paintEvent(event);
  QPainter painter(viewport());
  painter.translate(-horizontalScrollBar()->value(), -verticalScrollBar()->value());
  PaintOverlay(&painter, *document(), formats_, VisiblePart());
}

QRectF LetterEditor::VisiblePart() const {
  return QRectF(QPointF(horizontalScrollBar()->value(), verticalScrollBar()->value()),
                viewport()->size());
}

void LetterEditor::resizeEvent(QResizeEvent* event) {
  LayOutPaper();
  QTextEdit::resizeEvent(event);
}

void LetterEditor::wheelEvent(QWheelEvent* event) {
  if ((event->modifiers() & Qt::ControlModifier) == 0) return QTextEdit::wheelEvent(event);
  SetZoom(zoom_ * std::pow(1.1, event->angleDelta().y() / 120.0));
  event->accept();
}

}  // namespace tenora
