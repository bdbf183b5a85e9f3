#include "platform/printing/file_label.h"

#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <cmath>

#include "platform/printing/picture_import.h"
#include "platform/printing/qt_application.h"

namespace tenora::printing {

richtext::Picture FileLabel(std::string_view name) {
  constexpr int kScale = 3;  // times a screen's resolution, so that it is sharp on paper
  constexpr int kWidth = 130 * kScale, kSheetWidth = 26 * kScale, kSheetHeight = 34 * kScale;
  constexpr int kFold = 8 * kScale, kTop = 3 * kScale, kTextHeight = 16 * kScale;
  const auto application = HoldQtApplication();
  QImage image(kWidth, kTop + kSheetHeight + kTextHeight, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate((kWidth - kSheetWidth) / 2.0, kTop);
  QPainterPath sheet;
  sheet.addPolygon(QPolygonF({{0, 0},
                              {kSheetWidth - kFold, 0},
                              {kSheetWidth, kFold},
                              {kSheetWidth, kSheetHeight},
                              {0, kSheetHeight},
                              {0, 0}}));
  sheet.addPolygon(
      QPolygonF({{kSheetWidth - kFold, 0}, {kSheetWidth - kFold, kFold}, {kSheetWidth, kFold}}));
  painter.setPen(QPen(QColor(0x55, 0x66, 0x77), kScale));
  painter.setBrush(QColor(0xF2, 0xF6, 0xFA));
  painter.drawPath(sheet);
  for (int line = 2; line < 6; ++line) {
    const int y = line * kSheetHeight / 7;
    painter.drawLine(5 * kScale, y, kSheetWidth - 5 * kScale, y);
  }
  painter.resetTransform();
  QFont font("Liberation Sans");
  font.setPixelSize(11 * kScale);
  painter.setFont(font);
  painter.setPen(Qt::black);
  const QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
  painter.drawText(QRect(0, kTop + kSheetHeight, kWidth, kTextHeight),
                   Qt::AlignHCenter | Qt::AlignBottom,
                   QFontMetrics(font, &image).elidedText(text, Qt::ElideMiddle, kWidth));
  painter.end();
  const int dots_per_metre = static_cast<int>(std::lround(96 * kScale / 0.0254));
  image.setDotsPerMeterX(dots_per_metre);
  image.setDotsPerMeterY(dots_per_metre);
  return ImportImage(image).value();
}

}  // namespace tenora::printing
