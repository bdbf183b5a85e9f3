#include "platform/printing/pictures.h"

#include <QBuffer>
#include <QImageReader>
#include <QPen>
#include <algorithm>
#include <cmath>

#include "platform/printing/image/metafile.h"

namespace tenora::printing {
namespace {

using Kind = richtext::Picture::Kind;

constexpr double kTwipsPerPixel = 15;    // 96 pixels to the inch
constexpr double kMostPixels = 400e6;    // of a picture, however well compressed
constexpr double kPrintedPixels = 20e6;  // finer than paper shows; larger pictures are scaled to it
constexpr std::size_t kMostKept = std::size_t{64}
                                  << 20;  // bytes of pictures, compressed and decoded

QImage FromBytes(const std::string& bytes, const char* format) {
  if (bytes.empty() || bytes.size() > static_cast<std::size_t>(INT_MAX)) return {};
  QByteArray view = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&view);
  QImageReader reader(&buffer, format);
  const QSize size = reader.size();
  const double pixels = double(size.width()) * size.height();
  if (pixels > kMostPixels) return {};
  if (pixels > kPrintedPixels) reader.setScaledSize(size * std::sqrt(kPrintedPixels / pixels));
  return reader.read();
}

QImage Decode(const richtext::Picture& picture) {
  switch (picture.kind) {
    case Kind::kPng:
      return FromBytes(picture.bytes, "PNG");
    case Kind::kJpeg:
      return FromBytes(picture.bytes, "JPEG");
    case Kind::kDib:
    case Kind::kBitmap:
      return FromBytes(BmpFromDib(picture.bytes), "BMP");
    case Kind::kWmf:
      return FromBytes(BitmapOfWmf(picture.bytes), "BMP");
    case Kind::kEmf:
      return FromBytes(BitmapOfEmf(picture.bytes), "BMP");
    case Kind::kUnknown:
      return {};
  }
  return {};
}

const char* Caption(Kind kind) {
  switch (kind) {
    case Kind::kPng:
      return "PNG picture";
    case Kind::kJpeg:
      return "JPEG picture";
    case Kind::kDib:
    case Kind::kBitmap:
      return "Bitmap picture";
    case Kind::kWmf:
      return "WMF picture";
    case Kind::kEmf:
      return "EMF picture";
    case Kind::kUnknown:
      break;
  }
  return "Picture";
}

}  // namespace

PlacedPicture Pictures::Place(const richtext::Picture& picture, double most_width,
                              double most_height) {
  PlacedPicture placed;
  placed.image = Decoded(picture);
  placed.caption = Caption(picture.kind);
  placed.lossless = picture.kind != Kind::kJpeg;
  placed.width = picture.width > 0 ? picture.width : placed.image.width() * kTwipsPerPixel;
  placed.height = picture.height > 0 ? picture.height : placed.image.height() * kTwipsPerPixel;
  placed.width = std::max(placed.width, 1.0);
  placed.height = std::max(placed.height, 1.0);
  const double scale =
      std::min({1.0, std::max(most_width, 1.0) / placed.width, most_height / placed.height});
  placed.width *= scale;
  placed.height *= scale;
  return placed;
}

QImage Pictures::Decoded(const richtext::Picture& picture) {
  const std::pair key(picture.kind, picture.bytes);
  const auto found = decoded_.find(key);
  if (found != decoded_.end()) return found->second;
  const QImage image = Decode(picture);
  const std::size_t bytes = picture.bytes.size() + static_cast<std::size_t>(image.sizeInBytes());
  if (decoded_bytes_ + bytes > kMostKept) {
    decoded_.clear();
    decoded_bytes_ = 0;
  }
  decoded_bytes_ += bytes;
  decoded_.emplace(key, image);
  return image;
}

bool CanDraw(const richtext::Picture& picture) { return !Decode(picture).isNull(); }

void DrawPicture(QPainter& painter, const QRectF& area, const PlacedPicture& picture) {
  if (!picture.image.isNull()) {
    painter.setRenderHint(QPainter::LosslessImageRendering, picture.lossless);
    painter.drawImage(area, picture.image);
    return;
  }
  painter.setPen(QPen(Qt::gray, 10));
  painter.drawRect(area);
  QFont font(QStringLiteral("Liberation Sans"));
  font.setPixelSize(static_cast<int>(std::clamp(area.height() / 3, 40.0, 200.0)));
  painter.setFont(font);
  painter.drawText(area, Qt::AlignCenter, QString::fromStdString(picture.caption));
}

}  // namespace tenora::printing
