// Loads and stores of little-endian numbers, and a bounds-checked reader. Everything in a file is
// untrusted: use Load and Store only on ranges that have been checked.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "platform/access/format/corruption.h"

namespace tenora::access {

static_assert(std::endian::native == std::endian::little);

using Bytes = std::span<const std::byte>;

template <typename T>
T Load(const std::byte* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

inline std::uint8_t Load8(const std::byte* at) { return std::to_integer<std::uint8_t>(*at); }
inline std::uint16_t Load16(const std::byte* at) { return Load<std::uint16_t>(at); }
inline std::uint32_t Load32(const std::byte* at) { return Load<std::uint32_t>(at); }
inline std::uint32_t Load24(const std::byte* at) {
  return Load16(at) | static_cast<std::uint32_t>(Load8(at + 2)) << 16;
}

template <typename T>
void Store(std::byte* at, T value) {
  std::memcpy(at, &value, sizeof value);
}
inline void Store16(std::byte* at, std::size_t value) {
  Store(at, static_cast<std::uint16_t>(value));
}
inline void Store24(std::byte* at, std::uint32_t value) {
  Store16(at, value & 0xFFFF);
  at[2] = static_cast<std::byte>(value >> 16);
}
inline void Store32(std::byte* at, std::uint32_t value) { Store(at, value); }

// Reads sequentially. Raises Corruption, naming `page` and `what`, when the bytes run out.
class ByteReader {
 public:
  ByteReader(Bytes bytes, std::uint32_t page, const char* what)
      : bytes_(bytes), page_(page), what_(what) {}

  Bytes Take(std::size_t count) {
    if (count > bytes_.size()) throw Corruption(page_, std::string(what_) + " ends too early");
    const Bytes taken = bytes_.first(count);
    bytes_ = bytes_.subspan(count);
    return taken;
  }
  void Skip(std::size_t count) { Take(count); }
  std::size_t left() const { return bytes_.size(); }
  std::uint8_t U8() { return Load8(Take(1).data()); }
  std::uint16_t U16() { return Load16(Take(2).data()); }
  std::uint32_t U32() { return Load32(Take(4).data()); }

 private:
  Bytes bytes_;
  std::uint32_t page_;
  const char* what_;
};

}  // namespace tenora::access
