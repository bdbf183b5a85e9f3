// What the records of WMF and EMF files draw on: a device context with its coordinates, tools and
// clipping. Coordinates are logical, as the records give them, unless they are said to be the
// device's.
#pragma once

#include <QPainterPath>
#include <QTransform>
#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "platform/printing/image/drawing_builder.h"
#include "platform/printing/image/gdi_objects.h"
#include "platform/printing/image/metafile_text.h"
#include "platform/printing/image/raster_operation.h"

namespace tenora::printing {

enum MapMode {
  kMapText = 1,
  kMapLoMetric = 2,
  kMapHiMetric = 3,
  kMapLoEnglish = 4,
  kMapHiEnglish = 5,
  kMapTwips = 6,
  kMapIsotropic = 7,
  kMapAnisotropic = 8
};

enum class ClipMode { kAnd = 1, kOr = 2, kXor = 3, kWithout = 4, kCopy = 5 };

// Ternary raster operations; Image() takes any other as well.
inline constexpr int kCopySource = 0xCC, kCopyPattern = 0xF0;

struct CanvasState {
  int map_mode = kMapText;
  QPointF window_origin, viewport_origin;
  QSizeF window_extent{1, 1}, viewport_extent{1, 1};
  QTransform world;
  GdiPen pen;
  GdiBrush brush;
  GdiFont font;
  QColor ground_colour = Qt::white;
  bool opaque = true;  // the gaps of hatches, and the ground of texts
  Qt::FillRule fill_rule = Qt::OddEvenFill;
  int operation = kOpCopy;  // of pens and brushes, binary
  TextSetting text;
  bool clockwise = false;  // arcs
  double miter_limit = 10;
  QPointF position;
  std::shared_ptr<const Clip> clip;
};

struct CanvasText {
  MetafileText text;
  std::optional<QRectF> box;
  bool fill_box = false, clip_to_box = false;
};

// Where a bitmap is drawn to, and the part that is drawn, in pixels from its top left corner (all
// where it is empty). Negative sizes mirror it.
struct BitmapPlace {
  QRectF target;
  QRectF source;
};

struct GradientCorner {
  QPointF at;
  QColor colour;
};

enum class ArcKind { kArc, kChord, kPie };

class MetafileCanvas {
 public:
  // The reference device's resolution, for lengths in millimetres and inches.
  explicit MetafileCanvas(QSizeF device_units_per_millimetre);

  CanvasState& state() { return state_; }
  // To be called after a change of map_mode, window, viewport or world.
  void UpdateTransform();
  const QTransform& transform() const { return transform_; }
  // Logical units of the page to the device's, without the world's transform.
  QTransform PageTransform() const;
  void Save();
  // A negative number leaves that many states, a positive one all from that state on.
  void Restore(int number);
  void Select(const GdiObject& object);

  // Areas are filled and outlined, lines outlined; within a path bracket they become its part.
  void Area(const QPainterPath& path);
  void Line(const QPainterPath& path);
  // Lines from the current position, which they move. The path begins there.
  void Continue(const QPainterPath& path);
  void MoveTo(QPointF to);
  void Arc(ArcKind kind, const QRectF& ellipse, QPointF from, QPointF to);
  // The same as lines from the current position.
  void ArcTo(const QRectF& ellipse, QPointF from, QPointF to);
  void Region(const GdiRegion& region, const GdiBrush& brush);
  void RegionFrame(const GdiRegion& region, const GdiBrush& brush, QSizeF thickness);
  void InvertRegion(const GdiRegion& region);
  void Pixel(QPointF at, const QColor& colour);
  void Gradient(const GradientCorner& first, const GradientCorner& second, bool horizontal);
  void Gradient(const std::array<GradientCorner, 3>& triangle);
  void Text(const CanvasText& text);
  // With a ternary raster operation; without an image for those that use none.
  void Image(const QImage& image, const BitmapPlace& place, int operation);

  // Path brackets.
  void BeginPath();
  void EndPath() { in_path_ = false; }
  void AbortPath();
  void CloseFigure();
  void WidenPath();
  void PaintPath(bool fill, bool stroke);
  void ClipToPath(ClipMode mode);

  void IntersectClip(const QRectF& rectangle);
  void ExcludeClip(const QRectF& rectangle);
  void OffsetClip(QPointF by);
  void CombineClip(const GdiRegion& region_in_device_units, ClipMode mode);

  DrawingBuilder& output() { return output_; }

 private:
  QPen PenNow() const;
  // These take paths in device units.
  void Paint(const QPainterPath& path, bool fill, bool stroke, int operation);
  void Fill(const QPainterPath& path, const GdiBrush& brush, int operation);
  void FillColour(const QPainterPath& path, const QColor& colour, int operation);
  void Hatch(const QPainterPath& path, const GdiBrush& brush, int operation);
  void Pattern(const QPainterPath& path, const GdiBrush& brush, int operation);
  void AddClip(QPainterPath path);
  void SetClip(QPainterPath path, ClipMode mode);
  QPainterPath ArcPath(ArcKind kind, const QRectF& ellipse, QPointF from, QPointF to) const;
  void ImageWithPattern(const QImage& image, const QTransform& place, int operation);

  QSizeF per_millimetre_;
  CanvasState state_;
  std::vector<CanvasState> saved_;
  QTransform transform_;
  QPainterPath path_;
  bool in_path_ = false;
  MetafileTexts texts_;
  DrawingBuilder output_;
};

// A rectangle from two opposite corners.
QRectF RectOf(double left, double top, double right, double bottom);

}  // namespace tenora::printing
