#include "letters/letter/embedded_file.h"

#include <cstdint>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

// The object header of the first OLE version, then the packager's own stream:
//   version, 2 (embedded), class name, topic, item, size of the stream,
//   2, label, path, 0, 3 (a copy of the file), path for temporary use, size, bytes,
//   the same three texts as UTF-16.
constexpr std::uint32_t kOleVersion = 0x0501, kEmbedded = 2, kNoPresentation = 0;
constexpr std::uint32_t kStreamMark = 2, kCopyOfFile = 3;
constexpr std::string_view kClassName = "Package";
constexpr std::size_t kLongestText = 32 * 1024;

class ByteWriter {
 public:
  void Number(std::size_t value, int size) {
    for (int i = 0; i < size; ++i) bytes_ += static_cast<char>(value >> (8 * i) & 0xFF);
  }
  void Text(std::string_view text) { bytes_.append(text).push_back('\0'); }
  void CountedText(std::string_view text) {
    Number(text.size() + 1, 4);
    Text(text);
  }
  void CountedWideText(std::string_view text) {
    const std::u16string wide = ToUtf16(text);
    Number(wide.size(), 4);
    for (const char16_t unit : wide) Number(unit, 2);
  }
  void Bytes(std::string_view bytes) { bytes_.append(bytes); }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// Reads within its bounds; a step beyond the end fails this and all that follow.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

  std::uint32_t Number(std::size_t size) {
    const std::string_view bytes = Bytes(size);
    std::uint32_t value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
      value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
  }
  std::string_view Text() {
    const std::size_t length = rest_.substr(0, kLongestText).find('\0');
    if (length == std::string_view::npos) failed_ = true;
    const std::string_view text = Bytes(failed_ ? 0 : length);
    Bytes(1);
    return text;
  }
  std::string_view CountedText() {
    std::string_view text = Bytes(Number(4));
    return text.substr(0, text.find('\0'));
  }
  std::string CountedWideText() {
    const std::uint32_t units = Number(4);
    const std::string_view bytes = Bytes(units > kLongestText ? rest_.size() + 1 : units * 2U);
    std::u16string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                    static_cast<unsigned char>(bytes[i + 1]) << 8);
    }
    return FromUtf16(text.substr(0, text.find(u'\0')));
  }
  std::string_view Bytes(std::size_t count) {
    if (failed_ || count > rest_.size()) {
      failed_ = true;
      return {};
    }
    const std::string_view bytes = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return bytes;
  }
  bool failed() const { return failed_; }

 private:
  std::string_view rest_;
  bool failed_ = false;
};

std::string AsciiName(std::string_view name) {
  std::string ascii;
  while (!name.empty()) {
    const char32_t c = TakeCodePoint(name);
    ascii += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '_';
  }
  return ascii;
}

std::string PackageStream(const EmbeddedFile& file) {
  const std::string ascii = AsciiName(file.name);
  ByteWriter stream;
  stream.Number(kStreamMark, 2);
  stream.Text(ascii);
  stream.Text(ascii);
  stream.Number(0, 2);
  stream.Number(kCopyOfFile, 2);
  stream.CountedText(ascii);
  stream.Number(file.bytes.size(), 4);
  stream.Bytes(file.bytes);
  for (int i = 0; i < 3; ++i) stream.CountedWideText(file.name);
  return stream.bytes();
}

std::optional<EmbeddedFile> ReadPackage(std::string_view stream) {
  ByteReader reader(stream);
  if (reader.Number(2) != kStreamMark) return std::nullopt;
  EmbeddedFile file;
  const std::string_view label = reader.Text();
  reader.Text();
  reader.Number(2);
  if (reader.Number(2) != kCopyOfFile) return std::nullopt;
  reader.CountedText();
  file.bytes = reader.Bytes(reader.Number(4));
  if (reader.failed()) return std::nullopt;
  // Older packagers wrote no UTF-16 texts.
  reader.CountedWideText();
  const std::string wide_label = reader.CountedWideText();
  file.name = reader.failed() || wide_label.empty() ? std::string(label) : wide_label;
  file.name.erase(0, file.name.find_last_of("/\\") + 1);
  return file;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The hexadecimal digits after \objdata, up to the group's end, as bytes.
std::string ObjectData(std::string_view group) {
  constexpr std::string_view kData = "\\objdata";
  std::string bytes;
  const std::size_t start = group.find(kData);
  if (start == std::string_view::npos) return bytes;
  int high = -1;
  for (const char c : group.substr(start + kData.size())) {
    if (c == '}' || c == '{' || c == '\\') break;
    const int digit = HexValue(c);
    if (digit < 0) continue;
    if (high >= 0) bytes += static_cast<char>(high << 4 | digit);
    high = high >= 0 ? -1 : digit;
  }
  return bytes;
}

}  // namespace

std::string EmbeddedFileGroup(const EmbeddedFile& file, std::string_view result) {
  const std::string stream = PackageStream(file);
  ByteWriter object;
  object.Number(kOleVersion, 4);
  object.Number(kEmbedded, 4);
  object.CountedText(kClassName);
  object.Number(0, 4);
  object.Number(0, 4);
  object.Number(stream.size(), 4);
  object.Bytes(stream);
  object.Number(kOleVersion, 4);
  object.Number(kNoPresentation, 4);
  std::string group = "{\\object\\objemb{\\*\\objclass Package}{\\*\\objdata ";
  constexpr char kDigits[] = "0123456789abcdef";
  group.reserve(group.size() + object.bytes().size() * 2 + result.size() + 16);
  for (const char c : object.bytes()) {
    const auto byte = static_cast<unsigned char>(c);
    group += kDigits[byte >> 4];
    group += kDigits[byte & 15];
  }
  return group.append("}{\\result ").append(result).append("}}");
}

std::optional<EmbeddedFile> ReadEmbeddedFile(std::string_view object_group) {
  const std::string data = ObjectData(object_group);
  ByteReader reader(data);
  reader.Number(4);
  if (reader.Number(4) != kEmbedded) return std::nullopt;
  if (reader.CountedText() != kClassName) return std::nullopt;
  reader.CountedText();
  reader.CountedText();
  const std::string_view stream = reader.Bytes(reader.Number(4));
  if (reader.failed()) return std::nullopt;
  return ReadPackage(stream);
}

}  // namespace tenora
