#include "platform/printing/pictures.h"

#include <algorithm>

#include "platform/printing/metafile.h"

namespace tenora::printing {
namespace {

using Kind = richtext::Picture::Kind;

constexpr double kTwipsPerPixel = 15;     // 96 pixels to the inch
constexpr int kMostPixels = 100'000'000;  // of one picture in memory

QImage FromBytes(const std::string& bytes, const char* format) {
  if (bytes.empty() || bytes.size() > static_cast<std::size_t>(INT_MAX)) return {};
  const QImage image = QImage::fromData(reinterpret_cast<const uchar*>(bytes.data()),
                                        static_cast<int>(bytes.size()), format);
  const bool sane = qint64{image.width()} * image.height() <= kMostPixels;
  return sane ? image : QImage();
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

const QImage& Pictures::Decoded(const richtext::Picture& picture) {
  const auto found = decoded_.find(&picture);
  if (found != decoded_.end()) return found->second;
  return decoded_.emplace(&picture, Decode(picture)).first->second;
}

}  // namespace tenora::printing
