// Qt's own style with edges that are seen on a dark desktop, where it draws them darker than the
// window.
#pragma once

#include <QProxyStyle>

namespace tenora {

class EdgedStyle : public QProxyStyle {
 public:
  EdgedStyle();
  // Whether this is the style that lacks them.
  static bool Mends(const QStyle& style);

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override;
};

}  // namespace tenora
