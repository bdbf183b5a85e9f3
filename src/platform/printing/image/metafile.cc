#include "platform/printing/image/metafile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tenora::printing {
namespace {

constexpr std::size_t kBmpHeader = 14;
constexpr std::size_t kWmfHeader = 18, kPlaceableHeader = 22;
constexpr std::uint32_t kPlaceableKey = 0x9AC6CDD7;
constexpr std::size_t kEmfHeader = 88;
constexpr double kTwipsPerInch = 1440;

// Little-endian numbers; 0 beyond the end.
std::uint32_t Number(std::string_view bytes, std::size_t at, int size) {
  std::uint32_t value = 0;
  for (int i = size - 1; i >= 0; --i) {
    const std::size_t place = at + static_cast<std::size_t>(i);
    value = value << 8 | (place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : 0U);
  }
  return value;
}

int Signed16(std::string_view bytes, std::size_t at) {
  return static_cast<std::int16_t>(Number(bytes, at, 2));
}

int Signed32(std::string_view bytes, std::size_t at) {
  return static_cast<std::int32_t>(Number(bytes, at, 4));
}

void PutNumber(std::string& bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

std::string_view From(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? bytes.substr(at) : std::string_view();
}

// Offset of the bitmap in a drawing record of a WMF file, counted from the record's start.
std::size_t WmfBitmapOffset(std::uint32_t function) {
  switch (function) {
    case 0x0F43:  // StretchDIB
      return 6 + 22;
    case 0x0B41:  // DIBStretchBlt
      return 6 + 20;
    case 0x0940:  // DIBBitBlt
      return 6 + 16;
    case 0x0D33:  // SetDIBToDev
      return 6 + 18;
    default:
      return 0;
  }
}

// Offset in an EMF record of the field that holds the bitmap header's offset; the header's size and
// the bits' offset and size follow it.
std::size_t EmfBitmapField(std::uint32_t type) {
  switch (type) {
    case 81:  // StretchDIBits
    case 80:  // SetDIBitsToDevice
      return 48;
    case 76:   // BitBlt
    case 77:   // StretchBlt
    case 114:  // AlphaBlend
      return 84;
    default:
      return 0;
  }
}

bool IsPlaceable(std::string_view file) {
  return file.size() > kPlaceableHeader && Number(file, 0, 4) == kPlaceableKey;
}

bool IsWmf(std::string_view file) {
  const int type = Signed16(file, 0);
  return file.size() > kWmfHeader && (type == 1 || type == 2) && Signed16(file, 2) == 9;
}

bool IsEmf(std::string_view file) {
  return file.size() > kEmfHeader && Signed32(file, 0) == 1 && file.substr(40, 4) == " EMF";
}

Metafile PlaceableWmf(std::string_view file) {
  const double twips_per_unit = kTwipsPerInch / std::max(Signed16(file, 14), 1);
  return {richtext::Picture::Kind::kWmf, (Signed16(file, 10) - Signed16(file, 6)) * twips_per_unit,
          (Signed16(file, 12) - Signed16(file, 8)) * twips_per_unit, From(file, kPlaceableHeader)};
}

// Without a size of its own it is three inches wide, in its drawing's proportions.
Metafile PlainWmf(std::string_view file) {
  constexpr std::uint32_t kSetWindowExt = 0x020C;
  constexpr double kDefaultWidth = 3 * kTwipsPerInch;
  double width = 0, height = 0;
  for (std::size_t at = kWmfHeader; at + 10 <= file.size();) {
    const std::uint32_t words = Number(file, at, 4);
    if (words < 3) break;
    if (Number(file, at + 4, 2) == kSetWindowExt) {
      height = std::abs(Signed16(file, at + 6));
      width = std::abs(Signed16(file, at + 8));
      break;
    }
    at += std::size_t{words} * 2;
  }
  if (width < 1 || height < 1) width = height = 1;
  return {richtext::Picture::Kind::kWmf, kDefaultWidth, kDefaultWidth * height / width, file};
}

Metafile Emf(std::string_view file) {
  constexpr double kTwipsPerHundredthMillimetre = kTwipsPerInch / 2540;
  const auto edge = [&](std::size_t at) { return static_cast<double>(Signed32(file, at)); };
  return {richtext::Picture::Kind::kEmf, (edge(32) - edge(24)) * kTwipsPerHundredthMillimetre,
          (edge(36) - edge(28)) * kTwipsPerHundredthMillimetre, file};
}

}  // namespace

bool IsDib(std::string_view bytes) {
  const std::uint32_t header = Number(bytes, 0, 4);
  return header == 40 || header == 108 || header == 124;
}

std::string BmpFromDib(std::string_view dib) {
  const std::uint32_t header = Number(dib, 0, 4);
  if (header < 12 || header > 124 || header > dib.size()) return {};
  const bool core = header == 12;
  const std::uint32_t bits = Number(dib, core ? 10 : 14, 2);
  const std::uint32_t compression = core ? 0 : Number(dib, 16, 4);
  std::uint32_t colours = core ? 0 : Number(dib, 32, 4);
  if (colours == 0 && bits <= 8) colours = 1U << bits;
  if (colours > 256) return {};
  const std::uint32_t masks = header == 40 && compression == 3 ? 12 : 0;
  const std::uint32_t pixels =
      static_cast<std::uint32_t>(kBmpHeader) + header + masks + colours * (core ? 3 : 4);
  if (pixels - kBmpHeader >= dib.size()) return {};
  std::string bmp = "BM";
  PutNumber(bmp, static_cast<std::uint32_t>(dib.size() + kBmpHeader), 4);
  PutNumber(bmp, 0, 4);
  PutNumber(bmp, pixels, 4);
  return bmp.append(dib);
}

std::string BitmapOfWmf(std::string_view wmf) {
  std::size_t at = Number(wmf, 0, 4) == kPlaceableKey ? kPlaceableHeader : 0;
  at += kWmfHeader;
  std::string_view largest;
  while (at + 6 <= wmf.size()) {
    const std::size_t size = std::size_t{Number(wmf, at, 4)} * 2;
    const std::uint32_t function = Number(wmf, at + 4, 2);
    if (size < 6 || size > wmf.size() - at || function == 0) break;
    const std::size_t offset = WmfBitmapOffset(function);
    const std::string_view dib =
        offset == 0 ? std::string_view() : From(wmf.substr(at, size), offset);
    if (dib.size() > largest.size()) largest = dib;
    at += size;
  }
  return BmpFromDib(largest);
}

std::string BitmapOfEmf(std::string_view emf) {
  std::string largest;
  std::size_t at = 0;
  while (at + 8 <= emf.size()) {
    const std::uint32_t type = Number(emf, at, 4);
    const std::size_t size = Number(emf, at + 4, 4);
    if (size < 8 || size > emf.size() - at) break;
    const std::string_view record = emf.substr(at, size);
    if (const std::size_t field = EmfBitmapField(type); field != 0) {
      const std::size_t head = Number(record, field, 4), head_size = Number(record, field + 4, 4);
      const std::size_t bits = Number(record, field + 8, 4);
      const std::size_t bits_size = Number(record, field + 12, 4);
      if (head <= size && head_size <= size - head && bits <= size && bits_size <= size - bits &&
          head_size + bits_size > largest.size()) {
        largest =
            std::string(record.substr(head, head_size)).append(record.substr(bits, bits_size));
      }
    }
    at += size;
  }
  return BmpFromDib(largest);
}

std::optional<Metafile> ReadMetafile(std::string_view file) {
  if (IsPlaceable(file)) return PlaceableWmf(file);
  if (IsWmf(file)) return PlainWmf(file);
  if (IsEmf(file)) return Emf(file);
  return std::nullopt;
}

}  // namespace tenora::printing
