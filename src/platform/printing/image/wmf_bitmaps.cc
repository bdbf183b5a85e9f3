#include "platform/printing/image/wmf_bitmaps.h"

#include "platform/printing/image/wmf_record.h"

namespace tenora::printing {
namespace {

int TernaryOperation(const RecordBytes& values) { return values.Byte(2); }

// The numbers from `at` on are height, width, y and x.
QRectF TargetAt(const RecordBytes& values, std::size_t at) {
  return {QPointF(values.Signed16(at + 6), values.Signed16(at + 4)),
          QSizeF(values.Signed16(at + 2), values.Signed16(at))};
}

void Draw(const RecordBytes& dib, BitmapPlace place, int operation, bool from_below,
          MetafileCanvas& canvas) {
  const QImage image = canvas.output().Bitmap(PartsOf(dib.bytes()), false);
  // Rows of a bitmap that is stored upside down are counted from its lower edge.
  if (from_below && dib.Signed32(8) > 0 && place.source.height() > 0) {
    place.source.moveTop(image.height() - place.source.bottom());
  }
  canvas.Image(image, place, operation);
}

}  // namespace

bool PlayWmfBitmap(std::uint16_t function, const RecordBytes& values, MetafileCanvas& canvas) {
  // A bitmap record without a bitmap has two bytes in its place, and no more than its numbers.
  const bool bare = values.size() / 2 == static_cast<std::size_t>(function >> 8);
  const int operation = TernaryOperation(values);
  BitmapPlace place;
  switch (function) {
    case kPatBlt:
      place.target = TargetAt(values, 4);
      canvas.Image({}, place, operation);
      return true;
    case kStretchDib:
      place.target = TargetAt(values, 14);
      place.source = TargetAt(values, 6);
      Draw(values.From(22), place, operation, true, canvas);
      return true;
    case kSetDibToDevice:
      place.target = TargetAt(values, 10);
      place.source = QRectF(QPointF(values.Signed16(8), values.Signed16(6)), place.target.size());
      Draw(values.From(18), place, kCopySource, true, canvas);
      return true;
    case kDibStretchBlt:
    case kStretchBlt:
      place.target = TargetAt(values, bare ? 14 : 12);
      place.source = TargetAt(values, 4);
      break;
    case kDibBitBlt:
    case kBitBlt:
      place.target = TargetAt(values, bare ? 10 : 8);
      place.source = QRectF(QPointF(values.Signed16(6), values.Signed16(4)), place.target.size());
      break;
    default:
      return false;
  }
  if (bare || !UsesSource(operation)) {
    if (UsesSource(operation)) {
      canvas.output().LeaveOut();
    } else {
      canvas.Image({}, place, operation);
    }
    return true;
  }
  const bool stretched = function == kDibStretchBlt || function == kStretchBlt;
  const RecordBytes bitmap = values.From(stretched ? 20 : 16);
  if (function == kDibBitBlt || function == kDibStretchBlt) {
    Draw(bitmap, place, operation, false, canvas);
  } else {
    canvas.Image(WmfDeviceBitmap(bitmap, 10, canvas), place, operation);
  }
  return true;
}

QImage WmfDeviceBitmap(const RecordBytes& bitmap, std::size_t bits_at, MetafileCanvas& canvas) {
  const int width = bitmap.Signed16(2), height = bitmap.Signed16(4), stride = bitmap.Signed16(6);
  const RecordBytes bits = bitmap.From(bits_at);
  const bool monochrome = bitmap.Byte(8) == 1 && bitmap.Byte(9) == 1;
  if (!monochrome || width <= 0 || height <= 0 || stride < (width + 7) / 8 ||
      bits.size() < static_cast<std::size_t>(stride) * static_cast<std::size_t>(height)) {
    canvas.output().LeaveOut();
    return {};
  }
  QImage image = QImage(reinterpret_cast<const uchar*>(bits.bytes().data()), width, height, stride,
                        QImage::Format_Mono)
                     .copy();
  image.setColorTable({canvas.state().text.colour.rgb(), canvas.state().ground_colour.rgb()});
  return image;
}

}  // namespace tenora::printing
