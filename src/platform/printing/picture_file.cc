#include "platform/printing/picture_file.h"

#include <QBuffer>
#include <algorithm>
#include <memory>

#include "platform/printing/pictures.h"
#include "platform/printing/qt_application.h"

namespace tenora::printing {
namespace {

using Kind = richtext::Picture::Kind;

constexpr double kMost = 1e9;      // twips; the size on paper does not matter here
constexpr int kMostSide = 4000;    // pixels
constexpr int kDotsPerInch = 192;  // twice that of usual screens, so that logos are sharp on all

// What cropping leaves of a bitmap, in its own pixels. Null for one that cannot be read.
QImage ShownBitmap(const richtext::Picture& picture) {
  const PlacedPicture placed = Pictures().Place(picture, kMost, kMost);
  const richtext::Picture::Crop& crop = placed.crop;
  if (placed.image.isNull() || crop == richtext::Picture::Crop()) return placed.image;
  const QSizeF pixels(placed.image.width() * (1 - crop.left - crop.right),
                      placed.image.height() * (1 - crop.top - crop.bottom));
  const QSizeF most(kMostSide, kMostSide);
  return Rendered(placed, pixels.boundedTo(most).toSize().expandedTo({1, 1}));
}

// Empty for a null image.
std::string Encoded(const QImage& image, const char* format) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  const bool written =
      !image.isNull() && buffer.open(QIODevice::WriteOnly) && image.save(&buffer, format);
  return written ? bytes.toStdString() : std::string();
}

}  // namespace

std::optional<PictureFile> ShowableFile(const richtext::Picture& picture) {
  if (picture.bytes.empty()) return std::nullopt;
  const richtext::Picture::Crop& crop = picture.crop;
  // JPEG has no transparent pixels for the room that negative cropping leaves.
  const bool jpeg =
      picture.kind == Kind::kJpeg && std::min({crop.left, crop.top, crop.right, crop.bottom}) >= 0;
  PictureFile file =
      jpeg ? PictureFile{"image/jpeg", ".jpg", {}} : PictureFile{"image/png", ".png", {}};
  if (crop == richtext::Picture::Crop() && (jpeg || picture.kind == Kind::kPng)) {
    file.bytes = picture.bytes;
    return file;
  }
  const std::shared_ptr<void> application = HoldQtApplication();
  if (picture.kind == Kind::kWmf || picture.kind == Kind::kEmf) {
    file.bytes = MetafileAsPng(picture, kDotsPerInch).value_or("");
  } else {
    file.bytes = Encoded(ShownBitmap(picture), jpeg ? "JPEG" : "PNG");
  }
  if (file.bytes.empty()) return std::nullopt;
  return file;
}

}  // namespace tenora::printing
