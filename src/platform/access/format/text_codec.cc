#include "platform/access/format/text_codec.h"

#include <unicode/ucnv.h>

#include <array>
#include <stdexcept>

#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr std::uint16_t kCompressed = 0xFEFF;  // the bytes FF FE

std::string_view AsText(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Whether every byte is between 1 and 127.
bool IsPlainAscii(Bytes bytes) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  const std::byte* at = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= 8; at += 8, left -= 8) {
    const auto word = Load<std::uint64_t>(at);
    // With no high bit set, subtracting one sets a high bit exactly below a zero byte.
    if (((word | (word - kOnes)) & kHighBits) != 0) return false;
  }
  for (; left > 0; ++at, --left) {
    if (Load8(at) == 0 || Load8(at) >= 0x80) return false;
  }
  return true;
}

// Combines UTF-16 code units into code points and appends those as UTF-8.
class Utf16Sink {
 public:
  explicit Utf16Sink(std::string& text) : text_(text) {}
  ~Utf16Sink() { Flush(); }

  void Put(char16_t unit) {
    const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
    if (high_ != 0 && low) {
      AppendUtf8(text_, 0x10000 + ((high_ - 0xD800U) << 10) + (unit - 0xDC00U));
      high_ = 0;
      return;
    }
    Flush();
    if (unit >= 0xD800 && unit < 0xDC00) {
      high_ = unit;
    } else if (unit < 0x80) {
      text_ += static_cast<char>(unit);
    } else {
      AppendUtf8(text_, unit);
    }
  }

 private:
  void Flush() {
    if (high_ != 0) AppendUtf8(text_, high_);
    high_ = 0;
  }

  std::string& text_;
  char16_t high_ = 0;
};

void DecodeUtf16(Bytes stored, std::string& text) {
  text.reserve(stored.size());
  Utf16Sink sink(text);
  for (std::size_t i = 0; i + 1 < stored.size(); i += 2) sink.Put(Load16(&stored[i]));
}

void DecodeCompressed(Bytes stored, std::string& text) {
  text.reserve(stored.size() * 2);
  Utf16Sink sink(text);
  bool compressed = true;
  std::size_t i = 0;
  while (i < stored.size()) {
    const std::uint8_t low = Load8(&stored[i]);
    if (low == 0) {
      compressed = !compressed;
      ++i;
    } else if (compressed) {
      sink.Put(low);
      ++i;
    } else {
      if (i + 1 == stored.size()) break;
      sink.Put(Load16(&stored[i]));
      i += 2;
    }
  }
}

UConverter* OpenConverter(std::uint16_t code_page) {
  // ICU names of a Windows code page, most exact first.
  const std::string number = std::to_string(code_page);
  for (const std::string& name : {"windows-" + number, "cp" + number, "ibm-" + number}) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name.c_str(), &error);
    if (U_SUCCESS(error)) return converter;
  }
  throw std::invalid_argument("The file's code page " + number + " is not known");
}

}  // namespace

void TextCodec::CloseConverter::operator()(UConverter* converter) const { ucnv_close(converter); }

TextCodec::TextCodec(const FileHeader& header) {
  if (header.format != Format::kJet3) return;
  constexpr std::uint16_t kWesternEuropean = 1252;
  converter_.reset(OpenConverter(header.code_page == 0 ? kWesternEuropean : header.code_page));
}

TextCodec::~TextCodec() = default;

std::string_view TextCodec::Decode(Bytes stored, std::string& buffer) const {
  if (converter_ != nullptr) return DecodeCodePage(stored, buffer);
  // An empty text is not compressed: the mark alone is the character U+FEFF.
  const bool compressed = stored.size() > 2 && Load16(stored.data()) == kCompressed;
  if (compressed && IsPlainAscii(stored.subspan(2))) return AsText(stored.subspan(2));
  buffer.clear();
  if (compressed) {
    DecodeCompressed(stored.subspan(2), buffer);
  } else {
    DecodeUtf16(stored, buffer);
  }
  return buffer;
}

std::string_view TextCodec::DecodeCodePage(Bytes stored, std::string& buffer) const {
  // ASCII is the same in every Windows code page.
  if (IsPlainAscii(stored)) return AsText(stored);
  buffer.clear();
  buffer.reserve(stored.size() * 2);
  Utf16Sink sink(buffer);
  std::array<char16_t, 512> units;
  const char* source = AsText(stored).data();
  const char* const end = source + stored.size();
  UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
  while (error == U_BUFFER_OVERFLOW_ERROR) {
    error = U_ZERO_ERROR;
    char16_t* target = units.data();
    ucnv_toUnicode(converter_.get(), &target, units.data() + units.size(), &source, end, nullptr,
                   true, &error);
    for (const char16_t* unit = units.data(); unit != target; ++unit) sink.Put(*unit);
  }
  ucnv_resetToUnicode(converter_.get());
  return buffer;
}

}  // namespace tenora::access
