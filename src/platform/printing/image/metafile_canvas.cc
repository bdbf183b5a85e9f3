#include "platform/printing/image/metafile_canvas.h"

#include <QLineF>
#include <QLinearGradient>
#include <algorithm>
#include <cmath>
#include <utility>

namespace tenora::printing {
namespace {

constexpr std::size_t kMostSaved = 256;
constexpr int kMostClips = 64;
constexpr int kMostHatchLines = 400;
constexpr double kHatchDistance = 2.1;       // millimetres: eight pixels of a screen
constexpr double kPatternPixel = 25.4 / 96;  // millimetres
constexpr double kMillimetresPerInch = 25.4;
constexpr int kTriangleSide = 64;  // pixels that a triangle's gradient is computed for
constexpr double kEverywhere = 1e7;

bool IsFinite(const QTransform& transform) {
  const double numbers[] = {transform.m11(), transform.m12(), transform.m21(),
                            transform.m22(), transform.dx(),  transform.dy()};
  return std::ranges::all_of(
      numbers, [](double number) { return std::isfinite(number) && std::abs(number) < 1e9; });
}

QPainterPath OutsideOf(const QPainterPath& path) {
  QPainterPath outside;
  outside.setFillRule(Qt::OddEvenFill);
  outside.addRect(-kEverywhere, -kEverywhere, 2 * kEverywhere, 2 * kEverywhere);
  outside.addPath(path);
  return outside;
}

QPainterPath PathOf(const GdiRegion& region) {
  QPainterPath path;
  path.setFillRule(Qt::WindingFill);
  for (const QRectF& rectangle : region.rectangles) path.addRect(rectangle);
  return path;
}

QPointF Direction(int hatch) {
  switch (hatch) {
    case 0:
      return {1, 0};
    case 1:
      return {0, 1};
    case 2:
      return {1, 1};
    default:
      return {1, -1};
  }
}

// Parallel lines over the rectangle.
void AddHatchLines(QPainterPath& path, const QRectF& area, QPointF direction, double distance) {
  const double length = std::hypot(direction.x(), direction.y());
  const QPointF along = direction / length, across(-along.y(), along.x());
  const double radius = std::hypot(area.width(), area.height()) / 2;
  const int count = static_cast<int>(std::min(radius / distance, kMostHatchLines / 2.0));
  for (int i = -count; i <= count; ++i) {
    const QPointF middle = area.center() + across * (i * distance);
    path.moveTo(middle - along * radius);
    path.lineTo(middle + along * radius);
  }
}

QColor Mixed(const std::array<GradientCorner, 3>& corners, const std::array<double, 3>& weights) {
  double red = 0, green = 0, blue = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    red += corners[i].colour.red() * weights[i];
    green += corners[i].colour.green() * weights[i];
    blue += corners[i].colour.blue() * weights[i];
  }
  const auto level = [](double value) { return static_cast<int>(std::clamp(value, 0.0, 255.0)); };
  return {level(red), level(green), level(blue)};
}

// Goes on from the path's end along the other. QPainterPath::connectPath forgets a last moveTo.
void Append(QPainterPath& path, const QPainterPath& other) {
  if (path.elementCount() == 0) {
    path = other;
    return;
  }
  for (int i = 0; i < other.elementCount(); ++i) {
    const QPainterPath::Element& element = other.elementAt(i);
    if (i == 0) {
      if (path.currentPosition() != QPointF(element)) path.lineTo(element);
    } else if (element.isMoveTo()) {
      path.moveTo(element);
    } else if (element.isLineTo()) {
      path.lineTo(element);
    } else if (element.isCurveTo() && i + 2 < other.elementCount()) {
      path.cubicTo(element, other.elementAt(i + 1), other.elementAt(i + 2));
      i += 2;
    }
  }
}

double Angle(const QRectF& ellipse, QPointF point) {
  const QPointF from_centre = point - ellipse.center();
  return std::atan2(-from_centre.y() / std::max(ellipse.height(), 1e-9),
                    from_centre.x() / std::max(ellipse.width(), 1e-9)) *
         180 / M_PI;
}

}  // namespace

QRectF RectOf(double left, double top, double right, double bottom) {
  return QRectF(QPointF(left, top), QPointF(right, bottom)).normalized();
}

MetafileCanvas::MetafileCanvas(QSizeF device_units_per_millimetre)
    : per_millimetre_(device_units_per_millimetre) {
  state_.pen.colour = Qt::black;
}

void MetafileCanvas::UpdateTransform() {
  const QTransform transform = state_.world * PageTransform();
  if (IsFinite(transform)) transform_ = transform;
}

QTransform MetafileCanvas::PageTransform() const {
  const double inch = kMillimetresPerInch;
  double across = 1, down = 1, unit = 0;  // millimetres
  switch (state_.map_mode) {
    case kMapLoMetric:
      unit = 0.1;
      break;
    case kMapHiMetric:
      unit = 0.01;
      break;
    case kMapLoEnglish:
      unit = 0.01 * inch;
      break;
    case kMapHiEnglish:
      unit = 0.001 * inch;
      break;
    case kMapTwips:
      unit = inch / 1440;
      break;
    case kMapIsotropic:
    case kMapAnisotropic:
      if (state_.window_extent.width() != 0 && state_.window_extent.height() != 0) {
        across = state_.viewport_extent.width() / state_.window_extent.width();
        down = state_.viewport_extent.height() / state_.window_extent.height();
      }
      if (state_.map_mode == kMapIsotropic) {
        const double both = std::min(std::abs(across), std::abs(down));
        across = std::copysign(both, across);
        down = std::copysign(both, down);
      }
      break;
    default:
      break;
  }
  if (unit != 0) {
    across = unit * per_millimetre_.width();
    down = -unit * per_millimetre_.height();
  }
  return QTransform::fromTranslate(-state_.window_origin.x(), -state_.window_origin.y()) *
         QTransform::fromScale(across, down) *
         QTransform::fromTranslate(state_.viewport_origin.x(), state_.viewport_origin.y());
}

void MetafileCanvas::Save() {
  if (saved_.size() < kMostSaved) {
    saved_.push_back(state_);
  } else {
    output_.LeaveOut();
  }
}

void MetafileCanvas::Restore(int number) {
  const auto count = static_cast<int>(saved_.size());
  const int index = number < 0 ? count + number : number - 1;
  if (index < 0 || index >= count) return;
  state_ = saved_[static_cast<std::size_t>(index)];
  saved_.resize(static_cast<std::size_t>(index));
  UpdateTransform();
}

void MetafileCanvas::Select(const GdiObject& object) {
  if (const auto* pen = std::get_if<GdiPen>(&object)) state_.pen = *pen;
  if (const auto* brush = std::get_if<GdiBrush>(&object)) state_.brush = *brush;
  if (const auto* font = std::get_if<GdiFont>(&object)) state_.font = *font;
}

QPen MetafileCanvas::PenNow() const {
  const GdiPen& pen = state_.pen;
  if (pen.style == Qt::NoPen) return Qt::NoPen;
  const double scale = std::sqrt(std::abs(transform_.determinant()));
  QPen result(pen.colour);
  result.setWidthF(pen.width * scale);
  result.setCapStyle(pen.cap);
  result.setJoinStyle(pen.join);
  result.setMiterLimit(state_.miter_limit);
  if (pen.style == Qt::CustomDashLine && !pen.dashes.isEmpty() && pen.width > 0) {
    QList<qreal> dashes = pen.dashes;
    for (qreal& dash : dashes) dash /= pen.width;
    result.setDashPattern(dashes);
  } else if (pen.style != Qt::CustomDashLine) {
    // As numbers, so that their lengths stay when the line is drawn wider.
    QPen dashed(pen.style);
    if (pen.style != Qt::SolidLine) result.setDashPattern(dashed.dashPattern());
  }
  return result;
}

void MetafileCanvas::Area(const QPainterPath& path) {
  QPainterPath mapped = transform_.map(path);
  mapped.setFillRule(state_.fill_rule);
  if (in_path_) {
    path_.addPath(mapped);
  } else {
    Paint(mapped, true, true, state_.operation);
  }
}

void MetafileCanvas::Line(const QPainterPath& path) {
  const QPainterPath mapped = transform_.map(path);
  if (in_path_) {
    path_.addPath(mapped);
  } else {
    Paint(mapped, false, true, state_.operation);
  }
}

void MetafileCanvas::MoveTo(QPointF to) {
  state_.position = to;
  if (in_path_) path_.moveTo(transform_.map(to));
}

void MetafileCanvas::Continue(const QPainterPath& path) {
  if (path.isEmpty()) return;
  state_.position = path.currentPosition();
  if (!in_path_) return Line(path);
  Append(path_, transform_.map(path));
}

QPainterPath MetafileCanvas::ArcPath(ArcKind kind, const QRectF& ellipse, QPointF from,
                                     QPointF to) const {
  // The direction is the device's: mirrored coordinates turn it.
  const bool clockwise = state_.clockwise != (transform_.determinant() < 0);
  const double start = Angle(ellipse, from);
  double sweep = Angle(ellipse, to) - start;
  while (sweep <= 0) sweep += 360;
  if (clockwise && sweep < 360) sweep -= 360;
  QPainterPath path;
  if (kind == ArcKind::kPie) {
    path.moveTo(ellipse.center());
  } else {
    path.arcMoveTo(ellipse, start);
  }
  path.arcTo(ellipse, start, sweep);
  if (kind != ArcKind::kArc) path.closeSubpath();
  return path;
}

void MetafileCanvas::Arc(ArcKind kind, const QRectF& ellipse, QPointF from, QPointF to) {
  const QPainterPath path = ArcPath(kind, ellipse, from, to);
  if (kind == ArcKind::kArc) {
    Line(path);
  } else {
    Area(path);
  }
}

void MetafileCanvas::ArcTo(const QRectF& ellipse, QPointF from, QPointF to) {
  QPainterPath path;
  path.moveTo(state_.position);
  Append(path, ArcPath(ArcKind::kArc, ellipse, from, to));
  Continue(path);
}

void MetafileCanvas::Region(const GdiRegion& region, const GdiBrush& brush) {
  Fill(transform_.map(PathOf(region)), brush, state_.operation);
}

void MetafileCanvas::RegionFrame(const GdiRegion& region, const GdiBrush& brush, QSizeF thickness) {
  for (const QRectF& rectangle : region.rectangles) {
    QPainterPath frame;
    frame.addRect(rectangle);
    const QRectF inner = rectangle.adjusted(thickness.width(), thickness.height(),
                                            -thickness.width(), -thickness.height());
    if (inner.isValid()) frame.addRect(inner);
    Fill(transform_.map(frame), brush, state_.operation);
  }
}

void MetafileCanvas::InvertRegion(const GdiRegion& region) {
  FillColour(transform_.map(PathOf(region)), Qt::white, kOpXor);
}

void MetafileCanvas::Pixel(QPointF at, const QColor& colour) {
  QPainterPath path;
  path.addRect(QRectF(at, QSizeF(1, 1)));
  FillColour(transform_.map(path), colour, state_.operation);
}

void MetafileCanvas::Gradient(const GradientCorner& first, const GradientCorner& second,
                              bool horizontal) {
  QPainterPath path;
  path.addRect(RectOf(first.at.x(), first.at.y(), second.at.x(), second.at.y()));
  const QPointF end =
      horizontal ? QPointF(second.at.x(), first.at.y()) : QPointF(first.at.x(), second.at.y());
  QLinearGradient gradient(transform_.map(first.at), transform_.map(end));
  gradient.setColorAt(0, first.colour);
  gradient.setColorAt(1, second.colour);
  output_.AddShape({transform_.map(path), QPen(Qt::NoPen), gradient}, state_.clip, kOpCopy);
}

void MetafileCanvas::Gradient(const std::array<GradientCorner, 3>& triangle) {
  const QPointF origin = triangle[0].at;
  const QPointF right = triangle[1].at - origin, down = triangle[2].at - origin;
  // The image's pixel (x, y) lies at these shares of the two sides.
  QImage image(kTriangleSide, kTriangleSide, QImage::Format_RGB32);
  for (int y = 0; y < kTriangleSide; ++y) {
    for (int x = 0; x < kTriangleSide; ++x) {
      const double second = (x + 0.5) / kTriangleSide, third = (y + 0.5) / kTriangleSide;
      image.setPixelColor(x, y, Mixed(triangle, {1 - second - third, second, third}));
    }
  }
  const double side = kTriangleSide;
  const QTransform place = QTransform(right.x() / side, right.y() / side, down.x() / side,
                                      down.y() / side, origin.x(), origin.y()) *
                           transform_;
  QPainterPath edge;
  edge.addPolygon(transform_.map(QPolygonF({origin, triangle[1].at, triangle[2].at, origin})));
  const auto outside = state_.clip;
  AddClip(edge);
  output_.AddImage(image, place, state_.clip, kOpCopy);
  state_.clip = outside;
}

void MetafileCanvas::Text(const CanvasText& text) {
  const auto clip = state_.clip;
  if (text.box) {
    QPainterPath box;
    box.addRect(*text.box);
    const QPainterPath mapped = transform_.map(box);
    if (text.fill_box) FillColour(mapped, state_.ground_colour, kOpCopy);
    if (text.clip_to_box) AddClip(mapped);
  }
  const LaidText laid = texts_.Lay(text.text, state_.font, state_.text, transform_);
  if (in_path_) {
    for (const DrawnText& piece : laid.pieces) {
      QPainterPath letters;
      letters.addText(QPointF(0, 0), piece.font, piece.text);
      path_.addPath(piece.place.map(letters));
    }
  } else {
    if (state_.opaque && !laid.ground.isEmpty()) {
      QPainterPath ground;
      ground.addPolygon(laid.ground);
      FillColour(ground, state_.ground_colour, kOpCopy);
    }
    for (const DrawnText& piece : laid.pieces) output_.AddText(piece, state_.clip);
  }
  state_.clip = clip;
  if ((state_.text.align & kAlignUpdatePosition) != 0) state_.position = laid.end;
}

void MetafileCanvas::Image(const QImage& image, const BitmapPlace& place, int operation) {
  if (!UsesSource(operation)) {
    QPainterPath path;
    path.addRect(place.target.normalized());
    return Fill(transform_.map(path), state_.brush, OfPattern(operation));
  }
  if (image.isNull()) return;
  QRectF source = place.source.isEmpty() && place.source.width() >= 0 ? QRectF(image.rect())
                                                                      : place.source.normalized();
  const QRect part = source.toAlignedRect() & image.rect();
  if (part.isEmpty()) return;
  const QImage shown = part == image.rect() ? image : image.copy(part);
  const double across = place.target.width() / source.width();
  const double down = place.target.height() / source.height();
  QTransform to_device =
      QTransform::fromTranslate(part.left() - source.left(), part.top() - source.top()) *
      QTransform::fromScale(across, down) *
      QTransform::fromTranslate(place.target.x(), place.target.y()) * transform_;
  if (place.source.width() < 0) {
    to_device = QTransform(-1, 0, 0, 1, part.width(), 0) * to_device;
  }
  if (place.source.height() < 0) {
    to_device = QTransform(1, 0, 0, -1, 0, part.height()) * to_device;
  }
  if (!UsesPattern(operation)) {
    output_.AddImage(shown, to_device, state_.clip, WithPattern(operation, false));
  } else {
    ImageWithPattern(shown, to_device, operation);
  }
}

void MetafileCanvas::ImageWithPattern(const QImage& image, const QTransform& place, int operation) {
  constexpr int kPatternWhereBlack = 0xB8, kPatternWhereWhite = 0xE2;
  const GdiBrush& brush = state_.brush;
  const bool black = brush.colour == Qt::black, white = brush.colour == Qt::white;
  if (brush.kind != GdiBrush::Kind::kSolid) {
    output_.LeaveOut();
  } else if (black || white) {
    output_.AddImage(image, place, state_.clip, WithPattern(operation, white));
  } else if (operation == kPatternWhereBlack || operation == kPatternWhereWhite) {
    output_.AddStencil(image, place, state_.clip, brush.colour, operation == kPatternWhereWhite);
  } else {
    output_.LeaveOut();
  }
}

void MetafileCanvas::BeginPath() {
  path_ = QPainterPath();
  in_path_ = true;
}

void MetafileCanvas::AbortPath() {
  path_ = QPainterPath();
  in_path_ = false;
}

void MetafileCanvas::CloseFigure() {
  if (path_.elementCount() > 0) path_.closeSubpath();
}

void MetafileCanvas::WidenPath() {
  const QPen pen = PenNow();
  if (pen.style() == Qt::NoPen) return;
  QPainterPathStroker stroker(pen);
  stroker.setWidth(std::max(pen.widthF(), 1.0));
  stroker.setDashPattern(Qt::SolidLine);
  path_ = stroker.createStroke(path_);
}

void MetafileCanvas::PaintPath(bool fill, bool stroke) {
  QPainterPath path = std::exchange(path_, QPainterPath());
  path.setFillRule(state_.fill_rule);
  Paint(path, fill, stroke, state_.operation);
}

void MetafileCanvas::ClipToPath(ClipMode mode) {
  QPainterPath path = std::exchange(path_, QPainterPath());
  path.setFillRule(state_.fill_rule);
  SetClip(std::move(path), mode);
}

void MetafileCanvas::IntersectClip(const QRectF& rectangle) {
  QPainterPath path;
  path.addRect(rectangle);
  AddClip(transform_.map(path));
}

void MetafileCanvas::ExcludeClip(const QRectF& rectangle) {
  QPainterPath path;
  path.addRect(rectangle);
  AddClip(OutsideOf(transform_.map(path)));
}

void MetafileCanvas::OffsetClip(QPointF by) {
  const QPointF shift = transform_.map(by) - transform_.map(QPointF());
  std::vector<const Clip*> clips;
  for (const Clip* clip = state_.clip.get(); clip != nullptr; clip = clip->outer.get()) {
    clips.push_back(clip);
  }
  const auto held = std::exchange(state_.clip, nullptr);
  for (std::size_t i = clips.size(); i-- > 0;) AddClip(clips[i]->path.translated(shift));
}

void MetafileCanvas::CombineClip(const GdiRegion& region_in_device_units, ClipMode mode) {
  SetClip(PathOf(region_in_device_units), mode);
}

void MetafileCanvas::AddClip(QPainterPath path) {
  Clip clip;
  clip.path = std::move(path);
  clip.points = clip.path.elementCount();
  if (state_.clip != nullptr) {
    clip.outer = state_.clip;
    clip.depth = state_.clip->depth + 1;
    clip.points += state_.clip->points;
  }
  if (clip.depth > kMostClips) return output_.LeaveOut();
  state_.clip = std::make_shared<const Clip>(std::move(clip));
}

void MetafileCanvas::SetClip(QPainterPath path, ClipMode mode) {
  switch (mode) {
    case ClipMode::kAnd:
      return AddClip(std::move(path));
    case ClipMode::kWithout:
      return AddClip(OutsideOf(path));
    case ClipMode::kCopy:
      state_.clip = nullptr;
      return AddClip(std::move(path));
    case ClipMode::kOr:
    case ClipMode::kXor:
      if (state_.clip == nullptr) {
        if (mode == ClipMode::kXor) AddClip(OutsideOf(path));
      } else if (state_.clip->outer != nullptr) {
        output_.LeaveOut();
      } else {
        QPainterPath both = state_.clip->path;
        both.setFillRule(mode == ClipMode::kOr ? Qt::WindingFill : Qt::OddEvenFill);
        both.addPath(path);
        state_.clip = nullptr;
        AddClip(std::move(both));
      }
  }
}

void MetafileCanvas::Paint(const QPainterPath& path, bool fill, bool stroke, int operation) {
  const QPen pen = stroke ? PenNow() : QPen(Qt::NoPen);
  if (fill && state_.brush.kind == GdiBrush::Kind::kSolid && operation == kOpCopy) {
    output_.AddShape({path, pen, state_.brush.colour}, state_.clip, operation);
    return;
  }
  if (fill) Fill(path, state_.brush, operation);
  if (pen.style() != Qt::NoPen) {
    output_.AddShape({path, pen, Qt::NoBrush}, state_.clip, operation);
  }
}

void MetafileCanvas::Fill(const QPainterPath& path, const GdiBrush& brush, int operation) {
  switch (brush.kind) {
    case GdiBrush::Kind::kSolid:
      return FillColour(path, brush.colour, operation);
    case GdiBrush::Kind::kHatch:
      return Hatch(path, brush, operation);
    case GdiBrush::Kind::kPattern:
      return Pattern(path, brush, operation);
    case GdiBrush::Kind::kNone:
      // An operation that looks at the ground only needs no brush.
      if (WithSource(operation, false) == WithSource(operation, true)) {
        FillColour(path, Qt::black, operation);
      }
      return;
  }
}

void MetafileCanvas::FillColour(const QPainterPath& path, const QColor& colour, int operation) {
  output_.AddShape({path, QPen(Qt::NoPen), colour}, state_.clip, operation);
}

void MetafileCanvas::Hatch(const QPainterPath& path, const GdiBrush& brush, int operation) {
  if (state_.opaque) FillColour(path, state_.ground_colour, operation);
  const QRectF area = path.boundingRect();
  const double distance = std::max(kHatchDistance * std::max(per_millimetre_.width(), 1e-6),
                                   std::hypot(area.width(), area.height()) / kMostHatchLines);
  QPainterPath lines;
  if (brush.hatch < 4) {
    AddHatchLines(lines, area, Direction(brush.hatch), distance);
  } else {
    AddHatchLines(lines, area, Direction(brush.hatch == 4 ? 0 : 2), distance);
    AddHatchLines(lines, area, Direction(brush.hatch == 4 ? 1 : 3), distance);
  }
  const auto clip = state_.clip;
  AddClip(path);
  QPen pen(brush.colour);
  pen.setWidthF(0);
  output_.AddShape({lines, pen, Qt::NoBrush}, state_.clip, operation);
  state_.clip = clip;
}

void MetafileCanvas::Pattern(const QPainterPath& path, const GdiBrush& brush, int operation) {
  if (brush.pattern.isNull()) return output_.LeaveOut();
  QImage pattern = brush.pattern;
  if (brush.two_colours && pattern.colorCount() == 2) {
    pattern.setColorTable({state_.text.colour.rgb(), state_.ground_colour.rgb()});
  }
  QBrush tile(pattern.convertToFormat(QImage::Format_RGB32));
  const QSizeF pixel = per_millimetre_ * kPatternPixel;
  tile.setTransform(QTransform::fromScale(pixel.width(), pixel.height()));
  output_.AddShape({path, QPen(Qt::NoPen), tile}, state_.clip, operation);
}

}  // namespace tenora::printing
