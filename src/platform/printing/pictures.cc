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
  const QImage image = placed.drawing->Rendered(pixels.toSize().expandedTo({1, 1}));
  if (!image.save(&buffer, "PNG")) return std::nullopt;
  return bytes.toStdString();
}

void DrawPicture(QPainter& painter, const QRectF& area, const PlacedPicture& picture) {
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

}  // namespace tenora::printing
