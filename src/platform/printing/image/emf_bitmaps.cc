#include "platform/printing/image/emf_bitmaps.h"

#include <algorithm>
#include <cmath>

namespace tenora::printing {
namespace {

// The records that began as bit-block transfers agree up to these offsets.
constexpr std::size_t kTarget = 24, kOperation = 40, kSource = 44, kBitmap = 84, kSourceSize = 100;

DibParts Dib(const EmfRecord& record, std::size_t field) {
  return {record.bytes.Part(record.Number(field), record.Number(field + 4)).bytes(),
          record.bytes.Part(record.Number(field + 8), record.Number(field + 12)).bytes()};
}

QRectF RectAndSize(const EmfRecord& record, std::size_t at) {
  return {record.Point(at), record.Size(at + 8)};
}

void PlayTransfer(const EmfRecord& record, MetafileCanvas& canvas, bool stretched) {
  const int operation = record.bytes.Byte(kOperation + 2);
  BitmapPlace place{RectAndSize(record, kTarget), {}};
  if (!UsesSource(operation)) return canvas.Image({}, place, operation);
  place.source =
      QRectF(record.Point(kSource), stretched ? record.Size(kSourceSize) : place.target.size());
  canvas.Image(EmfBitmap(record, kBitmap, canvas), place, operation);
}

void Fade(QImage& image, int opacity) {
  if (opacity >= 255) return;
  image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < image.height(); ++y) {
    auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) {
      const QRgb pixel = pixels[x];
      const auto faded = [&](int level) { return level * opacity / 255; };
      pixels[x] = qRgba(faded(qRed(pixel)), faded(qGreen(pixel)), faded(qBlue(pixel)),
                        faded(qAlpha(pixel)));
    }
  }
}

void PlayAlphaBlend(const EmfRecord& record, MetafileCanvas& canvas) {
  const bool alpha = record.bytes.Byte(kOperation + 3) == 1;
  QImage image = EmfBitmap(record, kBitmap, canvas, alpha);
  if (image.isNull()) return;
  Fade(image, record.bytes.Byte(kOperation + 2));
  const BitmapPlace place{RectAndSize(record, kTarget),
                          QRectF(record.Point(kSource), record.Size(kSourceSize))};
  canvas.Image(image, place, kCopySource);
}

// One colour is not drawn.
void PlayTransparent(const EmfRecord& record, MetafileCanvas& canvas) {
  QImage image = EmfBitmap(record, kBitmap, canvas);
  if (image.isNull()) return;
  image = image.convertToFormat(QImage::Format_ARGB32);
  const QRgb key = record.Colour(kOperation).rgb() & RGB_MASK;
  for (int y = 0; y < image.height(); ++y) {
    auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) {
      if ((pixels[x] & RGB_MASK) == key) pixels[x] = 0;
    }
  }
  const BitmapPlace place{RectAndSize(record, kTarget),
                          QRectF(record.Point(kSource), record.Size(kSourceSize))};
  canvas.Image(image, place, kCopySource);
}

// The picture where the mask is white. Its raster operation has one more, for where it is black,
// which leaves the ground in all files that were seen.
void PlayMasked(const EmfRecord& record, MetafileCanvas& canvas) {
  constexpr std::size_t kMaskPlace = 100, kMask = 112, kLeaveGround = 0xAA;
  if (record.Number(kMask + 4) == 0) return PlayTransfer(record, canvas, false);
  const BitmapPlace place{RectAndSize(record, kTarget),
                          QRectF(record.Point(kSource), record.Size(kTarget + 8))};
  QImage image = EmfBitmap(record, kBitmap, canvas);
  QImage mask = EmfBitmap(record, kMask, canvas);
  if (record.bytes.Byte(kOperation + 3) != kLeaveGround) canvas.output().LeaveOut();
  if (image.isNull() || mask.isNull()) return;
  const QPoint shift = (record.Point(kSource) - record.Point(kMaskPlace)).toPoint();
  mask = mask.copy(QRect(-shift, image.size())).convertToFormat(QImage::Format_Grayscale8);
  image = image.convertToFormat(QImage::Format_RGB32);
  image.setAlphaChannel(mask);
  canvas.Image(image, place, kCopySource);
}

// A bitmap whose corners lie anywhere.
void PlayParallelogram(const EmfRecord& record, MetafileCanvas& canvas) {
  const QPointF origin = record.Point(24), right = record.Point(32), down = record.Point(40);
  const QRectF source(record.Point(48), record.Size(56));
  QImage image = EmfBitmap(record, 96, canvas);
  const QRect part = source.toRect() & image.rect();
  if (image.isNull() || part.isEmpty()) return;
  if (record.Number(128) != 0) canvas.output().LeaveOut();  // a mask
  image = image.copy(part);
  const double across = image.width(), height = image.height();
  const QTransform place((right.x() - origin.x()) / across, (right.y() - origin.y()) / across,
                         (down.x() - origin.x()) / height, (down.y() - origin.y()) / height,
                         origin.x(), origin.y());
  canvas.output().AddImage(image, place * canvas.transform(), canvas.state().clip, kOpCopy);
}

// Rows of a bitmap that is stored upside down are counted from its lower edge.
void FromAbove(QRectF& source, const EmfRecord& record, std::size_t field, const QImage& image) {
  const RecordBytes head = record.bytes.From(record.Number(field));
  if (head.Signed32(8) > 0 && source.height() > 0) {
    source.moveTop(image.height() - source.bottom());
  }
}

void PlayDibits(const EmfRecord& record, MetafileCanvas& canvas, bool stretched) {
  constexpr std::size_t kDibitsBitmap = 48;
  const int operation = stretched ? record.bytes.Byte(68 + 2) : kCopySource;
  BitmapPlace place;
  place.source = QRectF(record.Point(32), record.Size(40));
  place.target = QRectF(record.Point(24), stretched ? record.Size(72) : record.Size(40));
  if (!UsesSource(operation)) return canvas.Image({}, place, operation);
  const QImage image = EmfBitmap(record, kDibitsBitmap, canvas);
  FromAbove(place.source, record, kDibitsBitmap, image);
  canvas.Image(image, place, operation);
}

}  // namespace

QImage EmfBitmap(const EmfRecord& record, std::size_t field, MetafileCanvas& canvas, bool alpha) {
  return canvas.output().Bitmap(Dib(record, field), alpha);
}

bool PlayEmfBitmap(const EmfRecord& record, MetafileCanvas& canvas) {
  switch (record.type) {
    case EmfType::kBitBlt:
    case EmfType::kStretchBlt:
      PlayTransfer(record, canvas, record.type == EmfType::kStretchBlt);
      return true;
    case EmfType::kMaskBlt:
      PlayMasked(record, canvas);
      return true;
    case EmfType::kPlgBlt:
      PlayParallelogram(record, canvas);
      return true;
    case EmfType::kSetDibitsToDevice:
    case EmfType::kStretchDibits:
      PlayDibits(record, canvas, record.type == EmfType::kStretchDibits);
      return true;
    case EmfType::kAlphaBlend:
      PlayAlphaBlend(record, canvas);
      return true;
    case EmfType::kTransparentBlt:
      PlayTransparent(record, canvas);
      return true;
    default:
      return false;
  }
}

}  // namespace tenora::printing
