#include "platform/printing/image/drawing_builder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/printing/image/raster_operation.h"

namespace tenora::printing {
namespace {

// More than a picture in a letter has; together they keep drawing to a few seconds.
constexpr std::size_t kMostItems = 200'000;
constexpr double kMostPoints = 3e6;     // of paths and clips
constexpr double kMostPixels = 40e6;    // of bitmaps
constexpr double kMostPainting = 1500;  // frames filled, one upon the other
constexpr double kMostDashes = 20'000;  // of a line
constexpr double kLargestCoordinate = 1e8;
// From the frame, in frames: drawing in pixels takes time for what is outside as well.
constexpr double kFarthest = 200;
constexpr double kUnseenCost = 0.02;  // of a shape's length in frames, in frames filled

QRectF BoundsOf(const DrawnItem& item) {
  if (const auto* shape = std::get_if<DrawnShape>(&item.what)) {
    const double edge = shape->pen.style() == Qt::NoPen ? 0 : shape->pen.widthF() / 2;
    return shape->path.controlPointRect().adjusted(-edge, -edge, edge, edge);
  }
  if (const auto* image = std::get_if<DrawnImage>(&item.what)) {
    return image->place.mapRect(QRectF(image->image.rect()));
  }
  const auto& text = std::get<DrawnText>(item.what);
  const double size = text.font.pixelSize();
  return text.place.mapRect(
      QRectF(0, -size, size * static_cast<double>(text.text.size()), size * 1.3));
}

bool IsSane(const QRectF& bounds) {
  const auto sane = [](double value) { return std::abs(value) < kLargestCoordinate; };
  return sane(bounds.left()) && sane(bounds.top()) && sane(bounds.right()) && sane(bounds.bottom());
}

QColor Inverted(const QColor& colour) {
  return {255 - colour.red(), 255 - colour.green(), 255 - colour.blue()};
}

QColor AfterPlain(const QColor& colour, int operation) {
  if (operation == kOpBlack) return Qt::black;
  if (operation == kOpWhite) return Qt::white;
  return operation == kOpInvertedSource ? Inverted(colour) : colour;
}

QImage AfterPlain(const QImage& image, int operation) {
  if (operation == kOpCopy) return image;
  QImage result = image.convertToFormat(QImage::Format_RGB32);
  if (operation == kOpInvertedSource) {
    result.invertPixels();
  } else {
    result.fill(operation == kOpBlack ? Qt::black : Qt::white);
  }
  return result;
}

// The one colour of a shape that is black or white throughout; nothing for others.
std::optional<bool> WhiteOrBlack(const DrawnShape& shape) {
  std::optional<bool> found;
  const auto look = [&](const QColor& colour) {
    const bool plain = colour == Qt::black || colour == Qt::white;
    const bool white = colour == Qt::white;
    if (!plain || (found && *found != white)) return false;
    found = white;
    return true;
  };
  if (shape.pen.style() != Qt::NoPen && !look(shape.pen.color())) return std::nullopt;
  if (shape.brush.style() == Qt::NoBrush) return found;
  if (shape.brush.style() != Qt::SolidPattern || !look(shape.brush.color())) return std::nullopt;
  return found;
}

// A line of a dot upon a dot takes as long as many lines.
void DropEndlessDashes(DrawnShape& shape) {
  if (shape.pen.style() != Qt::CustomDashLine) return;
  double period = 0;
  for (const qreal dash : shape.pen.dashPattern()) period += dash;
  period *= std::max(shape.pen.widthF(), 1e-9);
  const QRectF bounds = shape.path.controlPointRect();
  const double length = (bounds.width() + bounds.height()) * shape.path.elementCount();
  if (!(period * kMostDashes > length)) shape.pen.setStyle(Qt::SolidLine);
}

// The picture where the mask is black, transparent elsewhere.
QImage Masked(const QImage& mask, const QImage& picture) {
  QImage result = picture.convertToFormat(QImage::Format_ARGB32);
  const QImage scaled = mask.size() == picture.size()
                            ? mask.convertToFormat(QImage::Format_RGB32)
                            : mask.scaled(picture.size()).convertToFormat(QImage::Format_RGB32);
  for (int y = 0; y < result.height(); ++y) {
    auto* pixels = reinterpret_cast<QRgb*>(result.scanLine(y));
    const auto* opacity = reinterpret_cast<const QRgb*>(scaled.constScanLine(y));
    for (int x = 0; x < result.width(); ++x) {
      const int alpha = 255 - qGray(opacity[x]);
      pixels[x] = (pixels[x] & 0xFFFFFF) | static_cast<QRgb>(alpha) << 24;
    }
  }
  return result;
}

bool SamePlace(const QImage& one, const QTransform& place, const QImage& other,
               const QTransform& other_place) {
  const QRectF first = place.mapRect(QRectF(one.rect()));
  const QRectF second = other_place.mapRect(QRectF(other.rect()));
  const double near = 0.02 * std::max(first.width(), first.height());
  return std::abs(first.left() - second.left()) <= near &&
         std::abs(first.top() - second.top()) <= near &&
         std::abs(first.right() - second.right()) <= near &&
         std::abs(first.bottom() - second.bottom()) <= near;
}

}  // namespace

void DrawingBuilder::AddShape(DrawnShape shape, const ClipPointer& clip, int operation) {
  if (shape.path.isEmpty()) return;
  if (const auto white = WhiteOrBlack(shape)) operation = WithSource(operation, *white);
  DropEndlessDashes(shape);
  const QRectF bounds = BoundsOf({shape, nullptr});
  if (NeedsGround(operation) && !bounds_.intersects(bounds)) operation = OnWhite(operation);
  if (!NeedsGround(operation)) {
    shape.pen.setColor(AfterPlain(shape.pen.color(), operation));
    if (shape.brush.style() == Qt::SolidPattern) {
      shape.brush.setColor(AfterPlain(shape.brush.color(), operation));
    } else if (operation == kOpBlack || operation == kOpWhite) {
      if (shape.brush.style() != Qt::NoBrush) shape.brush = AfterPlain(QColor(), operation);
    }
    operation = kOpCopy;
  }
  const int points = shape.path.elementCount();
  Add({std::move(shape), clip}, points, operation);
}

void DrawingBuilder::AddText(DrawnText text, const ClipPointer& clip) {
  const int points = static_cast<int>(text.text.size());
  Add({std::move(text), clip}, points, kOpCopy);
}

void DrawingBuilder::AddImage(const QImage& image, const QTransform& place, const ClipPointer& clip,
                              int operation) {
  if (image.isNull()) return;
  if (MergeParts(image, place, operation)) return;
  const int wanted = operation;
  const QRectF bounds = place.mapRect(QRectF(image.rect()));
  if (NeedsGround(operation) && !bounds_.intersects(bounds)) operation = OnWhite(operation);
  DrawnItem item{DrawnImage{image, place}, clip};
  if (!NeedsGround(operation)) {
    std::get<DrawnImage>(item.what).image = AfterPlain(image, operation);
    operation = kOpCopy;
  }
  if (Add(std::move(item), 4, operation) && (wanted == kOpAnd || wanted == kOpXor)) {
    parts_.push_back({image, place, wanted, items_.size() - 1});
  }
}

void DrawingBuilder::AddStencil(const QImage& mask, const QTransform& place,
                                const ClipPointer& clip, const QColor& colour, bool where_white) {
  if (mask.isNull()) return;
  QImage plain(mask.size(), QImage::Format_RGB32);
  if (plain.isNull()) return;
  plain.fill(colour);
  QImage opaque_where_black = mask.convertToFormat(QImage::Format_RGB32);
  if (where_white) opaque_where_black.invertPixels();
  Add({DrawnImage{Masked(opaque_where_black, plain), place}, clip}, 4, kOpCopy);
}

QImage DrawingBuilder::Bitmap(const DibParts& dib, bool alpha) {
  pixels_ += PixelCount(dib);
  if (pixels_ > kMostPixels) full_ = true;
  if (full_) complete_ = false;
  const QImage image = full_ ? QImage() : ImageOf(dib, alpha);
  if (image.isNull()) complete_ = false;
  return image;
}

// A mask drawn with "and" and a picture drawn with "or" or "exclusive or" upon it are one picture
// that is transparent where the mask is white. So is the picture drawn with "exclusive or" before
// and after the mask.
bool DrawingBuilder::MergeParts(const QImage& image, const QTransform& place, int operation) {
  const auto here = [&](const Part& part) {
    return SamePlace(part.image, part.place, image, place);
  };
  const bool last = !parts_.empty() && parts_.back().item + 1 == items_.size();
  if (!last || !here(parts_.back())) {
    parts_.clear();
    return false;
  }
  if (parts_.back().operation != kOpAnd || (operation != kOpOr && operation != kOpXor)) {
    return false;
  }
  const Part mask = parts_.back();
  const bool framed = parts_.size() > 1 && operation == kOpXor &&
                      parts_[parts_.size() - 2].operation == kOpXor &&
                      parts_[parts_.size() - 2].item + 1 == mask.item;
  parts_.clear();
  const QImage merged = Masked(mask.image, image);
  if (framed) items_.pop_back();
  items_.back().what = DrawnImage{merged, place};
  items_.back().mode = ModeOf(kOpCopy);
  return true;
}

bool DrawingBuilder::Add(DrawnItem item, int points, int operation) {
  if (operation == kOpNothing) return false;
  if (item.clip.get() != last_clip_ && item.clip != nullptr) points += item.clip->points;
  points_ += points;
  full_ = full_ || items_.size() >= kMostItems || points_ > kMostPoints;
  const QRectF bounds = BoundsOf(item);
  if (full_ || !IsSane(bounds)) {
    complete_ = false;
    return false;
  }
  last_clip_ = item.clip.get();
  item.mode = ModeOf(operation);
  bounds_ |= bounds;
  items_.push_back(std::move(item));
  return true;
}

void DrawingBuilder::FitToFrame(const QRectF& frame) {
  const double across = kFarthest * frame.width(), down = kFarthest * frame.height();
  const QRectF reach = frame.adjusted(-across, -down, across, down);
  if (std::erase_if(items_,
                    [&](const DrawnItem& item) { return !reach.contains(BoundsOf(item)); }) > 0) {
    complete_ = false;
  }
  const double area = frame.width() * frame.height();
  double painted = 0;
  const Clip* clip = nullptr;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const QRectF bounds = BoundsOf(items_[i]), shown = bounds & frame;
    painted += shown.width() * shown.height() / area;
    painted += (bounds.width() / frame.width() + bounds.height() / frame.height()) * kUnseenCost;
    if (items_[i].clip.get() != clip) {
      clip = items_[i].clip.get();
      for (const Clip* one = clip; one != nullptr; one = one->outer.get()) {
        const QRectF part = one->path.controlPointRect() & frame;
        painted += part.width() * part.height() / area;
      }
    }
    if (painted > kMostPainting) {
      items_.resize(i);
      complete_ = false;
    }
  }
}

std::shared_ptr<const Drawing> DrawingBuilder::Take(const QRectF& frame, QSizeF size) {
  if (frame.isEmpty() || !IsSane(frame)) {
    items_.clear();
    complete_ = false;
  } else {
    FitToFrame(frame);
  }
  return std::make_shared<const Drawing>(std::move(items_), frame, size, complete_);
}

}  // namespace tenora::printing
