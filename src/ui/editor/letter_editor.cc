#include "ui/editor/letter_editor.h"

#include <QAbstractTextDocumentLayout>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <QWheelEvent>
#include <cmath>
#include <utility>

#include "ui/editor/clipboard/letter_clipboard.h"
#include "ui/editor/screen/floating_pictures.h"
#include "ui/editor/screen/inline_objects.h"
#include "ui/editor/screen/letter_overlay.h"
#include "ui/editor/text/protected_text.h"
#include "ui/editor/text/text_properties.h"
#include "ui/editor/text/typing_format.h"

namespace tenora {
namespace {

constexpr int kMostSuggestions = 7;  // in a menu

}  // namespace

LetterEditor::LetterEditor(RichTextBox& box, QWidget* parent)
    : QTextEdit(parent),
      letter_(box, *this),
      marker_(new CodeMarker(document())),
      completer_(new CodeCompleter(*this)) {
  setAccessibleName(tr("Letter"));
  setFrameShape(QFrame::NoFrame);
  document()->documentLayout()->registerHandler(kLetterObject, new InlineObjects(document()));
  new FloatingPictures(*document());
  connect(&paper_, &PaperLayout::SideMarginsChanged, this, [this](const QMargins& margins) {
    if (viewportMargins() != margins) setViewportMargins(margins);
  });
  connect(&letter_, &EditedLetter::SavedAgain, this, &LetterEditor::SavedAgain);
  marker_->SetLetterSpacing(
      [this](const QTextCharFormat& format) { return formats().LetterSpacing(format); });
  connect(&paper_, &PaperLayout::FontsChanged, marker_, &CodeMarker::rehighlight);
  connect(&letter_, &EditedLetter::Cleared, this, &LetterEditor::ShowTop, Qt::QueuedConnection);
  connect(this, &QTextEdit::cursorPositionChanged, this, &LetterEditor::ShowTop,
          Qt::QueuedConnection);
  paper_.SetLook(PaperLook());
  paper_.SetZoom(1);
  ShowBox();
}

void LetterEditor::ShowPageStarts(const std::vector<int>& positions) {
  std::vector<int> shown;
  for (const int position : positions) shown.push_back(letter_.ShownAt(position));
  sheet_.SetStarts(shown);
}

// Qt shows no more than the caret's line.
void LetterEditor::ShowTop() {
  const QTextCursor cursor = textCursor();
  if (cursor.block().position() > 0 || cursor.hasSelection()) return;
  const QTextLine line = cursor.block().layout()->lineForTextPosition(cursor.positionInBlock());
  const bool first = !line.isValid() || line.lineNumber() == 0;
  const int bottom = cursorRect().bottom() + verticalScrollBar()->value();
  if (first && bottom < viewport()->height()) verticalScrollBar()->setValue(0);
}

void LetterEditor::InsertPageBreak() {
  richtext::Paragraph paragraph;
  richtext::Run run;
  run.format = formatting_.CharAtCaret();
  run.text = "\f";
  paragraph.runs.push_back(std::move(run));
  letter_.InsertBlocks({std::move(paragraph)});
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
  if (!textCursor().hasSelection() || !MayChangeSelection()) return;
  QTextEdit::cut();
  keys_.ShowEmptyLinesBehindTable();
}

bool LetterEditor::MayChangeSelection() {
  const QTextCursor cursor = textCursor();
  return letter_.MayChange(cursor.selectionStart(), cursor.selectionEnd());
}

void LetterEditor::SetCodes(const QStringList& names) {
  completer_->SetCodes(names);
  marker_->SetCodes(QSet<QString>(names.begin(), names.end()));
}

void LetterEditor::SetSpelling(Spelling spelling) {
  spelling_ = std::move(spelling);
  marker_->SetMisspelt(spelling_.misspelt);
}

void LetterEditor::AddSpellingTo(QMenu& menu) {
  const QTextCursor word = marker_->MisspeltAt(textCursor().position());
  if (word.isNull() || !spelling_.suggestions) return;
  const QString text = word.selectedText();
  const QStringList suggestions = spelling_.suggestions(text).mid(0, kMostSuggestions);
  QFont bold = menu.font();
  bold.setBold(true);
  for (const QString& suggestion : suggestions) {
    QAction* change = menu.addAction(QString(suggestion).replace('&', QLatin1String("&&")));
    change->setFont(bold);
    connect(change, &QAction::triggered, this, [this, word, suggestion] {
      search_.ReplaceText(word.selectionStart(), word.selectionEnd(), suggestion);
    });
  }
  if (suggestions.isEmpty()) menu.addAction(tr("No suggestions"))->setEnabled(false);
  menu.addSeparator();
  // Copies: both set the spelling anew.
  connect(menu.addAction(tr("&Add to Dictionary")), &QAction::triggered, this,
          [add = spelling_.add, text] { add(text); });
  connect(menu.addAction(tr("I&gnore All")), &QAction::triggered, this,
          [ignore = spelling_.ignore, text] { ignore(text); });
  menu.addSeparator();
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
  if (isReadOnly()) return QTextEdit::keyPressEvent(event);
  // The list of merge codes takes its keys itself once the editor leaves them alone.
  if (completer_->TakesKey(*event)) return event->ignore();
  if (handles_.Key(*event)) return;
  if (event->matches(QKeySequence::Undo)) return Undo();
  if (event->matches(QKeySequence::Redo)) return Redo();
  if (event->matches(QKeySequence::Cut)) return Cut();
  const TypingKeys::Handling handling = keys_.Press(*event);
  if (handling == TypingKeys::Handling::kDone) return;
  if (handling == TypingKeys::Handling::kPassOn) QTextEdit::keyPressEvent(event);
  keys_.Pressed();
  completer_->Typed(*event);
}

void LetterEditor::inputMethodEvent(QInputMethodEvent* event) {
  const QString text = event->commitString();
  const bool changes = !text.isEmpty() || !event->preeditString().isEmpty();
  if (changes && !MayChangeSelection()) return;
  if (!text.isEmpty()) SetTypingFormat(this, formats());
  QTextEdit::inputMethodEvent(event);
  if (!text.isEmpty()) completer_->Typed(QKeyEvent(QEvent::KeyPress, 0, Qt::NoModifier, text));
}

void LetterEditor::paintEvent(QPaintEvent* event) {
  const QPointF scrolled(horizontalScrollBar()->value(), verticalScrollBar()->value());
  const QRectF visible(scrolled, viewport()->size());
  {
    QPainter under(viewport());
    under.translate(-scrolled);
    sheet_.PaintSheet(&under, visible);
  }
  QTextEdit::paintEvent(event);
  QPainter painter(viewport());
  painter.translate(-scrolled);
  PaintOverlay(&painter, *document(), formats(), visible);
  sheet_.PaintPageEnds(&painter, visible);
  painter.translate(scrolled);
  if (!isReadOnly()) handles_.Paint(&painter);
}

void LetterEditor::mousePressEvent(QMouseEvent* event) {
  if (isReadOnly() || !handles_.Press(*event)) QTextEdit::mousePressEvent(event);
}

void LetterEditor::mouseMoveEvent(QMouseEvent* event) {
  if (!handles_.Move(*event)) QTextEdit::mouseMoveEvent(event);
}

void LetterEditor::mouseReleaseEvent(QMouseEvent* event) {
  if (handles_.Release(*event)) return;
  QTextEdit::mouseReleaseEvent(event);
  handles_.Released();
}

void LetterEditor::mouseDoubleClickEvent(QMouseEvent* event) {
  if (isReadOnly() || !handles_.DoubleClick(*event)) QTextEdit::mouseDoubleClickEvent(event);
}

void LetterEditor::resizeEvent(QResizeEvent* event) {
  paper_.LayOut();
  QTextEdit::resizeEvent(event);
}

void LetterEditor::wheelEvent(QWheelEvent* event) {
  if ((event->modifiers() & Qt::ControlModifier) == 0) return QTextEdit::wheelEvent(event);
  paper_.SetZoom(paper_.Zoom() * std::pow(1.1, event->angleDelta().y() / 120.0));
  event->accept();
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

QMimeData* LetterEditor::createMimeDataFromSelection() const {
  return CopySelection(textCursor(), letter_.formats());
}

bool LetterEditor::canInsertFromMimeData(const QMimeData* source) const {
  return CanPaste(*source);
}

QStringList LetterEditor::FilesOf(const QMimeData& data) { return tenora::FilesOf(data); }

void LetterEditor::InsertFiles(const QStringList& files) {
  ShowBox();
  QStringList others;
  const auto pictures = BlocksOfPictures(files, formatting_.CharAtCaret(), &others);
  if (!pictures.empty()) letter_.InsertBlocks(pictures);
  ensureCursorVisible();
  if (!others.isEmpty()) emit FilesGiven(others);
}

void LetterEditor::insertFromMimeData(const QMimeData* source) {
  if (const QStringList files = FilesOf(*source); !files.isEmpty()) return InsertFiles(files);
  ShowBox();
  SetTypingFormat(this, formats());
  const auto blocks = BlocksOf(*source, formats(), formatting_.CharAtCaret());
  if (!blocks.empty()) letter_.InsertBlocks(blocks);
  ensureCursorVisible();
}

}  // namespace tenora
