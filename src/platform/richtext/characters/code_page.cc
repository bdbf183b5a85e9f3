#include "platform/richtext/characters/code_page.h"

#include <unicode/ucnv.h>

#include <algorithm>

namespace tenora::richtext {
namespace {

constexpr char32_t kReplacement = 0xfffd;

// 0x80 to 0x9f of code page 1252; the five bytes without a character map to the code point of their
// value.
constexpr std::array<char16_t, 32> kWindows1252{
    0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008d, 0x017d, 0x008f, 0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
    0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};

struct CodePageName {
  int number;
  const char* converter;
};

constexpr std::array kNames{
    CodePageName{437, "ibm-437"},          CodePageName{708, "iso-8859-6"},
    CodePageName{720, "ibm-720"},          CodePageName{737, "ibm-737"},
    CodePageName{775, "ibm-775"},          CodePageName{850, "ibm-850"},
    CodePageName{852, "ibm-852"},          CodePageName{855, "ibm-855"},
    CodePageName{857, "ibm-857"},          CodePageName{858, "ibm-858"},
    CodePageName{860, "ibm-860"},          CodePageName{861, "ibm-861"},
    CodePageName{862, "ibm-862"},          CodePageName{863, "ibm-863"},
    CodePageName{864, "ibm-864"},          CodePageName{865, "ibm-865"},
    CodePageName{866, "ibm-866"},          CodePageName{869, "ibm-869"},
    CodePageName{874, "windows-874"},      CodePageName{932, "windows-932"},
    CodePageName{936, "windows-936"},      CodePageName{949, "windows-949"},
    CodePageName{950, "windows-950"},      CodePageName{1250, "windows-1250"},
    CodePageName{1251, "windows-1251"},    CodePageName{1252, "windows-1252"},
    CodePageName{1253, "windows-1253"},    CodePageName{1254, "windows-1254"},
    CodePageName{1255, "windows-1255"},    CodePageName{1256, "windows-1256"},
    CodePageName{1257, "windows-1257"},    CodePageName{1258, "windows-1258"},
    CodePageName{10000, "macintosh"},      CodePageName{10006, "x-mac-greek"},
    CodePageName{10007, "x-mac-cyrillic"}, CodePageName{10029, "x-mac-ce"},
    CodePageName{10081, "x-mac-turkish"},  CodePageName{20866, "koi8-r"},
    CodePageName{21866, "koi8-u"},         CodePageName{28591, "iso-8859-1"},
    CodePageName{28592, "iso-8859-2"},
};

struct CharsetEntry {
  int charset;
  int code_page;
};

// Those of Windows, in which letters are written.
constexpr std::array kCharsets{
    CharsetEntry{0, 1252},   CharsetEntry{kSymbolCharset, kSymbolCodePage},
    CharsetEntry{128, 932},  CharsetEntry{129, 949},
    CharsetEntry{134, 936},  CharsetEntry{136, 950},
    CharsetEntry{161, 1253}, CharsetEntry{162, 1254},
    CharsetEntry{163, 1258}, CharsetEntry{177, 1255},
    CharsetEntry{178, 1256}, CharsetEntry{186, 1257},
    CharsetEntry{204, 1251}, CharsetEntry{222, 874},
    CharsetEntry{238, 1250},
};

// Those of Macs and of DOS, which are read only.
constexpr std::array kOldCharsets{
    CharsetEntry{77, 10000}, CharsetEntry{78, 10001}, CharsetEntry{79, 10003},
    CharsetEntry{80, 10008}, CharsetEntry{81, 10002}, CharsetEntry{85, 10006},
    CharsetEntry{86, 10081}, CharsetEntry{88, 10029}, CharsetEntry{89, 10007},
    CharsetEntry{254, 437},  CharsetEntry{255, 850},
};

// The East Asian sets of old Macs are those of Windows but for a few signs.
int SameAs(int number) {
  switch (number) {
    case 10001:
      return 932;
    case 10002:
      return 950;
    case 10003:
      return 949;
    case 10008:
      return 936;
    default:
      return number;
  }
}

const char* ConverterName(int number) {
  const auto* found = std::ranges::find(kNames, number, &CodePageName::number);
  return found == kNames.end() ? nullptr : found->converter;
}

bool IsDoubleByte(int number) {
  return number == 932 || number == 936 || number == 949 || number == 950;
}

bool IsLeadByte(int number, unsigned byte) {
  if (number == 932) return (byte >= 0x81 && byte <= 0x9f) || (byte >= 0xe0 && byte <= 0xfc);
  return IsDoubleByte(number) && byte >= 0x81 && byte <= 0xfe;
}

}  // namespace

void CodePage::CloseConverter::operator()(UConverter* converter) const { ucnv_close(converter); }

CodePage::CodePage(int number) : number_(SameAs(number)) {
  for (unsigned byte = 0; byte < 256; ++byte) single_[byte] = byte;
  if (number_ == kSymbolCodePage) {
    for (unsigned byte = 0x80; byte < 256; ++byte) single_[byte] = 0xf000 + byte;
  } else if (number_ != kDefaultCodePage && ConverterName(number_) != nullptr) {
    FillFromConverter();
  } else {
    if (number_ != kUtf8CodePage) number_ = kDefaultCodePage;
    for (std::size_t i = 0; i < kWindows1252.size(); ++i) single_[0x80 + i] = kWindows1252[i];
  }
  for (unsigned byte = 0x80; byte < 256; ++byte) {
    lead_[byte] = IsLeadByte(number_, byte);
    if (!lead_[byte] && single_[byte] != kReplacement && single_[byte] >= 0x80)
      reverse_.emplace_back(single_[byte], static_cast<std::uint8_t>(byte));
  }
  std::ranges::sort(reverse_);
}

CodePage::~CodePage() = default;

void CodePage::FillFromConverter() {
  UErrorCode error = U_ZERO_ERROR;
  converter_.reset(ucnv_open(ConverterName(number_), &error));
  if (U_FAILURE(error)) {
    converter_.reset();
    return;
  }
  for (unsigned byte = 0x80; byte < 256; ++byte) {
    single_[byte] = kReplacement;
    if (!IsLeadByte(number_, byte)) single_[byte] = DecodePair(static_cast<unsigned char>(byte), 0);
  }
  if (!IsDoubleByte(number_)) converter_.reset();
}

char32_t CodePage::DecodePair(unsigned char lead, unsigned char trail) const {
  if (converter_ == nullptr) return kReplacement;
  const std::array bytes{static_cast<char>(lead), static_cast<char>(trail)};
  std::array<UChar, 4> text{};
  UErrorCode error = U_ZERO_ERROR;
  const int length = ucnv_toUChars(converter_.get(), text.data(), text.size(), bytes.data(),
                                   trail == 0 ? 1 : 2, &error);
  if (U_FAILURE(error) || length != 1) return kReplacement;
  return text[0];
}

std::string CodePage::Encode(char32_t character) const {
  const auto found =
      std::ranges::lower_bound(reverse_, character, {}, [](const auto& e) { return e.first; });
  if (found != reverse_.end() && found->first == character)
    return std::string(1, static_cast<char>(found->second));
  if (converter_ == nullptr || character > 0xffff || character < 0x80) return {};
  const auto unit = static_cast<UChar>(character);
  std::array<char, 8> bytes{};
  UErrorCode error = U_ZERO_ERROR;
  const int length =
      ucnv_fromUChars(converter_.get(), bytes.data(), bytes.size(), &unit, 1, &error);
  if (U_FAILURE(error) || length != 2) return {};
  // Only what reads back as the same character: converters map several characters onto one.
  const auto lead = static_cast<unsigned char>(bytes[0]);
  if (!lead_[lead] || DecodePair(lead, static_cast<unsigned char>(bytes[1])) != character)
    return {};
  return std::string(bytes.data(), 2);
}

const CodePage& CodePages::Get(int number) {
  std::unique_ptr<CodePage>& page = pages_[number];
  if (page == nullptr) page = std::make_unique<CodePage>(number);
  return *page;
}

bool IsKnownCodePage(int number) {
  return number == kUtf8CodePage || ConverterName(SameAs(number)) != nullptr;
}

int CodePageOfCharset(int charset, int document_code_page) {
  const auto* found = std::ranges::find(kCharsets, charset, &CharsetEntry::charset);
  if (found != kCharsets.end()) return found->code_page;
  const auto* old = std::ranges::find(kOldCharsets, charset, &CharsetEntry::charset);
  return old == kOldCharsets.end() ? document_code_page : old->code_page;
}

int CharsetOfCodePage(int code_page) {
  const auto* found = std::ranges::find(kCharsets, SameAs(code_page), &CharsetEntry::code_page);
  return found == kCharsets.end() ? 0 : found->charset;
}

}  // namespace tenora::richtext
