#include "platform/access/format/calculated_value.h"

#include <array>

#include "platform/access/format/field_codec.h"

namespace tenora::access {
namespace {

constexpr std::size_t kLength = 16, kValue = 20;
constexpr std::size_t kDecimalValue = 16;
constexpr std::size_t kScale = 2, kSign = 3, kHigh = 4, kLow = 8, kMiddle = 12;

}  // namespace

bool IsCalculatedNull(Bytes stored) {
  return stored.size() >= kValue && Load32(&stored[kLength]) == 0;
}

Bytes CalculatedContent(Bytes stored, std::uint32_t page) {
  if (stored.empty()) return {};
  if (stored.size() < kValue) throw Corruption(page, "a calculated value's head is too short");
  const std::size_t length = Load32(&stored[kLength]);
  if (length > stored.size() - kValue) {
    throw Corruption(page, "a calculated value is longer than its field");
  }
  return stored.subspan(kValue, length);
}

std::string CalculatedDecimalText(Bytes value, std::uint32_t page) {
  if (value.size() < kDecimalValue) throw Corruption(page, "a calculated decimal is too short");
  // As in an ordinary column: sign, then four words from the most significant.
  std::array<std::byte, kDecimalSize> ordinary{};
  ordinary[0] = value[kSign];
  Store32(&ordinary[5], Load32(&value[kHigh]));
  Store32(&ordinary[9], Load32(&value[kMiddle]));
  Store32(&ordinary[13], Load32(&value[kLow]));
  return DecimalText(ordinary.data(), Load8(&value[kScale]));
}

}  // namespace tenora::access
