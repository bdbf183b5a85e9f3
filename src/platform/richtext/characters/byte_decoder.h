// Turns the bytes of RTF text into characters, a double-byte character's two bytes together
// however they were written.
#pragma once

#include <optional>
#include <utility>

#include "platform/richtext/characters/code_page.h"

namespace tenora::richtext {

class ByteDecoder {
 public:
  // The character that this byte completes; nothing after the lead byte of a pair.
  std::optional<char32_t> Take(unsigned char byte, const CodePage& page) {
    if (lead_ != 0) return page.DecodePair(std::exchange(lead_, 0), byte);
    if (page.IsLead(byte)) {
      lead_ = byte;
      return std::nullopt;
    }
    return page.Decode(byte);
  }
  bool pending() const { return lead_ != 0; }
  // Forgets a lead byte that nothing followed.
  void Reset() { lead_ = 0; }

 private:
  unsigned char lead_ = 0;
};

}  // namespace tenora::richtext
