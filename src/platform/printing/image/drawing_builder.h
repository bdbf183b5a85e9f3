// Collects the items of a drawing, in the units of a metafile's reference device. Raster operations
// are turned into plain drawing where the result is the same on white paper. Everything is bounded:
// what exceeds the bounds is left out, and the drawing is not complete then.
#pragma once

#include <memory>
#include <vector>

#include "platform/printing/image/decoded_image.h"
#include "platform/printing/image/drawing.h"

namespace tenora::printing {

class DrawingBuilder {
 public:
  using ClipPointer = std::shared_ptr<const Clip>;

  // Operations are binary raster operations (raster_operation.h).
  void AddShape(DrawnShape shape, const ClipPointer& clip, int operation);
  void AddText(DrawnText text, const ClipPointer& clip);
  void AddImage(const QImage& image, const QTransform& place, const ClipPointer& clip,
                int operation);
  // The colour where the mask is black, or where it is white.
  void AddStencil(const QImage& mask, const QTransform& place, const ClipPointer& clip,
                  const QColor& colour, bool where_white);

  // Null, and the drawing is not complete, where the bitmap cannot be read or there are too many.
  QImage Bitmap(const DibParts& dib, bool alpha);

  // Something that should be seen is not among the items.
  void LeaveOut() { complete_ = false; }
  // The bounds are reached: nothing more is taken.
  bool full() const { return full_; }
  // What the items cover; null while there are none.
  QRectF bounds() const { return bounds_; }
  bool empty() const { return items_.empty(); }

  // The frame is the part of the items' plane that is shown, the size its size on paper in twips.
  std::shared_ptr<const Drawing> Take(const QRectF& frame, QSizeF size);

 private:
  // A bitmap that may be a part of a transparent one, which takes two or three.
  struct Part {
    QImage image;
    QTransform place;
    int operation;
    std::size_t item;
  };

  bool Add(DrawnItem item, int points, int operation);
  bool MergeParts(const QImage& image, const QTransform& place, int operation);
  void FitToFrame(const QRectF& frame);

  std::vector<DrawnItem> items_;
  std::vector<Part> parts_;
  const Clip* last_clip_ = nullptr;
  QRectF bounds_;
  double points_ = 0, pixels_ = 0;
  bool complete_ = true, full_ = false;
};

}  // namespace tenora::printing
