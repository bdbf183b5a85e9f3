#include "platform/printing/picture_import.h"

#include <QBuffer>
#include <QImageReader>
#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "platform/printing/image/decoded_image.h"
#include "platform/printing/image/metafile.h"
#include "platform/printing/qt_application.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora::printing {
namespace {

using richtext::Picture;
using Kind = Picture::Kind;

constexpr int kInvalidPicture = 481;
constexpr std::size_t kLargestFile = std::size_t{64} << 20;
constexpr std::size_t kLargestAsItIs = std::size_t{8} << 20;
constexpr int kMostPixels = 4000;        // a side
constexpr double kMostToDecode = 400e6;  // pixels in all
constexpr double kTwipsPerInch = 1440;
constexpr double kMostWidth = 9072, kMostHeight = 13608;  // twips: 16 cm by 24 cm
constexpr double kInchesPerMetre = 39.3701;
constexpr int kJpegQuality = 90;

// Scaled down where it is larger than a page's text.
void SetSize(Picture& picture, double width, double height) {
  width = std::max(std::abs(width), 1.0);
  height = std::max(std::abs(height), 1.0);
  const double scale = std::min({1.0, kMostWidth / width, kMostHeight / height});
  picture.width = std::max(static_cast<int>(std::lround(width * scale)), 1);
  picture.height = std::max(static_cast<int>(std::lround(height * scale)), 1);
}

double TwipsPerPixel(int dots_per_metre, int screen_dots_per_metre) {
  const double dots_per_inch = dots_per_metre / kInchesPerMetre;
  // Qt gives a picture without a resolution that of the screen, on which paper does not depend.
  const bool given = dots_per_metre != screen_dots_per_metre;
  const bool sensible = dots_per_inch >= 36 && dots_per_inch <= 2400;
  return kTwipsPerInch / (given && sensible ? dots_per_inch : 96);
}

void SetSizeOf(const QImage& image, Picture& picture) {
  const QImage plain(1, 1, QImage::Format_Mono);
  SetSize(picture, image.width() * TwipsPerPixel(image.dotsPerMeterX(), plain.dotsPerMeterX()),
          image.height() * TwipsPerPixel(image.dotsPerMeterY(), plain.dotsPerMeterY()));
}

std::string Encoded(const QImage& image, Kind kind) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  const bool saved =
      kind == Kind::kJpeg ? image.save(&buffer, "JPEG", kJpegQuality) : image.save(&buffer, "PNG");
  return saved ? bytes.toStdString() : std::string();
}

bool IsLarge(const QImage& image) { return std::max(image.width(), image.height()) > kMostPixels; }

QImage Bounded(const QImage& image) {
  if (!IsLarge(image)) return image;
  return image.scaled(kMostPixels, kMostPixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// The largest of an icon's images. A photograph is turned the way its camera was held.
QImage Largest(QImageReader& reader) {
  reader.setAutoTransform(true);
  QImage largest;
  const int count = std::clamp(reader.imageCount(), 1, 64);
  for (int i = 0; i < count; ++i) {
    if (i > 0 && !reader.jumpToImage(i)) break;
    const QSize size = reader.size();
    if (double(size.width()) * size.height() > kMostToDecode) continue;
    const QImage image = reader.read();
    if (image.width() > largest.width()) largest = image;
  }
  return largest;
}

Picture ImportBitmap(std::string bytes) {
  // A bitmap without its file header, as some programs save it.
  if (IsDib(bytes)) bytes = BmpFromDib(bytes);
  QByteArray view = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&view);
  QImageReader reader(&buffer);
  const QByteArray format = reader.format();
  const bool upright = reader.transformation() == QImageIOHandler::TransformationNone;
  const QImage image = Largest(reader);
  Picture picture;
  if (image.isNull()) return picture;
  SetSizeOf(image, picture);
  picture.kind = format == "jpeg" ? Kind::kJpeg : Kind::kPng;
  const bool fitting_kind = format == "jpeg" || format == "png";
  if (fitting_kind && upright && !IsLarge(image) && bytes.size() <= kLargestAsItIs) {
    picture.bytes = std::move(bytes);
  } else {
    picture.bytes = Encoded(Bounded(image), picture.kind);
  }
  return picture;
}

std::string_view KindWord(Kind kind) {
  switch (kind) {
    case Kind::kPng:
      return "\\pngblip";
    case Kind::kJpeg:
      return "\\jpegblip";
    case Kind::kWmf:
      return "\\wmetafile8";
    case Kind::kEmf:
      return "\\emfblip";
    default:
      return "\\dibitmap0";
  }
}

// The picture's RTF group.
std::string Group(const Picture& picture) {
  const bool metafile = picture.kind == Kind::kWmf || picture.kind == Kind::kEmf;
  // In a metafile's hundredths of a millimetre, else in pixels at 96 to the inch.
  const auto own_units = [&](int twips) { return metafile ? twips * 2540LL / 1440 : twips / 15; };
  std::string group = "{\\pict";
  group.append(KindWord(picture.kind));
  group += "\\picw" + std::to_string(own_units(picture.width)) + "\\pich" +
           std::to_string(own_units(picture.height)) + "\\picwgoal" +
           std::to_string(picture.width) + "\\pichgoal" + std::to_string(picture.height) + " ";
  constexpr char kDigits[] = "0123456789abcdef";
  group.reserve(group.size() + picture.bytes.size() * 2 + 1);
  for (const char c : picture.bytes) {
    const auto byte = static_cast<unsigned char>(c);
    group += kDigits[byte >> 4];
    group += kDigits[byte & 15];
  }
  return group + "}";
}

std::optional<Picture> WithGroup(Picture picture) {
  if (picture.bytes.empty()) return std::nullopt;
  picture.source = Group(picture);
  return picture;
}

}  // namespace

std::optional<Picture> ImportPicture(std::string file) {
  if (const auto metafile = ReadMetafile(file)) {
    Picture picture;
    picture.kind = metafile->kind;
    SetSize(picture, metafile->width, metafile->height);
    picture.bytes = metafile->bytes;
    return WithGroup(std::move(picture));
  }
  const auto application = HoldQtApplication();
  return WithGroup(ImportBitmap(std::move(file)));
}

Picture ImportPictureFile(const std::filesystem::path& path) {
  std::optional<Picture> picture = ImportPicture(ReadWholeFile(path, kLargestFile));
  if (!picture) throw RuntimeError(kInvalidPicture, "Invalid picture: " + path.string());
  return *std::move(picture);
}

std::optional<Picture> ImportImage(const QImage& image) {
  if (image.isNull()) return std::nullopt;
  Picture picture;
  picture.kind = Kind::kPng;
  SetSizeOf(image, picture);
  picture.bytes = Encoded(Bounded(image), picture.kind);
  return WithGroup(std::move(picture));
}

}  // namespace tenora::printing
