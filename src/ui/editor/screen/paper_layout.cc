#include "ui/editor/screen/paper_layout.h"

#include <QAbstractTextDocumentLayout>
#include <QGuiApplication>
#include <QPaintDevice>
#include <QPalette>
#include <QScreen>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextFrame>
#include <algorithm>
#include <cmath>

#include "ui/editor/screen/inline_objects.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

constexpr double kLeastZoom = 0.25, kMostZoom = 5;
constexpr int kWindowMargin = 240;       // twips around text that wraps at the window
constexpr int kWindowTableWidth = 9000;  // twips of a table where lines end at the window

int ScreenDpi() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen == nullptr ? 96 : static_cast<int>(std::lround(screen->logicalDotsPerInchY()));
}

}  // namespace

// A paper of a chosen resolution. A QTextDocument laid out for it comes out enlarged: its fonts,
// indents and tables all follow the resolution.
class PaperLayout::ZoomDevice : public QPaintDevice {
 public:
  void SetDpi(int dpi) { dpi_ = dpi; }
  QPaintEngine* paintEngine() const override { return nullptr; }

 protected:
  int metric(PaintDeviceMetric metric) const override {
    switch (metric) {
      case PdmDpiX:
      case PdmDpiY:
      case PdmPhysicalDpiX:
      case PdmPhysicalDpiY:
        return dpi_;
      case PdmDevicePixelRatioScaled:
        return static_cast<int>(devicePixelRatioFScale());
      case PdmDepth:
        return 32;
      default:
        return 1;
    }
  }

 private:
  int dpi_ = 96;
};

PaperLayout::PaperLayout(EditedLetter& letter, UndoHistory& history)
    : letter_(letter), history_(history), device_(std::make_unique<ZoomDevice>()) {
  QTextEdit& control = letter.control();
  connect(&letter, &EditedLetter::Cleared, this, &PaperLayout::LayOut);
  connect(
      control.document(), &QTextDocument::redoAvailable, this,
      [this](bool redo) {
        if (!redo && indents_wait_) FitIndentsToZoom();
      },
      Qt::QueuedConnection);
  connect(control.verticalScrollBar(), &QScrollBar::rangeChanged, this, &PaperLayout::LayOut,
          Qt::QueuedConnection);
}

PaperLayout::~PaperLayout() = default;

void PaperLayout::SetZoom(double zoom) {
  zoom_ = std::clamp(zoom, kLeastZoom, kMostZoom);
  device_->SetDpi(static_cast<int>(std::lround(ScreenDpi() * zoom_)));
  QTextDocument* const document = letter_.control().document();
  document->documentLayout()->setPaintDevice(device_.get());
  LayOut();
  letter_.formats().SetZoom(zoom_);
  // Else Qt would lay the rest of the letter out anew with each paragraph.
  document->setLayoutEnabled(false);
  FitIndentsToZoom();
  emit FontsChanged();
  document->setLayoutEnabled(true);
  document->markContentsDirty(0, document->characterCount());
  emit ZoomChanged(zoom_);
}

// Waits while there is something to redo, which a change of the document would drop.
void PaperLayout::FitIndentsToZoom() {
  QTextDocument* const document = letter_.control().document();
  indents_wait_ = document->isRedoAvailable();
  if (indents_wait_) return;
  LetterFormats& formats = letter_.formats();
  history_.ChangeLooks([&] {
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
      const QTextBlockFormat format = block.blockFormat();
      if (!format.hasProperty(kParagraphProperty)) continue;
      const QTextBlockFormat wanted = formats.Fitted(formats.ParagraphOf(format), block);
      const bool fits = wanted.textIndent() == format.textIndent() &&
                        wanted.rightMargin() == format.rightMargin() &&
                        wanted.lineHeight() == format.lineHeight();
      if (!fits) QTextCursor(block).setBlockFormat(wanted);
    }
  });
}

void PaperLayout::SetLook(const PaperLook& look) {
  look_ = look;
  // Paper is white in every colour scheme.
  QPalette colours = letter_.control().palette();
  colours.setColor(QPalette::Base, Qt::white);
  colours.setColor(QPalette::Text, Qt::black);
  letter_.control().setPalette(colours);
  LayOut();
  emit PaperChanged();
}

int PaperLayout::TextLeftMargin() const { return look_.HasPage() ? look_.left : kWindowMargin; }

int PaperLayout::TableWidth() const {
  return look_.HasPage() ? look_.width - look_.left - look_.right : kWindowTableWidth;
}

void PaperLayout::LayOut() {
  QTextEdit& control = letter_.control();
  const bool page = look_.HasPage();
  const int desk = look_.sheet ? kDesk : 0;
  const int width = static_cast<int>(std::lround(PixelsOfTwips(look_.width) * zoom_));
  // Qt makes paper and margins whole pixels wide. The text has what it has on paper, or a little
  // more, so that a picture as wide as the text fits.
  const double enlarged = static_cast<double>(device_->logicalDpiX()) / ScreenDpi();
  const double left = std::round(PixelsOfTwips(look_.left) * enlarged);
  const double right = width - left - std::ceil(PixelsOfTwips(PageTextWidth()) * enlarged);
  letter_.WithoutEdit([&] {
    QTextFrame* const frame = control.document()->rootFrame();
    const QTextFrameFormat format = frame->frameFormat();
    QTextFrameFormat wanted = format;
    wanted.setLeftMargin(PixelsOfTwips(page ? look_.left : kWindowMargin));
    wanted.setRightMargin(page ? right / enlarged : PixelsOfTwips(kWindowMargin));
    wanted.setTopMargin(PixelsOfTwips(page ? look_.top + desk : kWindowMargin));
    wanted.setBottomMargin(PixelsOfTwips(page ? look_.bottom + desk : kWindowMargin));
    wanted.setProperty(InlineObjects::kPageTextWidth, PageTextWidth());
    if (wanted != format) history_.ChangeLooks([&] { frame->setFrameFormat(wanted); });
    int free_width = 0;
    if (page) {
      control.setLineWrapMode(QTextEdit::FixedPixelWidth);
      // Only a new width: Qt lays the whole letter out for the same one too, and asks again while
      // the layout of a long one goes on.
      if (control.lineWrapColumnOrWidth() != width) control.setLineWrapColumnOrWidth(width);
      free_width = FreeWidth(width);
    } else {
      control.setLineWrapMode(QTextEdit::WidgetWidth);
    }
    emit SideMarginsChanged(QMargins(free_width / 2, 0, free_width - free_width / 2, 0));
  });
  emit LaidOut();
}

int PaperLayout::FreeWidth(int paper_width) const {
  const QTextEdit& control = letter_.control();
  const QScrollBar& bar = *control.verticalScrollBar();
  const int bar_width = bar.maximum() > 0 ? bar.sizeHint().width() : 0;
  return std::max(control.contentsRect().width() - bar_width - paper_width, 0);
}

}  // namespace tenora
