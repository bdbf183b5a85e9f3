#include "ui/editor/clipboard/picture_source.h"

#include <QBuffer>
#include <QImageReader>
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace tenora {
namespace {

using richtext::Picture;

constexpr double kWidestTwips = 9000, kTallestTwips = 13000;
constexpr qsizetype kLargestFile = qsizetype{64} << 20;
constexpr qsizetype kPlaceableHeader = 22;
constexpr double kMostPixels = 100e6;

void AppendHex(const std::string& bytes, std::string* source) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    *source += kDigits[byte >> 4];
    *source += kDigits[byte & 15];
  }
}

// `width` and `height` in pixels or, for metafiles, hundredths of a millimetre.
std::shared_ptr<const Picture> Make(Picture::Kind kind, std::string_view word, int width,
                                    int height, std::string bytes) {
  const bool metafile = kind == Picture::Kind::kWmf || kind == Picture::Kind::kEmf;
  const double twips = metafile ? 1440.0 / 2540 : 15;
  const double scale = std::min({1.0, kWidestTwips / (std::max(width, 1) * twips),
                                 kTallestTwips / (std::max(height, 1) * twips)});
  Picture picture;
  picture.kind = kind;
  picture.width = static_cast<int>(std::lround(width * twips * scale));
  picture.height = static_cast<int>(std::lround(height * twips * scale));
  picture.source = "{\\pict\\" + std::string(word) + "\\picw" + std::to_string(width) + "\\pich" +
                   std::to_string(height) + "\\picwgoal" + std::to_string(picture.width) +
                   "\\pichgoal" + std::to_string(picture.height) + " ";
  AppendHex(bytes, &picture.source);
  picture.source += "}";
  picture.bytes = std::move(bytes);
  return std::make_shared<const Picture>(std::move(picture));
}

int Little(const QByteArray& file, qsizetype at, int bytes) {
  std::uint32_t value = 0;
  for (int i = bytes - 1; i >= 0; --i)
    value = value << 8 | static_cast<unsigned char>(file[at + i]);
  return bytes == 2 ? static_cast<std::int16_t>(value) : static_cast<int>(value);
}

// A Windows metafile with the header that gives its size.
std::shared_ptr<const Picture> PlaceableMetafile(const QByteArray& file) {
  if (file.size() <= kPlaceableHeader || !file.startsWith("\xd7\xcd\xc6\x9a")) return nullptr;
  const double per_inch = std::max(Little(file, 14, 2), 1);
  const auto size = [&](qsizetype from, qsizetype to) {
    const int units = std::abs(Little(file, to, 2) - Little(file, from, 2));
    return static_cast<int>(std::clamp(units / per_inch * 2540, 1.0, 100'000.0));
  };
  return Make(Picture::Kind::kWmf, "wmetafile8", size(6, 10), size(8, 12),
              file.mid(kPlaceableHeader).toStdString());
}

std::shared_ptr<const Picture> EnhancedMetafile(const QByteArray& file) {
  if (file.size() < 88 || Little(file, 0, 4) != 1 || file.mid(40, 4) != " EMF") return nullptr;
  const auto size = [&](qsizetype from, qsizetype to) {
    const double hundredths = double(Little(file, to, 4)) - Little(file, from, 4);
    return static_cast<int>(std::clamp(hundredths, 1.0, 100'000.0));
  };
  return Make(Picture::Kind::kEmf, "emfblip", size(24, 32), size(28, 36), file.toStdString());
}

}  // namespace

std::shared_ptr<const Picture> PictureOfFile(const QByteArray& file) {
  if (file.isEmpty() || file.size() > kLargestFile) return nullptr;
  if (auto picture = PlaceableMetafile(file)) return picture;
  if (auto picture = EnhancedMetafile(file)) return picture;
  QByteArray bytes = file;
  QBuffer buffer(&bytes);
  QImageReader reader(&buffer);
  const QSize size = reader.size();
  if (double(size.width()) * size.height() > kMostPixels) return nullptr;
  const QByteArray format = reader.format();
  const QImage image = reader.read();
  if (image.isNull()) return nullptr;
  if (format == "png")
    return Make(Picture::Kind::kPng, "pngblip", image.width(), image.height(), file.toStdString());
  if (format == "jpeg")
    return Make(Picture::Kind::kJpeg, "jpegblip", image.width(), image.height(),
                file.toStdString());
  return PictureOfImage(image);
}

std::shared_ptr<const Picture> PictureOfImage(const QImage& image) {
  if (image.isNull()) return nullptr;
  QByteArray bytes;
  QBuffer buffer(&bytes);
  if (!image.save(&buffer, "PNG")) return nullptr;
  return Make(Picture::Kind::kPng, "pngblip", image.width(), image.height(), bytes.toStdString());
}

}  // namespace tenora
