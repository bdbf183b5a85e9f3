// Draws what is in a letter's text without being text: pictures, objects, page breaks.
#pragma once

#include <QObject>
#include <QTextObjectInterface>
#include <map>
#include <memory>
#include <utility>

#include "platform/printing/pictures.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {

class InlineObjects : public QObject, public QTextObjectInterface {
  Q_OBJECT
  Q_INTERFACES(QTextObjectInterface)

 public:
  // The property of the root frame's format with the width of the page's text, twips.
  static constexpr int kPageTextWidth = QTextFormat::UserProperty + 100;

  using QObject::QObject;

  // The picture's part of the place that something floating has; the rest keeps the text away.
  static QRectF WithoutGap(const QRectF& place, const QTextDocument& document,
                           const QTextFormat& format);
  // Of a picture in the text, pixels. A wider one is shown smaller, as on paper.
  static double MostWidth(const QTextDocument& document);
  static double MostHeight(const QTextDocument& document);

  QSizeF intrinsicSize(QTextDocument* document, int position, const QTextFormat& format) override;
  void drawObject(QPainter* painter, const QRectF& rect, QTextDocument* document, int position,
                  const QTextFormat& format) override;

 private:
  // The size is in twips; empty where the object has no picture.
  printing::PlacedPicture Placed(const InlineObject& object, double most_width);
  void Draw(QPainter& painter, const QRectF& rect, const printing::PlacedPicture& picture);

  printing::Pictures pictures_;
  // Drawings in the pixels of the screen: a letter is painted again with each key.
  std::map<std::pair<std::shared_ptr<const printing::Drawing>, richtext::Picture::Crop>, QImage>
      rendered_;
};

}  // namespace tenora
