#include "platform/printing/pictures.h"

#include <QBuffer>
#include <QPen>
#include <algorithm>
#include <cmath>

#include "platform/printing/image/decoded_image.h"
#include "platform/printing/image/metafile.h"

namespace tenora::printing {
namespace {

using Kind = richtext::Picture::Kind;

constexpr double kTwipsPerPixel = 15;  // 96 pixels to the inch
constexpr double kTwipsPerInch = 1440;
constexpr int kMostPngSide = 4000;  // pixels
constexpr std::size_t kMostKept = std::size_t{64}
                                  << 20;  // bytes of pictures, compressed and decoded

QImage DecodedBitmap(const richtext::Picture& picture) {
  switch (picture.kind) {
    case Kind::kPng:
      return DecodedImage(picture.bytes, "PNG");
    case Kind::kJpeg:
      return DecodedImage(picture.bytes, "JPEG");
    case Kind::kDib:
    case Kind::kBitmap:
      return DecodedImage(BmpFromDib(picture.bytes), "BMP");
    default:
      return {};
  }
}

bool IsMetafile(const richtext::Picture& picture) {
  return picture.kind == Kind::kWmf || picture.kind == Kind::kEmf;
}

// Nothing for one in which nothing is drawn of what it should show.
std::shared_ptr<const Drawing> ReadableDrawing(const richtext::Picture& picture) {
  auto drawing = DrawingOf(picture.kind, picture.bytes);
  return drawing->empty() && !drawing->complete() ? nullptr : drawing;
}

// Where the whole picture is when what cropping leaves of it fills the area.
QRectF WholeArea(const QRectF& area, const richtext::Picture::Crop& crop) {
  const double width = area.width() / (1 - crop.left - crop.right);
  const double height = area.height() / (1 - crop.top - crop.bottom);
  return {area.left() - crop.left * width, area.top() - crop.top * height, width, height};
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
  const Content& content = Decoded(picture);
  PlacedPicture placed;
  placed.image = content.image;
  placed.drawing = content.drawing;
  placed.crop = picture.crop;
  placed.caption = Caption(picture.kind);
  placed.lossless = picture.kind != Kind::kJpeg;
  const QSizeF own =
      content.drawing ? content.drawing->size() : QSizeF(content.image.size()) * kTwipsPerPixel;
  placed.width = picture.width > 0 ? picture.width : own.width();
  placed.height = picture.height > 0 ? picture.height : own.height();
  placed.width = std::max(placed.width, 1.0);
  placed.height = std::max(placed.height, 1.0);
  const double scale =
      std::min({1.0, std::max(most_width, 1.0) / placed.width, most_height / placed.height});
  placed.width *= scale;
  placed.height *= scale;
  return placed;
}

Pictures::Content Pictures::Decode(const richtext::Picture& picture) {
  Content content;
  if (IsMetafile(picture)) {
    content.drawing = ReadableDrawing(picture);
  } else {
    content.image = DecodedBitmap(picture);
  }
  return content;
}

const Pictures::Content& Pictures::Decoded(const richtext::Picture& picture) {
  const std::pair key(picture.kind, picture.bytes);
  const auto found = decoded_.find(key);
  if (found != decoded_.end()) return found->second;
  const Content content = Decode(picture);
  const std::size_t bytes = picture.bytes.size() +
                            static_cast<std::size_t>(content.image.sizeInBytes()) +
                            (content.drawing ? content.drawing->bytes() : 0);
  if (decoded_bytes_ + bytes > kMostKept) {
    decoded_.clear();
    decoded_bytes_ = 0;
  }
  decoded_bytes_ += bytes;
  return decoded_.emplace(key, content).first->second;
}

Drawable DrawableIn(const richtext::Picture& picture) {
  if (!IsMetafile(picture)) {
    return DecodedBitmap(picture).isNull() ? Drawable::kNot : Drawable::kWhole;
  }
  const auto drawing = ReadableDrawing(picture);
  if (drawing == nullptr) return Drawable::kNot;
  return drawing->complete() ? Drawable::kWhole : Drawable::kInPart;
}

std::optional<std::string> MetafileAsPng(const richtext::Picture& picture, int dots_per_inch) {
  if (!IsMetafile(picture)) return std::nullopt;
  Pictures pictures;
  const double most = kMostPngSide * kTwipsPerInch / dots_per_inch;
  const PlacedPicture placed = pictures.Place(picture, most, most);
  if (placed.drawing == nullptr) return std::nullopt;
  const QSizeF pixels = QSizeF(placed.width, placed.height) * dots_per_inch / kTwipsPerInch;
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  const QImage image = Rendered(placed, pixels.toSize().expandedTo({1, 1}));
  if (!image.save(&buffer, "PNG")) return std::nullopt;
  return bytes.toStdString();
}

void DrawPicture(QPainter& painter, const QRectF& area, const PlacedPicture& picture) {
  if (picture.readable() && picture.crop != richtext::Picture::Crop()) {
    PlacedPicture whole = picture;
    whole.crop = {};
    painter.save();
    painter.setClipRect(area, Qt::IntersectClip);
    DrawPicture(painter, WholeArea(area, picture.crop), whole);
    return painter.restore();
  }
  if (picture.drawing) return picture.drawing->Draw(painter, area);
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

QImage Rendered(const PlacedPicture& picture, QSize pixels) {
  const QRectF area(QPointF(0, 0), QSizeF(pixels));
  if (picture.drawing && picture.crop == richtext::Picture::Crop())
    return picture.drawing->Rendered(pixels);
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return image;
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
  DrawPicture(painter, area, picture);
  return image;
}

}  // namespace tenora::printing
