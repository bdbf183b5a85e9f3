#include "ui/editor/screen/picture_handles.h"

#include <QAbstractTextDocumentLayout>
#include <QLocale>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextFrame>
#include <QTextLayout>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "ui/editor/commands/editor_dialogs.h"
#include "ui/editor/screen/floating_pictures.h"
#include "ui/editor/screen/inline_objects.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

constexpr double kHandle = 8;     // pixels, its side
constexpr double kReach = 7;      // around its middle
constexpr double kSmallest = 10;  // pixels of a picture being dragged

// With the object that a cursor's format leaves out.
QTextCharFormat FormatAt(const QTextDocument& document, int position) {
  const QTextBlock block = document.findBlock(position);
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    if (it.fragment().contains(position)) return it.fragment().charFormat();
  }
  return {};
}

}  // namespace

PictureHandles::PictureHandles(EditedLetter& letter, PictureCommands& pictures)
    : letter_(letter), pictures_(pictures) {
  QWidget* const viewport = letter_.control().viewport();
  viewport->setMouseTracking(true);
  // Handles stand over the line of their picture, which is all that Qt paints again.
  QObject::connect(&letter_.control(), &QTextEdit::selectionChanged, viewport,
                   qOverload<>(&QWidget::update));
}

QRectF PictureHandles::AreaOf(int position) const {
  const QTextEdit& control = letter_.control();
  QTextDocument& document = *control.document();
  QAbstractTextDocumentLayout& layout = *document.documentLayout();
  const QTextCharFormat format = FormatAt(document, position);
  const QPointF scrolled(control.horizontalScrollBar()->value(),
                         control.verticalScrollBar()->value());
  if (auto* frame = qobject_cast<QTextFrame*>(document.objectForFormat(format)))
    return InlineObjects::WithoutGap(layout.frameBoundingRect(frame), document, format)
        .translated(-scrolled);
  QTextObjectInterface* const object = layout.handlerForObject(format.objectType());
  const QTextBlock block = document.findBlock(position);
  const QTextLine line = block.layout()->lineForTextPosition(position - block.position());
  if (object == nullptr || !line.isValid()) return {};
  const QSizeF size = object->intrinsicSize(&document, position, format);
  const int offset = position - block.position();
  const double x = std::min(line.cursorToX(offset), line.cursorToX(offset + 1));
  const QPointF corner = layout.blockBoundingRect(block).topLeft() +
                         QPointF(x, line.y() + line.ascent() - size.height());
  return QRectF(corner, size).translated(-scrolled);
}

int PictureHandles::PictureAt(QPointF point) const {
  const int position = letter_.control().cursorForPosition(point.toPoint()).position();
  for (const int near : {position, position - 1}) {
    if (pictures_.LookAt(near) && AreaOf(near).contains(point)) return near;
  }
  // The text at a point beside the lines is not always that with the picture.
  for (const QTextFrame* floating : FloatingPictures::In(*letter_.control().document())) {
    const int place = FloatingPictures::PositionOf(*floating);
    if (pictures_.LookAt(place) && AreaOf(place).contains(point)) return place;
  }
  return -1;
}

QPointF PictureHandles::HandleOf(const QRectF& area, int edges) {
  const double x = (edges & kLeft) != 0    ? area.left()
                   : (edges & kRight) != 0 ? area.right()
                                           : area.center().x();
  const double y = (edges & kTop) != 0      ? area.top()
                   : (edges & kBottom) != 0 ? area.bottom()
                                            : area.center().y();
  return {x, y};
}

// Corners first: they are what is meant where a small picture's handles are close together.
int PictureHandles::HandleAt(QPointF point) const {
  static constexpr std::array kHandles{kRight | kBottom, kLeft | kTop, kRight | kTop,
                                       kLeft | kBottom,  +kRight,      +kBottom,
                                       +kLeft,           +kTop};
  const int position = pictures_.Selected();
  if (position < 0) return kNone;
  const QRectF area = AreaOf(position);
  for (const int edges : kHandles) {
    const QPointF away = HandleOf(area, edges) - point;
    if (std::max(std::abs(away.x()), std::abs(away.y())) <= kReach) return edges;
  }
  return kNone;
}

bool PictureHandles::Press(const QMouseEvent& event) {
  if (event.button() != Qt::LeftButton) return false;
  if (const int edges = HandleAt(event.position()); edges != kNone) {
    const int position = pictures_.Selected();
    if (!letter_.MayChange(position, position + 1)) return true;
    const QRectF area = AreaOf(position);
    drag_ = Drag{edges, event.position(), area, area};
    return true;
  }
  const int position = PictureAt(event.position());
  pressed_ = position == pictures_.Selected() ? position : -1;
  // Qt drags what is selected.
  if (position < 0 || pressed_ >= 0 || event.modifiers() != Qt::NoModifier) return false;
  Select(position);
  return true;
}

void PictureHandles::Select(int position) {
  QTextCursor cursor = letter_.control().textCursor();
  cursor.setPosition(position);
  cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
  letter_.control().setTextCursor(cursor);
}

void PictureHandles::Released() {
  const int position = std::exchange(pressed_, -1);
  const QTextCursor cursor = letter_.control().textCursor();
  const bool clicked = !cursor.hasSelection() && position >= 0 &&
                       (cursor.position() == position || cursor.position() == position + 1);
  if (clicked && pictures_.LookAt(position)) Select(position);
}

bool PictureHandles::DoubleClick(const QMouseEvent& event) {
  const int position = event.button() == Qt::LeftButton ? PictureAt(event.position()) : -1;
  if (position < 0) return false;
  Select(position);
  pictures_.Ask();
  return true;
}

bool PictureHandles::Move(const QMouseEvent& event) {
  if (!drag_) {
    if (event.buttons() == Qt::NoButton) ShowPointer(HandleAt(event.position()));
    return false;
  }
  const QPointF by = event.position() - drag_->from;
  const QRectF& before = drag_->before;
  const int edges = drag_->edges;
  double width = before.width(), height = before.height();
  if ((edges & kLeft) != 0) width -= by.x();
  if ((edges & kRight) != 0) width += by.x();
  if ((edges & kTop) != 0) height -= by.y();
  if ((edges & kBottom) != 0) height += by.y();
  const auto look = pictures_.LookAt(pictures_.Selected());
  const bool set_apart = look && look->place == richtext::PicturePlace::kAsSet;
  const double widest = std::max(
      before.width(), set_apart ? width : InlineObjects::MostWidth(*letter_.control().document()));
  width = std::min(width, widest);
  const bool corner = (edges & (kLeft | kRight)) != 0 && (edges & (kTop | kBottom)) != 0;
  if (corner && (event.modifiers() & Qt::ShiftModifier) == 0) {
    const double least = kSmallest / std::min(before.width(), before.height());
    const double scale =
        std::min(std::max({width / before.width(), height / before.height(), std::min(least, 1.0)}),
                 widest / before.width());
    width = before.width() * scale;
    height = before.height() * scale;
  }
  width = std::max(width, kSmallest);
  height = std::max(height, kSmallest);
  drag_->now = QRectF(before.topLeft(), QSizeF(width, height));
  if ((edges & kLeft) != 0) drag_->now.moveRight(before.right());
  if ((edges & kTop) != 0) drag_->now.moveBottom(before.bottom());
  letter_.control().viewport()->update();
  return true;
}

richtext::PictureLook PictureHandles::LookOf(const Drag& drag) const {
  richtext::PictureLook look =
      pictures_.LookAt(pictures_.Selected()).value_or(richtext::PictureLook{});
  // In the picture's own lengths, which are not always whole pixels.
  look.width = static_cast<int>(std::lround(look.width * drag.now.width() / drag.before.width()));
  look.height =
      static_cast<int>(std::lround(look.height * drag.now.height() / drag.before.height()));
  return look;
}

bool PictureHandles::Release(const QMouseEvent& event) {
  if (!drag_ || event.button() != Qt::LeftButton) return false;
  const Drag drag = *drag_;
  drag_.reset();
  pictures_.Change(LookOf(drag));
  letter_.control().viewport()->update();
  return true;
}

bool PictureHandles::Key(const QKeyEvent& event) {
  if (!drag_) return false;
  if (event.key() == Qt::Key_Escape) {
    drag_.reset();
    letter_.control().viewport()->update();
  }
  return true;
}

void PictureHandles::ShowPointer(int edges) const {
  Qt::CursorShape shape = Qt::IBeamCursor;
  if (edges == kLeft || edges == kRight) shape = Qt::SizeHorCursor;
  if (edges == kTop || edges == kBottom) shape = Qt::SizeVerCursor;
  if (edges == (kLeft | kTop) || edges == (kRight | kBottom)) shape = Qt::SizeFDiagCursor;
  if (edges == (kRight | kTop) || edges == (kLeft | kBottom)) shape = Qt::SizeBDiagCursor;
  QWidget& viewport = *letter_.control().viewport();
  if (viewport.cursor().shape() != shape) viewport.setCursor(shape);
}

void PictureHandles::Paint(QPainter* painter) const {
  const int position = pictures_.Selected();
  if (position < 0) return;
  const QRectF area = drag_ ? drag_->now : AreaOf(position);
  const QPalette palette = letter_.control().palette();
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(QPen(palette.highlight().color(), 1));
  painter->setBrush(Qt::NoBrush);
  painter->drawRect(area);
  painter->setBrush(Qt::white);
  for (int edges = 1; edges < 16; ++edges) {
    const bool both = (edges & (kLeft | kRight)) == (kLeft | kRight) ||
                      (edges & (kTop | kBottom)) == (kTop | kBottom);
    if (both) continue;
    const QPointF middle = HandleOf(area, edges);
    painter->drawRect(QRectF(middle - QPointF(kHandle, kHandle) / 2, QSizeF(kHandle, kHandle)));
  }
  if (drag_) {
    const LengthUnit unit = LocaleUnit();
    const richtext::PictureLook look = LookOf(*drag_);
    const QString size = QLocale().toString(look.width / unit.twips, 'f', 2) +
                         QStringLiteral(" × ") +
                         QLocale().toString(look.height / unit.twips, 'f', 2) + unit.suffix;
    painter->setFont(letter_.control().font());
    QRectF label = painter->fontMetrics().boundingRect(size).adjusted(-6, -4, 6, 4);
    const QRectF visible(letter_.control().viewport()->rect());
    label.moveTopLeft(area.bottomRight() + QPointF(8, 8));
    label.moveRight(std::min(label.right(), visible.right() - 4));
    label.moveBottom(std::min(label.bottom(), visible.bottom() - 4));
    painter->setPen(palette.toolTipText().color());
    painter->setBrush(palette.toolTipBase());
    painter->drawRect(label);
    painter->drawText(label, Qt::AlignCenter, size);
  }
  painter->restore();
}

}  // namespace tenora
