#include "platform/printing/picture_import.h"

#include <QBuffer>
#include <QFont>
#include <QFontMetrics>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <cstdint>

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

std::int32_t Signed(std::string_view bytes, std::size_t at, int size) {
  std::uint32_t value = 0;
  for (int i = size - 1; i >= 0; --i) {
    const std::size_t place = at + static_cast<std::size_t>(i);
    value = value << 8 | (place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : 0U);
  }
  return size == 2 ? static_cast<std::int16_t>(value) : static_cast<std::int32_t>(value);
}

// Sets the size on paper, as large as a page's text at the most.
void SetSize(Picture& picture, double width, double height) {
  width = std::max(std::abs(width), 1.0);
  height = std::max(std::abs(height), 1.0);
  const double scale = std::min({1.0, kMostWidth / width, kMostHeight / height});
  picture.width = std::max(static_cast<int>(std::lround(width * scale)), 1);
  picture.height = std::max(static_cast<int>(std::lround(height * scale)), 1);
}

constexpr std::size_t kPlaceableHeader = 22, kWmfHeader = 18;

bool IsPlaceable(std::string_view bytes) { return bytes.starts_with("\xD7\xCD\xC6\x9A"); }

bool IsWmf(std::string_view bytes) {
  const int type = Signed(bytes, 0, 2);
  return bytes.size() > kWmfHeader && (type == 1 || type == 2) && Signed(bytes, 2, 2) == 9;
}

bool IsEmf(std::string_view bytes) {
  return bytes.size() > 88 && Signed(bytes, 0, 4) == 1 && bytes.substr(40, 4) == " EMF";
}

// A metafile without a size of its own takes its drawing's proportions.
void SizeByWindow(Picture& picture) {
  constexpr int kSetWindowExt = 0x020C;
  constexpr double kUsualWidth = 4320;  // three inches
  const std::string_view bytes = picture.bytes;
  double width = 0, height = 0;
  for (std::size_t at = kWmfHeader; at + 10 <= bytes.size();) {
    const std::int32_t words = Signed(bytes, at, 4);
    if (words < 3) break;
    if (Signed(bytes, at + 4, 2) == kSetWindowExt) {
      height = std::abs(Signed(bytes, at + 6, 2));
      width = std::abs(Signed(bytes, at + 8, 2));
      break;
    }
    at += static_cast<std::size_t>(words) * 2;
  }
  if (width < 1 || height < 1) width = height = 1;
  SetSize(picture, kUsualWidth, kUsualWidth * height / width);
}

Picture Wmf(std::string bytes) {
  Picture picture;
  picture.kind = Kind::kWmf;
  if (!IsPlaceable(bytes)) {
    picture.bytes = std::move(bytes);
    SizeByWindow(picture);
    return picture;
  }
  const double units = std::max(Signed(bytes, 14, 2), 1);  // to the inch
  SetSize(picture, (Signed(bytes, 10, 2) - Signed(bytes, 6, 2)) / units * kTwipsPerInch,
          (Signed(bytes, 12, 2) - Signed(bytes, 8, 2)) / units * kTwipsPerInch);
  picture.bytes = bytes.substr(std::min(kPlaceableHeader, bytes.size()));
  return picture;
}

Picture Emf(std::string bytes) {
  constexpr double kTwipsPerHundredthMillimetre = 1440.0 / 2540;
  Picture picture;
  picture.kind = Kind::kEmf;
  const auto edge = [&](std::size_t at) { return static_cast<double>(Signed(bytes, at, 4)); };
  SetSize(picture, (edge(32) - edge(24)) * kTwipsPerHundredthMillimetre,
          (edge(36) - edge(28)) * kTwipsPerHundredthMillimetre);
  picture.bytes = std::move(bytes);
  return picture;
}

double TwipsPerPixel(int dots_per_metre) {
  const double dots_per_inch = dots_per_metre / kInchesPerMetre;
  const bool sensible = dots_per_inch >= 36 && dots_per_inch <= 2400;
  return kTwipsPerInch / (sensible ? dots_per_inch : 96);
}

std::string Encoded(const QImage& image, const char* format, int quality) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  if (!image.save(&buffer, format, quality)) return {};
  return bytes.toStdString();
}

// The largest of an icon's images, turned as a camera held it.
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

Picture Bitmap(std::string bytes) {
  const std::int32_t header = Signed(bytes, 0, 4);
  if (header == 40 || header == 108 || header == 124) bytes = BmpFromDib(bytes);
  QByteArray view = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&view);
  QImageReader reader(&buffer);
  const QByteArray format = reader.format();
  const bool upright = reader.transformation() == QImageIOHandler::TransformationNone;
  QImage image = Largest(reader);
  Picture picture;
  if (image.isNull()) return picture;
  SetSize(picture, image.width() * TwipsPerPixel(image.dotsPerMeterX()),
          image.height() * TwipsPerPixel(image.dotsPerMeterY()));
  picture.kind = format == "jpeg" ? Kind::kJpeg : Kind::kPng;
  const bool large = std::max(image.width(), image.height()) > kMostPixels;
  const bool fitting_kind = format == "jpeg" || format == "png";
  if (fitting_kind && upright && !large && bytes.size() <= kLargestAsItIs) {
    picture.bytes = std::move(bytes);
    return picture;
  }
  if (large) {
    image = image.scaled(kMostPixels, kMostPixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  }
  picture.bytes = picture.kind == Kind::kJpeg ? Encoded(image, "JPEG", kJpegQuality)
                                              : Encoded(image, "PNG", -1);
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

}  // namespace

Picture ReadPictureFile(const std::filesystem::path& path) {
  std::string bytes = ReadWholeFile(path, kLargestFile);
  Picture picture;
  if (IsPlaceable(bytes) || IsWmf(bytes)) {
    picture = Wmf(std::move(bytes));
  } else if (IsEmf(bytes)) {
    picture = Emf(std::move(bytes));
  } else {
    const auto application = HoldQtApplication();
    picture = Bitmap(std::move(bytes));
  }
  if (picture.bytes.empty()) {
    throw RuntimeError(kInvalidPicture, "Invalid picture: " + path.string());
  }
  return picture;
}

Picture FileLabel(std::string_view name) {
  constexpr int kScale = 3;  // pixels a screen pixel, so that it is sharp on paper
  constexpr int kWidth = 130 * kScale, kSheetWidth = 26 * kScale, kSheetHeight = 34 * kScale;
  constexpr int kFold = 8 * kScale, kTop = 3 * kScale, kTextHeight = 16 * kScale;
  const auto application = HoldQtApplication();
  QImage image(kWidth, kTop + kSheetHeight + kTextHeight, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate((kWidth - kSheetWidth) / 2, kTop);
  QPainterPath sheet;
  sheet.addPolygon(QPolygonF({{0, 0},
                              {kSheetWidth - kFold, 0},
                              {kSheetWidth, kFold},
                              {kSheetWidth, kSheetHeight},
                              {0, kSheetHeight},
                              {0, 0}}));
  sheet.addPolygon(
      QPolygonF({{kSheetWidth - kFold, 0}, {kSheetWidth - kFold, kFold}, {kSheetWidth, kFold}}));
  painter.setPen(QPen(QColor(0x55, 0x66, 0x77), kScale));
  painter.setBrush(QColor(0xF2, 0xF6, 0xFA));
  painter.drawPath(sheet);
  for (int line = 2; line < 6; ++line) {
    const int y = line * kSheetHeight / 7;
    painter.drawLine(5 * kScale, y, kSheetWidth - 5 * kScale, y);
  }
  painter.resetTransform();
  QFont font("Liberation Sans");
  font.setPixelSize(11 * kScale);
  painter.setFont(font);
  painter.setPen(Qt::black);
  const QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
  painter.drawText(QRect(0, kTop + kSheetHeight, kWidth, kTextHeight),
                   Qt::AlignHCenter | Qt::AlignBottom,
                   QFontMetrics(font, &image).elidedText(text, Qt::ElideMiddle, kWidth));
  painter.end();
  Picture picture;
  picture.kind = Kind::kPng;
  picture.bytes = Encoded(image, "PNG", -1);
  SetSize(picture, image.width() * 15.0 / kScale, image.height() * 15.0 / kScale);
  return picture;
}

std::string PictureGroup(const Picture& picture) {
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

}  // namespace tenora::printing
