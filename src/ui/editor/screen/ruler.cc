#include "ui/editor/screen/ruler.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

namespace tenora {
namespace {

using richtext::ParagraphFormat;
using richtext::TabStop;

constexpr int kHeight = 26;
constexpr double kReach = 5;  // pixels around a grip
constexpr int kStep = 71;     // twips that dragging snaps to: an eighth of a centimetre
constexpr int kNarrowestText = 1440;

int Snap(int twips) { return static_cast<int>(std::lround(double(twips) / kStep)) * kStep; }

QPolygonF Triangle(double x, double y, double size, bool up) {
  const double tip = up ? y - size : y + size;
  return QPolygonF({QPointF(x - size, y), QPointF(x + size, y), QPointF(x, tip)});
}

}  // namespace

Ruler::Ruler(LetterEditor& editor, QWidget* parent) : QWidget(parent), editor_(editor) {
  setAccessibleName(tr("Ruler"));
  setToolTip(tr("Drag margins, indents and tab stops; click to set a tab stop"));
  const auto refresh = qOverload<>(&QWidget::update);
  connect(&editor, &QTextEdit::cursorPositionChanged, this, refresh);
  connect(&editor, &QTextEdit::textChanged, this, refresh);
  connect(&editor.paper(), &PaperLayout::ZoomChanged, this, refresh);
  connect(&editor.paper(), &PaperLayout::PaperChanged, this, refresh);
  connect(editor.horizontalScrollBar(), &QScrollBar::valueChanged, this, refresh);
}

QSize Ruler::sizeHint() const { return {200, kHeight}; }

double Ruler::Scale() const { return PixelsOfTwips(1) * editor_.paper().Zoom(); }

double Ruler::TextLeft() const {
  const double viewport = editor_.viewport()->mapTo(parentWidget(), QPoint(0, 0)).x() - x();
  return viewport - editor_.horizontalScrollBar()->value() +
         editor_.paper().TextLeftMargin() * Scale();
}

int Ruler::TextWidth() const {
  const PaperLook& paper = editor_.paper().Look();
  if (paper.HasPage()) return std::max(paper.width - paper.left - paper.right, kNarrowestText);
  return std::max(static_cast<int>(editor_.viewport()->width() / Scale()) -
                      2 * editor_.paper().TextLeftMargin(),
                  kNarrowestText);
}

int Ruler::TwipsAt(double x) const {
  return static_cast<int>(std::lround((x - TextLeft()) / Scale()));
}

void Ruler::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), palette().window());
  const QRectF text(TextLeft(), 4, TextWidth() * Scale(), kHeight - 8);
  if (editor_.paper().Look().HasPage()) {
    const PaperLook& paper = editor_.paper().Look();
    painter.fillRect(
        QRectF(text.left() - paper.left * Scale(), 4, paper.width * Scale(), kHeight - 8),
        palette().mid());
  }
  painter.fillRect(text, palette().base());
  PaintScale(&painter);
  PaintGrips(&painter);
}

void Ruler::PaintScale(QPainter* painter) const {
  painter->setPen(palette().text().color());
  QFont small = font();
  small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.75));
  painter->setFont(small);
  const int parts = unit_.twips > 1000 ? 8 : 2;
  const int marks = static_cast<int>(TextWidth() / unit_.twips * parts);
  for (int i = 1; i <= marks; ++i) {
    const double x = TextLeft() + i * unit_.twips / parts * Scale();
    if (i % parts != 0) {
      const double length = i % (parts / 2) == 0 ? 3 : 1.5;
      painter->drawLine(QPointF(x, kHeight / 2.0 - length), QPointF(x, kHeight / 2.0 + length));
    } else {
      painter->drawText(QRectF(x - 14, 0, 28, kHeight), Qt::AlignCenter,
                        QString::number(i / parts));
    }
  }
}

void Ruler::PaintGrips(QPainter* painter) {
  ParagraphFormat format = editor_.formatting().ParagraphAtCaret();
  if (held_ && held_->grip == Grip::kFirst) format.first_indent = held_->value - format.left_indent;
  if (held_ && held_->grip == Grip::kLeft) format.left_indent = held_->value;
  if (held_ && held_->grip == Grip::kRight) format.right_indent = TextWidth() - held_->value;
  if (held_ && held_->grip == Grip::kTab && held_->tab < format.tabs.size())
    format.tabs[held_->tab].position = held_->value;
  painter->setPen(QPen(palette().text().color(), 1));
  painter->setBrush(palette().highlight());
  const double left = TextLeft(), scale = Scale();
  painter->drawPolygon(
      Triangle(left + (format.left_indent + format.first_indent) * scale, 2, 5, false));
  painter->drawPolygon(Triangle(left + format.left_indent * scale, kHeight - 2, 5, true));
  painter->drawPolygon(
      Triangle(left + (TextWidth() - format.right_indent) * scale, kHeight - 2, 5, true));
  painter->setPen(QPen(palette().text().color(), 2));
  for (std::size_t i = 0; i < format.tabs.size(); ++i) {
    if (held_ && held_->grip == Grip::kTab && held_->tab == i && held_->off) continue;
    const TabStop& tab = format.tabs[i];
    const double x = left + tab.position * scale, y = kHeight - 6;
    painter->drawLine(QPointF(x, y - 6), QPointF(x, y));
    if (tab.kind == TabStop::Kind::kBar) continue;
    const double from = tab.kind == TabStop::Kind::kLeft ? 0 : -5;
    const double to = tab.kind == TabStop::Kind::kRight ? 0 : 5;
    painter->drawLine(QPointF(x + from, y), QPointF(x + to, y));
    if (tab.kind == TabStop::Kind::kDecimal) painter->drawPoint(QPointF(x + 4, y - 4));
  }
}

std::optional<Ruler::Held> Ruler::GripAt(QPointF point) {
  const ParagraphFormat format = editor_.formatting().ParagraphAtCaret();
  const auto near = [&](int twips) {
    return std::abs(point.x() - (TextLeft() + twips * Scale())) <= kReach;
  };
  const bool upper = point.y() < kHeight / 2.0;
  for (std::size_t i = 0; i < format.tabs.size(); ++i) {
    if (!upper && near(format.tabs[i].position))
      return Held{Grip::kTab, i, format.tabs[i].position};
  }
  const int first = format.left_indent + format.first_indent;
  if (upper && near(first)) return Held{Grip::kFirst, 0, first};
  if (!upper && near(format.left_indent)) return Held{Grip::kLeft, 0, format.left_indent};
  const int right = TextWidth() - format.right_indent;
  if (!upper && near(right)) return Held{Grip::kRight, 0, right};
  if (!editor_.paper().Look().HasPage()) return std::nullopt;
  if (near(0)) return Held{Grip::kLeftMargin, 0, 0};
  if (near(TextWidth())) return Held{Grip::kRightMargin, 0, TextWidth()};
  return std::nullopt;
}

void Ruler::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  held_ = GripAt(event->position());
  const int twips = Snap(TwipsAt(event->position().x()));
  if (held_ || twips <= 0 || twips >= TextWidth()) return;
  editor_.formatting().ChangeParagraphs([&](ParagraphFormat& format) {
    const auto behind = std::find_if(format.tabs.begin(), format.tabs.end(),
                                     [&](const TabStop& tab) { return tab.position > twips; });
    TabStop tab;
    tab.position = twips;
    format.tabs.insert(behind, tab);
  });
  held_ = GripAt(event->position());
  update();
}

void Ruler::mouseMoveEvent(QMouseEvent* event) {
  if (!held_) return;
  held_->value = std::clamp(Snap(TwipsAt(event->position().x())), -editor_.paper().TextLeftMargin(),
                            TextWidth() + editor_.paper().TextLeftMargin());
  held_->off = event->position().y() > height() + kHeight;
  update();
}

void Ruler::mouseReleaseEvent(QMouseEvent*) {
  if (!held_) return;
  const Held held = *held_;
  held_.reset();
  Apply(held);
  update();
}

void Ruler::mouseDoubleClickEvent(QMouseEvent*) {
  held_.reset();
  const auto tabs = AskTabStops(this, editor_.formatting().ParagraphAtCaret().tabs);
  if (tabs)
    editor_.formatting().ChangeParagraphs([&](ParagraphFormat& format) { format.tabs = *tabs; });
}

void Ruler::Apply(const Held& held) {
  const PaperLook& paper = editor_.paper().Look();
  // The widest that one margin can be; the other may already take all of the paper.
  const auto widest = [&](int other) { return std::max(paper.width - other - kNarrowestText, 0); };
  if (held.grip == Grip::kLeftMargin) {
    const int left = std::clamp(paper.left + held.value, 0, widest(paper.right));
    if (left != paper.left) emit MarginsDragged(left, paper.right);
    return;
  }
  if (held.grip == Grip::kRightMargin) {
    const int right = std::clamp(paper.right + TextWidth() - held.value, 0, widest(paper.left));
    if (right != paper.right) emit MarginsDragged(paper.left, right);
    return;
  }
  const int width = TextWidth();
  const ParagraphFormat before = editor_.formatting().ParagraphAtCaret();
  ParagraphFormat after = before;
  const auto change = [&](ParagraphFormat& format) {
    if (held.grip == Grip::kFirst) format.first_indent = held.value - format.left_indent;
    if (held.grip == Grip::kLeft) format.left_indent = held.value;
    if (held.grip == Grip::kRight) format.right_indent = width - held.value;
    if (held.grip != Grip::kTab || held.tab >= format.tabs.size()) return;
    const auto tab = format.tabs.begin() + static_cast<std::ptrdiff_t>(held.tab);
    if (held.off)
      format.tabs.erase(tab);
    else
      tab->position = std::max(held.value, 0);
    std::ranges::sort(format.tabs, {}, &TabStop::position);
  };
  change(after);
  if (after != before) editor_.formatting().ChangeParagraphs(change);
}

}  // namespace tenora
