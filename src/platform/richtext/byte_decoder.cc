#include "platform/richtext/byte_decoder.h"

#include "platform/runtime/text.h"

namespace tenora::richtext {

std::string DecodeBytes(std::string_view bytes, const CodePage& page) {
  std::string text;
  ByteDecoder decoder;
  for (const char c : bytes) {
    if (const auto character = decoder.Take(static_cast<unsigned char>(c), page))
      AppendUtf8(text, *character);
  }
  return text;
}

}  // namespace tenora::richtext
