// The bytes of a metafile's record, or of the whole file: little-endian numbers that are 0 beyond
// the end, and parts that are shorter there.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

namespace tenora::printing {

class RecordBytes {
 public:
  RecordBytes() = default;
  explicit RecordBytes(std::string_view bytes) : bytes_(bytes) {}

  std::string_view bytes() const { return bytes_; }
  std::size_t size() const { return bytes_.size(); }

  std::uint8_t Byte(std::size_t at) const { return static_cast<std::uint8_t>(Number(at, 1)); }
  std::uint16_t Unsigned16(std::size_t at) const {
    return static_cast<std::uint16_t>(Number(at, 2));
  }
  std::int16_t Signed16(std::size_t at) const { return static_cast<std::int16_t>(Number(at, 2)); }
  std::uint32_t Unsigned32(std::size_t at) const { return Number(at, 4); }
  std::int32_t Signed32(std::size_t at) const { return static_cast<std::int32_t>(Number(at, 4)); }
  float Float(std::size_t at) const { return std::bit_cast<float>(Number(at, 4)); }

  RecordBytes From(std::size_t at) const {
    return RecordBytes(at < size() ? bytes_.substr(at) : std::string_view());
  }
  RecordBytes Part(std::size_t at, std::size_t length) const {
    return RecordBytes(at < size() ? bytes_.substr(at, length) : std::string_view());
  }

 private:
  std::uint32_t Number(std::size_t at, std::size_t count) const {
    if (at > size() || count > size() - at) return 0;
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;) {
      value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
    }
    return value;
  }

  std::string_view bytes_;
};

}  // namespace tenora::printing
