#include "platform/spelling/dictionary_text.h"

#include <unicode/ucnv.h>

#include <array>
#include <utility>

#include "platform/runtime/text.h"

namespace tenora::spelling {
namespace {

// ICU knows most names; these two families are Hunspell's own.
std::string ConverterName(std::string_view encoding) {
  if (StartsWithNoCase(encoding, "ISO8859")) return "ISO-8859" + std::string(encoding.substr(7));
  if (StartsWithNoCase(encoding, "microsoft-cp"))
    return "windows-" + std::string(encoding.substr(12));
  return std::string(encoding);
}

// UTF-16 of a word is a few bytes; so is its form in any encoding.
constexpr std::size_t kMostBytesAUnit = 8;

}  // namespace

void DictionaryText::Close::operator()(UConverter* converter) const { ucnv_close(converter); }

DictionaryText::DictionaryText(std::string_view encoding) {
  if (encoding.empty() || EqualsNoCase(encoding, "UTF-8")) return;
  UErrorCode status = U_ZERO_ERROR;
  converter_.reset(ucnv_open(ConverterName(encoding).c_str(), &status));
  if (U_FAILURE(status)) converter_.reset();
  if (converter_ == nullptr) return;
  ucnv_setFromUCallBack(converter_.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
}

std::optional<std::string> DictionaryText::Encode(std::string_view utf8) const {
  if (converter_ == nullptr) return std::string(utf8);
  const std::u16string text = ToUtf16(utf8);
  std::string bytes(text.size() * kMostBytesAUnit + kMostBytesAUnit, '\0');
  UErrorCode status = U_ZERO_ERROR;
  const int32_t length =
      ucnv_fromUChars(converter_.get(), bytes.data(), static_cast<int32_t>(bytes.size()),
                      text.data(), static_cast<int32_t>(text.size()), &status);
  if (U_FAILURE(status)) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

std::string DictionaryText::Decode(std::string_view bytes) const {
  if (converter_ == nullptr) return std::string(bytes);
  std::u16string text(bytes.size() * 2 + 2, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  const int32_t length =
      ucnv_toUChars(converter_.get(), text.data(), static_cast<int32_t>(text.size()), bytes.data(),
                    static_cast<int32_t>(bytes.size()), &status);
  if (U_FAILURE(status)) return {};
  text.resize(static_cast<std::size_t>(length));
  return FromUtf16(text);
}

std::string WithoutMacrons(std::string_view utf8) {
  constexpr std::array<std::pair<char32_t, char>, 10> kPlain{{{U'ā', 'a'},
                                                              {U'ē', 'e'},
                                                              {U'ī', 'i'},
                                                              {U'ō', 'o'},
                                                              {U'ū', 'u'},
                                                              {U'Ā', 'A'},
                                                              {U'Ē', 'E'},
                                                              {U'Ī', 'I'},
                                                              {U'Ō', 'O'},
                                                              {U'Ū', 'U'}}};
  constexpr char32_t kCombiningMacron = 0x0304;
  std::string plain;
  while (!utf8.empty()) {
    char32_t c = TakeCodePoint(utf8);
    if (c == kCombiningMacron) continue;
    for (const auto& [with, without] : kPlain) {
      if (c == with) c = static_cast<char32_t>(without);
    }
    AppendUtf8(plain, c);
  }
  return plain;
}

}  // namespace tenora::spelling
