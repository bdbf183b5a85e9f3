#include "platform/richtext/read/picture_size.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace tenora::richtext {
namespace {

constexpr double kTwipsPerInch = 1440;
constexpr double kInchesPerMetre = 39.3701, kInchesPerCentimetre = 2.54;
constexpr double kUsualDots = 96, kFewestDots = 36, kMostDots = 2400;  // to the inch
constexpr double kLargest = 100'000;                                   // twips

// A bounded view of numbers; what lies beyond the end is 0.
class Bytes {
 public:
  explicit Bytes(std::string_view bytes) : bytes_(bytes) {}

  std::uint32_t At(std::size_t offset) const {
    return offset < bytes_.size() ? static_cast<unsigned char>(bytes_[offset]) : 0;
  }
  std::uint32_t Big16(std::size_t offset) const { return At(offset) << 8 | At(offset + 1); }
  std::uint32_t Big32(std::size_t offset) const { return Big16(offset) << 16 | Big16(offset + 2); }
  std::uint32_t Little32(std::size_t offset) const {
    return At(offset) | At(offset + 1) << 8 | At(offset + 2) << 16 | At(offset + 3) << 24;
  }
  bool Has(std::string_view text, std::size_t offset) const {
    return offset <= bytes_.size() && bytes_.substr(offset, text.size()) == text;
  }
  std::size_t size() const { return bytes_.size(); }

 private:
  std::string_view bytes_;
};

struct Pixels {
  double width = 0, height = 0;
  double dots_x = 0, dots_y = 0;  // to the inch; 0 where the picture names none
};

Pixels OfPng(const Bytes& bytes) {
  Pixels pixels;
  if (!bytes.Has("IHDR", 12)) return pixels;
  pixels.width = bytes.Big32(16);
  pixels.height = bytes.Big32(20);
  // The resolution comes before the picture's data.
  std::size_t chunk = 8;
  for (int i = 0; i < 64 && chunk + 12 <= bytes.size() && !bytes.Has("IDAT", chunk + 4); ++i) {
    constexpr std::uint32_t kPerMetre = 1;
    if (bytes.Has("pHYs", chunk + 4) && bytes.At(chunk + 16) == kPerMetre) {
      pixels.dots_x = bytes.Big32(chunk + 8) / kInchesPerMetre;
      pixels.dots_y = bytes.Big32(chunk + 12) / kInchesPerMetre;
    }
    chunk += std::size_t{12} + bytes.Big32(chunk);
  }
  return pixels;
}

Pixels OfJpeg(const Bytes& bytes) {
  Pixels pixels;
  std::size_t segment = 2;
  for (int i = 0; i < 1000 && segment + 4 <= bytes.size() && bytes.At(segment) == 0xff; ++i) {
    const std::uint32_t marker = bytes.At(segment + 1);
    if (marker == 0xe0 && bytes.Has("JFIF", segment + 4)) {
      const std::uint32_t unit = bytes.At(segment + 11);
      const double scale = unit == 1 ? 1 : unit == 2 ? kInchesPerCentimetre : 0;
      pixels.dots_x = bytes.Big16(segment + 12) * scale;
      pixels.dots_y = bytes.Big16(segment + 14) * scale;
    }
    // A frame header, which the three other markers of this range are not.
    if (marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc) {
      pixels.height = bytes.Big16(segment + 5);
      pixels.width = bytes.Big16(segment + 7);
      break;
    }
    // Bytes that fill up to a marker.
    segment += marker == 0xff ? 1 : 2 + bytes.Big16(segment + 2);
  }
  return pixels;
}

Pixels OfDib(const Bytes& bytes) {
  Pixels pixels;
  constexpr std::uint32_t kLeastHeader = 40;
  if (bytes.Little32(0) < kLeastHeader) return pixels;
  pixels.width = std::abs(double(static_cast<std::int32_t>(bytes.Little32(4))));
  pixels.height = std::abs(double(static_cast<std::int32_t>(bytes.Little32(8))));
  pixels.dots_x = bytes.Little32(24) / kInchesPerMetre;
  pixels.dots_y = bytes.Little32(28) / kInchesPerMetre;
  return pixels;
}

int Twips(double pixels, double dots) {
  if (dots < kFewestDots || dots > kMostDots) dots = kUsualDots;
  return static_cast<int>(std::lround(std::clamp(pixels * kTwipsPerInch / dots, 1.0, kLargest)));
}

}  // namespace

std::optional<PictureSize> SizeOf(const Picture& picture) {
  const Bytes bytes(picture.bytes);
  Pixels pixels;
  if (picture.kind == Picture::Kind::kPng) pixels = OfPng(bytes);
  if (picture.kind == Picture::Kind::kJpeg) pixels = OfJpeg(bytes);
  if (picture.kind == Picture::Kind::kDib) pixels = OfDib(bytes);
  if (pixels.width <= 0 || pixels.height <= 0) return std::nullopt;
  return PictureSize{Twips(pixels.width, pixels.dots_x), Twips(pixels.height, pixels.dots_y)};
}

}  // namespace tenora::richtext
