// How large the letter is shown, and on what paper.
#include <QAbstractTextDocumentLayout>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QTextBlock>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "ui/editor/letter_editor.h"
#include "ui/editor/screen/letter_overlay.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

constexpr double kLeastZoom = 0.25, kMostZoom = 5;
constexpr int kWindowMargin = 240;  // twips around text that wraps at the window

int ScreenDpi() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen == nullptr ? 96 : static_cast<int>(std::lround(screen->logicalDotsPerInchY()));
}

}  // namespace

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
// steps Qt keeps them as a step, as its history cannot be left out for a while: Undo passes it
// over.
void LetterEditor::WithoutUndoStep(const std::function<void()>& change) {
  const bool was_showing = std::exchange(showing_, true);
  const bool has_history = document()->isUndoAvailable() || document()->isRedoAvailable();
  looks_in_history_ = looks_in_history_ || has_history;
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
  // Whatever the colours around it.
  QPalette colours = palette();
  colours.setColor(QPalette::Base, Qt::white);
  colours.setColor(QPalette::Text, Qt::black);
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
    // Only a new width: Qt lays the whole letter out for the same one too, and asks again while the
    // layout of a long one goes on.
    if (lineWrapColumnOrWidth() != width) setLineWrapColumnOrWidth(width);
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
