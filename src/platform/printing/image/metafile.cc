#include "platform/printing/image/metafile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/printing/image/emf_player.h"
#include "platform/printing/image/record_bytes.h"
#include "platform/printing/image/wmf_player.h"

namespace tenora::printing {
namespace {

constexpr std::size_t kWmfHeader = 18;
constexpr std::uint32_t kPlaceableKey = 0x9AC6CDD7;
constexpr std::size_t kEmfHeader = 88;
constexpr double kTwipsPerInch = 1440;

bool IsPlaceable(const RecordBytes& file) {
  return file.size() > kPlaceableHeader && file.Unsigned32(0) == kPlaceableKey;
}

bool IsWmf(const RecordBytes& file) {
  const int type = file.Signed16(0);
  return file.size() > kWmfHeader && (type == 1 || type == 2) && file.Signed16(2) == 9;
}

bool IsEmf(const RecordBytes& file) {
  return file.size() > kEmfHeader && file.Signed32(0) == 1 && file.bytes().substr(40, 4) == " EMF";
}

Metafile PlaceableWmf(const RecordBytes& file) {
  const double twips_per_unit = kTwipsPerInch / std::max<int>(file.Signed16(14), 1);
  return {richtext::Picture::Kind::kWmf, (file.Signed16(10) - file.Signed16(6)) * twips_per_unit,
          (file.Signed16(12) - file.Signed16(8)) * twips_per_unit,
          file.From(kPlaceableHeader).bytes()};
}

// Without a size of its own it is three inches wide, in its drawing's proportions.
Metafile PlainWmf(const RecordBytes& file) {
  constexpr std::uint32_t kSetWindowExt = 0x020C;
  constexpr double kDefaultWidth = 3 * kTwipsPerInch;
  double width = 0, height = 0;
  for (std::size_t at = kWmfHeader; at + 10 <= file.size();) {
    const std::uint32_t words = file.Unsigned32(at);
    if (words < 3) break;
    if (file.Unsigned16(at + 4) == kSetWindowExt) {
      height = std::abs(file.Signed16(at + 6));
      width = std::abs(file.Signed16(at + 8));
      break;
    }
    at += std::size_t{words} * 2;
  }
  if (width < 1 || height < 1) width = height = 1;
  return {richtext::Picture::Kind::kWmf, kDefaultWidth, kDefaultWidth * height / width,
          file.bytes()};
}

Metafile Emf(const RecordBytes& file) {
  constexpr double kTwipsPerHundredthMillimetre = kTwipsPerInch / 2540;
  const auto edge = [&](std::size_t at) { return static_cast<double>(file.Signed32(at)); };
  return {richtext::Picture::Kind::kEmf, (edge(32) - edge(24)) * kTwipsPerHundredthMillimetre,
          (edge(36) - edge(28)) * kTwipsPerHundredthMillimetre, file.bytes()};
}

}  // namespace

std::optional<Metafile> ReadMetafile(std::string_view bytes) {
  const RecordBytes file(bytes);
  if (IsPlaceable(file)) return PlaceableWmf(file);
  if (IsWmf(file)) return PlainWmf(file);
  if (IsEmf(file)) return Emf(file);
  return std::nullopt;
}

std::optional<QRectF> PlaceableBox(std::string_view bytes) {
  const RecordBytes file(bytes);
  if (!IsPlaceable(file)) return std::nullopt;
  return QRectF(QPointF(file.Signed16(6), file.Signed16(8)),
                QPointF(file.Signed16(10), file.Signed16(12)));
}

std::shared_ptr<const Drawing> DrawingOf(richtext::Picture::Kind kind, std::string_view bytes) {
  return kind == richtext::Picture::Kind::kEmf ? PlayEmf(bytes) : PlayWmf(bytes);
}

}  // namespace tenora::printing
