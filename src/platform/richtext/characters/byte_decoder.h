// Turns the bytes of RTF text into characters, the bytes of one character together however they
// were written.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/richtext/characters/code_page.h"

namespace tenora::richtext {

class ByteDecoder {
 public:
  // Adds the character that this byte completes, after those of bytes that it does not complete;
  // nothing where more bytes must follow.
  void Take(unsigned char byte, const CodePage& page, std::u32string* characters) {
    if (page.number() == kUtf8CodePage) return TakeUtf8(byte, page, characters);
    if (count_ > 0) {
      *characters += page.DecodePair(bytes_[0], byte);
      count_ = 0;
    } else if (page.IsLead(byte)) {
      bytes_[count_++] = byte;
    } else {
      *characters += page.Decode(byte);
    }
  }
  bool pending() const { return count_ > 0; }
  // Forgets bytes that nothing followed.
  void Reset() { count_ = 0; }

 private:
  static std::size_t LengthInUtf8(unsigned char lead) {
    if (lead >= 0xc2 && lead <= 0xdf) return 2;
    if (lead >= 0xe0 && lead <= 0xef) return 3;
    return lead >= 0xf0 && lead <= 0xf4 ? 4 : 1;
  }

  void TakeUtf8(unsigned char byte, const CodePage& page, std::u32string* characters) {
    const bool goes_on = (byte & 0xc0) == 0x80;
    if (count_ > 0 && !goes_on) {
      for (std::size_t i = 0; i < count_; ++i) *characters += page.Decode(bytes_[i]);
      count_ = 0;
    }
    if (count_ == 0 && LengthInUtf8(byte) == 1) {
      *characters += page.Decode(byte);
      return;
    }
    bytes_[count_++] = byte;
    const std::size_t length = LengthInUtf8(bytes_[0]);
    if (count_ < length) return;
    char32_t character = bytes_[0] & (0x7fu >> length);
    for (std::size_t i = 1; i < length; ++i) character = character << 6 | (bytes_[i] & 0x3fu);
    constexpr std::array<char32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
    const bool valid = character >= kLeast[length] && character <= 0x10ffff &&
                       (character < 0xd800 || character > 0xdfff);
    *characters += valid ? character : U'\xfffd';
    count_ = 0;
  }

  std::array<unsigned char, 4> bytes_{};
  std::size_t count_ = 0;
};

}  // namespace tenora::richtext
