#include "platform/richtext/characters/text_file.h"

#include "platform/richtext/characters/byte_decoder.h"
#include "platform/richtext/characters/code_page.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

std::string DecodeUtf16(std::string_view bytes, bool big_endian) {
  std::u16string units;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units += static_cast<char16_t>(big_endian ? first << 8 | second : second << 8 | first);
  }
  return FromUtf16(units);
}

std::string DecodeBytes(std::string_view bytes, const CodePage& page) {
  std::string text;
  ByteDecoder decoder;
  for (const char c : bytes) {
    if (const auto character = decoder.Take(static_cast<unsigned char>(c), page))
      AppendUtf8(text, *character);
  }
  return text;
}

}  // namespace

std::string DecodeTextFile(std::string_view bytes) {
  if (bytes.starts_with("\xff\xfe")) return DecodeUtf16(bytes.substr(2), false);
  if (bytes.starts_with("\xfe\xff")) return DecodeUtf16(bytes.substr(2), true);
  if (bytes.starts_with("\xef\xbb\xbf")) bytes.remove_prefix(3);
  if (IsValidUtf8(bytes)) return std::string(bytes);
  return DecodeBytes(bytes, CodePage(kDefaultCodePage));
}

}  // namespace tenora::richtext
