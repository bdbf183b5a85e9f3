// A picture of lines, areas, texts and bitmaps, as a metafile describes it. It is drawn in any size
// on any painter: as vectors on a PDF, as pixels on a screen or in a picture file.
#pragma once

#include <QBrush>
#include <QFont>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QTransform>
#include <memory>
#include <mutex>
#include <variant>
#include <vector>

namespace tenora::printing {

// The area that shapes are cut to: within this path and all before it.
struct Clip {
  QPainterPath path;
  std::shared_ptr<const Clip> outer;
  int depth = 1;
  int points = 0;  // of this path and all before it
};

struct DrawnShape {
  QPainterPath path;
  QPen pen;  // a width of 0 is the thinnest line that paper shows
  QBrush brush;
};

struct DrawnImage {
  QImage image;
  QTransform place;  // of the image's pixels
};

struct DrawnText {
  QString text;
  QFont font;
  QColor colour;
  QTransform place;  // of the text's pixels; its base line begins at (0, 0)
};

struct DrawnItem {
  std::variant<DrawnShape, DrawnImage, DrawnText> what;
  std::shared_ptr<const Clip> clip;  // none: the whole drawing
  // Other than SourceOver, a raster operation on what was drawn before.
  QPainter::CompositionMode mode = QPainter::CompositionMode_SourceOver;
};

class Drawing {
 public:
  // The frame is the part of the items' plane that is shown, the size its size on paper in twips.
  Drawing(std::vector<DrawnItem> items, QRectF frame, QSizeF size, bool complete);

  QSizeF size() const { return size_; }
  // Whether everything that the metafile draws is in it.
  bool complete() const { return complete_; }
  bool empty() const { return items_.empty(); }
  // Memory taken, about.
  std::size_t bytes() const { return bytes_; }

  // Fills the area with the frame's content. Any thread may do this.
  void Draw(QPainter& painter, const QRectF& area) const;
  // In that many pixels, transparent where nothing is drawn.
  QImage Rendered(QSize pixels) const;

 private:
  void DrawVectors(QPainter& painter, const QRectF& area) const;
  const QImage& Pixels() const;
  QImage WithRasterOperations(QSize pixels) const;

  std::vector<DrawnItem> items_;
  QRectF frame_;
  QSizeF size_;
  bool complete_;
  bool raster_operations_ = false;
  std::size_t bytes_ = 0;
  // The whole drawing in pixels, made when it is first drawn, where raster operations need them.
  mutable std::once_flag pixels_made_;
  mutable QImage pixels_;
};

}  // namespace tenora::printing
