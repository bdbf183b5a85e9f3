#include "platform/printing/picture_file.h"

#include <QBuffer>
#include <memory>
#include <utility>

#include "platform/printing/pictures.h"
#include "platform/printing/qt_application.h"

namespace tenora::printing {
namespace {

using Kind = richtext::Picture::Kind;

constexpr double kMost = 1e9;      // twips; the size on paper does not matter here
constexpr int kDotsPerInch = 192;  // twice that of usual screens, so that logos are sharp on all

// Empty for a bitmap that cannot be read.
std::string BitmapAsPng(const richtext::Picture& picture) {
  const QImage image = Pictures().Place(picture, kMost, kMost).image;
  QByteArray png;
  QBuffer buffer(&png);
  const bool written =
      !image.isNull() && buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG");
  return written ? png.toStdString() : std::string();
}

}  // namespace

std::optional<PictureFile> ShowableFile(const richtext::Picture& picture) {
  if (picture.bytes.empty()) return std::nullopt;
  if (picture.kind == Kind::kPng) return PictureFile{"image/png", ".png", picture.bytes};
  if (picture.kind == Kind::kJpeg) return PictureFile{"image/jpeg", ".jpg", picture.bytes};
  std::string png;
  if (picture.kind == Kind::kWmf || picture.kind == Kind::kEmf) {
    const std::shared_ptr<void> application = HoldQtApplication();
    png = MetafileAsPng(picture, kDotsPerInch).value_or("");
  } else {
    png = BitmapAsPng(picture);
  }
  if (png.empty()) return std::nullopt;
  return PictureFile{"image/png", ".png", std::move(png)};
}

}  // namespace tenora::printing
