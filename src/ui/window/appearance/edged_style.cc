#include "ui/window/appearance/edged_style.h"

#include <QPainter>
#include <QStyleOption>

namespace tenora {
namespace {

constexpr const char* kMended = "fusion";
constexpr double kRounding = 2;  // pixels, as the style's own

enum class Shape { kRectangle, kCircle };

void DrawEdge(QPainter& painter, const QStyleOption& option, Shape shape) {
  const bool enabled = (option.state & QStyle::State_Enabled) != 0;
  // The style marks the control with the keyboard in the colour of selections.
  if ((option.state & QStyle::State_HasFocus) != 0 && shape == Shape::kRectangle) return;
  const QColor colour = enabled ? option.palette.color(QPalette::PlaceholderText)
                                : option.palette.color(QPalette::Disabled, QPalette::Text);
  const QRectF edge = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(colour);
  painter.setBrush(Qt::NoBrush);
  if (shape == Shape::kCircle) {
    painter.drawEllipse(edge);
  } else {
    painter.drawRoundedRect(edge, kRounding, kRounding);
  }
  painter.restore();
}

}  // namespace

EdgedStyle::EdgedStyle() : QProxyStyle(QString::fromLatin1(kMended)) {}

bool EdgedStyle::Mends(const QStyle& style) {
  return style.name().compare(QLatin1String(kMended), Qt::CaseInsensitive) == 0;
}

void EdgedStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
  QProxyStyle::drawPrimitive(element, option, painter, widget);
  switch (element) {
    case PE_FrameLineEdit:
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
      return DrawEdge(*painter, *option, Shape::kRectangle);
    case PE_IndicatorRadioButton:
      return DrawEdge(*painter, *option, Shape::kCircle);
    default:
      return;
  }
}

void EdgedStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const {
  QProxyStyle::drawComplexControl(control, option, painter, widget);
  if (control == CC_SpinBox) DrawEdge(*painter, *option, Shape::kRectangle);
}

}  // namespace tenora
