#include "platform/printing/image/drawing.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tenora::printing {
namespace {

constexpr double kThinnestLine = 0.35 / 72;  // inches
constexpr double kThinnestPixels = 0.75;
constexpr double kRasterPerTwip = 300.0 / 1440;  // pixels, where raster operations need them
constexpr int kMostRasterSide = 2000;

void ApplyClip(QPainter& painter, const Clip* clip) {
  for (; clip != nullptr; clip = clip->outer.get()) {
    painter.setClipPath(clip->path, Qt::IntersectClip);
  }
}

// Eight times as wide as high, or more: Qt's store of glyphs crashes on letters that are too wide
// for a bitmap and yet of a small area.
bool IsDistorted(const QTransform& transform) {
  constexpr double kMostRatio = 8;
  const double squares = transform.m11() * transform.m11() + transform.m12() * transform.m12() +
                         transform.m21() * transform.m21() + transform.m22() * transform.m22();
  return !(squares <= (kMostRatio + 1 / kMostRatio) * std::abs(transform.determinant()));
}

class ItemPainter {
 public:
  ItemPainter(QPainter& painter, double thinnest) : painter_(painter), thinnest_(thinnest) {}

  void operator()(const DrawnShape& shape) {
    if (shape.pen.style() != Qt::NoPen && shape.pen.widthF() < thinnest_) {
      // Dashes are counted in widths and keep their lengths.
      QPen pen = shape.pen;
      if (pen.style() == Qt::CustomDashLine && pen.widthF() > 0) {
        QList<qreal> dashes = pen.dashPattern();
        for (qreal& dash : dashes) dash *= pen.widthF() / thinnest_;
        pen.setDashPattern(dashes);
      }
      pen.setWidthF(thinnest_);
      painter_.setPen(pen);
    } else {
      painter_.setPen(shape.pen);
    }
    painter_.setBrush(shape.brush);
    painter_.drawPath(shape.path);
  }
  void operator()(const DrawnImage& image) {
    painter_.save();
    painter_.setTransform(image.place, true);
    painter_.drawImage(QPointF(0, 0), image.image);
    painter_.restore();
  }
  void operator()(const DrawnText& text) {
    if (IsDistorted(text.place * painter_.combinedTransform())) return DrawOutlines(text);
    painter_.save();
    painter_.setTransform(text.place, true);
    painter_.setFont(text.font);
    painter_.setPen(text.colour);
    painter_.drawText(QPointF(0, 0), text.text);
    painter_.restore();
  }

 private:
  void DrawOutlines(const DrawnText& text) {
    QPainterPath outlines;
    outlines.addText(QPointF(0, 0), text.font, text.text);
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(text.colour);
    painter_.drawPath(text.place.map(outlines));
  }

  QPainter& painter_;
  double thinnest_;
};

std::size_t BytesOf(const DrawnItem& item) {
  std::size_t bytes = sizeof(DrawnItem);
  if (const auto* shape = std::get_if<DrawnShape>(&item.what)) {
    bytes += static_cast<std::size_t>(shape->path.elementCount()) * sizeof(QPainterPath::Element);
  } else if (const auto* image = std::get_if<DrawnImage>(&item.what)) {
    bytes += static_cast<std::size_t>(image->image.sizeInBytes());
  }
  return bytes;
}

// The item filled with one colour, which marks the pixels that it reaches.
DrawnItem Marked(const DrawnItem& item) {
  DrawnItem marked{item.what, item.clip};
  if (auto* shape = std::get_if<DrawnShape>(&marked.what)) {
    shape->pen.setColor(Qt::black);
    if (shape->brush.style() != Qt::NoBrush) shape->brush = Qt::black;
  } else if (const auto* image = std::get_if<DrawnImage>(&item.what)) {
    DrawnShape place;
    place.pen = Qt::NoPen;
    place.brush = Qt::black;
    place.path.addPolygon(image->place.map(QPolygonF(QRectF(image->image.rect()))));
    marked.what = place;
  }
  return marked;
}

// Thin lines survive this; drawing the image smaller would leave some out.
QImage ShrunkTo(QSizeF pixels, const QImage& image) {
  const QSize size = pixels.toSize().expandedTo({1, 1});
  if (size.width() >= image.width() || size.height() >= image.height()) return image;
  return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

}  // namespace

Drawing::Drawing(std::vector<DrawnItem> items, QRectF frame, QSizeF size, bool complete)
    : items_(std::move(items)), frame_(frame), size_(size), complete_(complete) {
  for (const DrawnItem& item : items_) {
    bytes_ += BytesOf(item);
    raster_operations_ = raster_operations_ || item.mode != QPainter::CompositionMode_SourceOver;
  }
}

void Drawing::Draw(QPainter& painter, const QRectF& area) const {
  if (!raster_operations_) return DrawVectors(painter, area);
  painter.save();
  painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::LosslessImageRendering);
  painter.drawImage(area, ShrunkTo(painter.combinedTransform().mapRect(area).size(), Pixels()));
  painter.restore();
}

const QImage& Drawing::Pixels() const {
  std::call_once(pixels_made_, [this] {
    const QSizeF fine = size_ * kRasterPerTwip;
    const double scale =
        std::min(1.0, kMostRasterSide / std::max({fine.width(), fine.height(), 1.0}));
    pixels_ = WithRasterOperations((fine * scale).toSize().expandedTo({1, 1}));
  });
  return pixels_;
}

QImage Drawing::Rendered(QSize pixels) const {
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return image;
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  Draw(painter, QRectF(QPointF(0, 0), QSizeF(pixels)));
  return image;
}

void Drawing::DrawVectors(QPainter& painter, const QRectF& area) const {
  if (frame_.isEmpty() || area.isEmpty()) return;
  painter.save();
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform |
                         QPainter::LosslessImageRendering);
  painter.translate(area.topLeft());
  painter.scale(area.width() / frame_.width(), area.height() / frame_.height());
  painter.translate(-frame_.topLeft());
  const double scale = std::sqrt(std::abs(painter.combinedTransform().determinant()));
  const double thinnest =
      std::max(kThinnestPixels, painter.device()->logicalDpiX() * kThinnestLine) /
      std::max(scale, 1e-9);
  // Lines on the frame itself are shown in their whole width.
  painter.setClipRect(frame_.adjusted(-thinnest, -thinnest, thinnest, thinnest), Qt::IntersectClip);
  ItemPainter paint(painter, thinnest);
  const Clip* clip = nullptr;
  painter.save();
  for (const DrawnItem& item : items_) {
    if (item.clip.get() != clip) {
      clip = item.clip.get();
      painter.restore();
      painter.save();
      ApplyClip(painter, clip);
    }
    std::visit(paint, item.what);
  }
  painter.restore();
  painter.restore();
}

// Raster operations exist for pixels only, and their ground is white paper. What nothing was drawn
// on stays transparent.
QImage Drawing::WithRasterOperations(QSize pixels) const {
  QImage image(pixels, QImage::Format_RGB32);
  QImage reached(pixels, QImage::Format_ARGB32_Premultiplied);
  if (image.isNull() || reached.isNull()) return {};
  image.fill(Qt::white);
  reached.fill(Qt::transparent);
  QPainter painter(&image), marker(&reached);
  for (QPainter* one : {&painter, &marker}) {
    one->scale(pixels.width() / frame_.width(), pixels.height() / frame_.height());
    one->translate(-frame_.topLeft());
  }
  const double thinnest = 1.5 * frame_.width() / pixels.width();
  for (const DrawnItem& item : items_) {
    for (QPainter* one : {&painter, &marker}) {
      one->save();
      ApplyClip(*one, item.clip.get());
    }
    painter.setCompositionMode(item.mode);
    std::visit(ItemPainter(painter, thinnest), item.what);
    std::visit(ItemPainter(marker, thinnest), Marked(item).what);
    painter.restore();
    marker.restore();
  }
  painter.end();
  marker.setCompositionMode(QPainter::CompositionMode_SourceIn);
  marker.resetTransform();
  marker.drawImage(0, 0, image);
  marker.end();
  return reached;
}

}  // namespace tenora::printing
