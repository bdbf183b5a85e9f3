#include "platform/printing/image/decoded_image.h"

#include <QBuffer>
#include <QImageReader>
#include <array>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "platform/printing/image/record_bytes.h"

namespace tenora::printing {
namespace {

constexpr double kMostPixels = 400e6;    // of a picture, however well compressed
constexpr double kPrintedPixels = 20e6;  // finer than paper shows
constexpr std::size_t kBmpHeader = 14;
constexpr std::uint32_t kCoreHeader = 12, kInfoHeader = 40, kLongestHeader = 124;
constexpr std::uint32_t kBitFields = 3, kJpeg = 4, kPng = 5;  // kinds of compression

void PutNumber(std::string& bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

std::uint32_t CompressionOf(const RecordBytes& head) {
  return head.Unsigned32(0) == kCoreHeader ? 0 : head.Unsigned32(16);
}

int BitsOf(const RecordBytes& head) {
  return head.Unsigned16(head.Unsigned32(0) == kCoreHeader ? 10 : 14);
}

// Where the pixels begin; nothing for a header that no bitmap has.
std::optional<std::size_t> HeadLength(const RecordBytes& dib) {
  const std::uint32_t header = dib.Unsigned32(0);
  if (header < kCoreHeader || header > kLongestHeader || header > dib.size()) return std::nullopt;
  const bool core = header == kCoreHeader;
  const int bits = BitsOf(dib);
  std::uint32_t colours = core ? 0 : dib.Unsigned32(32);
  if (colours == 0 && bits <= 8) colours = 1U << bits;
  if (colours > 256) return std::nullopt;
  const std::uint32_t masks = header == kInfoHeader && CompressionOf(dib) == kBitFields ? 12 : 0;
  return header + masks + colours * (core ? 3 : 4);
}

std::string BmpFile(std::string_view head, std::string_view pixels) {
  std::string bmp = "BM";
  bmp.reserve(kBmpHeader + head.size() + pixels.size());
  PutNumber(bmp, static_cast<std::uint32_t>(kBmpHeader + head.size() + pixels.size()), 4);
  PutNumber(bmp, 0, 4);
  PutNumber(bmp, static_cast<std::uint32_t>(kBmpHeader + head.size()), 4);
  return bmp.append(head).append(pixels);
}

// Qt reads no opacity from such a bitmap.
QImage ImageWithAlpha(const DibParts& dib) {
  const RecordBytes head(dib.head);
  const std::int64_t width = head.Signed32(4), height = std::abs(std::int64_t{head.Signed32(8)});
  const bool plain = CompressionOf(head) == 0 || CompressionOf(head) == kBitFields;
  if (BitsOf(head) != 32 || !plain || width <= 0 || height <= 0) return {};
  const auto stride = static_cast<std::size_t>(width) * 4;
  if (dib.pixels.size() / stride < static_cast<std::size_t>(height)) return {};
  const QImage pixels(reinterpret_cast<const uchar*>(dib.pixels.data()), static_cast<int>(width),
                      static_cast<int>(height), static_cast<qsizetype>(stride),
                      QImage::Format_ARGB32_Premultiplied);
  return head.Signed32(8) > 0 ? pixels.mirrored() : pixels.copy();
}

std::uint32_t BigEndian32(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char c : bytes.substr(0, 4)) number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

constexpr std::array<std::uint32_t, 256> kCrcTable = [] {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint32_t rest = i;
    for (int bit = 0; bit < 8; ++bit) rest = (rest & 1) != 0 ? 0xEDB88320 ^ rest >> 1 : rest >> 1;
    table[i] = rest;
  }
  return table;
}();

std::uint32_t Crc(std::string_view bytes) {
  std::uint32_t crc = ~0U;
  for (const char c : bytes)
    crc = kCrcTable[(crc ^ static_cast<unsigned char>(c)) & 0xFF] ^ crc >> 8;
  return ~crc;
}

// Whether all chunks are there, with the checksums that they name. The decoder refuses others too,
// but with a word on standard error, which is not its to write to.
bool IsWholePng(std::string_view file) {
  constexpr std::string_view kSignature = "\x89PNG\r\n\x1A\n";
  constexpr std::size_t kHead = 8, kChecksum = 4;  // of a chunk: length and name; behind its data
  if (!file.starts_with(kSignature)) return false;
  file.remove_prefix(kSignature.size());
  while (file.size() >= kHead + kChecksum) {
    const std::size_t length = BigEndian32(file);
    if (length > file.size() - kHead - kChecksum) return false;
    const std::string_view named = file.substr(4, 4 + length);
    if (Crc(named) != BigEndian32(file.substr(kHead + length))) return false;
    if (named.starts_with("IEND")) return true;
    file.remove_prefix(kHead + length + kChecksum);
  }
  return false;
}

}  // namespace

QImage DecodedImage(std::string_view bytes, const char* format) {
  if (bytes.empty() || bytes.size() > static_cast<std::size_t>(INT_MAX)) return {};
  if (format != nullptr && std::string_view(format) == "PNG" && !IsWholePng(bytes)) return {};
  QByteArray view = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&view);
  QImageReader reader(&buffer, format);
  const QSize size = reader.size();
  const double pixels = double(size.width()) * size.height();
  if (pixels > kMostPixels) return {};
  if (pixels > kPrintedPixels) reader.setScaledSize(size * std::sqrt(kPrintedPixels / pixels));
  return reader.read();
}

bool IsDib(std::string_view bytes) {
  const std::uint32_t header = RecordBytes(bytes).Unsigned32(0);
  return header == kInfoHeader || header == 108 || header == kLongestHeader;
}

DibParts PartsOf(std::string_view dib) {
  const auto head = HeadLength(RecordBytes(dib));
  if (!head || *head >= dib.size()) return {};
  return {dib.substr(0, *head), dib.substr(*head)};
}

std::string BmpFromDib(std::string_view dib) {
  const DibParts parts = PartsOf(dib);
  return parts.head.empty() ? std::string() : BmpFile(parts.head, parts.pixels);
}

double PixelCount(const DibParts& dib) {
  const RecordBytes head(dib.head);
  if (head.Unsigned32(0) == kCoreHeader) {
    return double(head.Unsigned16(4)) * head.Unsigned16(6);
  }
  return std::abs(double(head.Signed32(4)) * head.Signed32(8));
}

QImage ImageOf(const DibParts& dib, bool alpha) {
  const RecordBytes head(dib.head);
  if (!HeadLength(head)) return {};
  if (alpha) {
    const QImage image = ImageWithAlpha(dib);
    if (!image.isNull()) return image;
  }
  switch (CompressionOf(head)) {
    case kJpeg:
      return DecodedImage(dib.pixels, "JPEG");
    case kPng:
      return DecodedImage(dib.pixels, "PNG");
    default:
      return DecodedImage(BmpFile(dib.head, dib.pixels), "BMP");
  }
}

}  // namespace tenora::printing
