// Code pages: what the bytes of RTF source mean, by the document's code page and the fonts'
// character sets.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct UConverter;

namespace tenora::richtext {

// The code page of fonts whose bytes are glyph numbers (Symbol, Wingdings): bytes from 0x80 are
// the characters U+F080 to U+F0FF, as word processors write them.
inline constexpr int kSymbolCodePage = 42;
inline constexpr int kDefaultCodePage = 1252;
// UTF-8. Bytes that are no UTF-8 read as 1252, which is also what Encode gives.
inline constexpr int kUtf8CodePage = 65001;
// The character set of such fonts.
inline constexpr int kSymbolCharset = 2;

class CodePage {
 public:
  // A number that no converter knows reads as 1252.
  explicit CodePage(int number);
  ~CodePage();
  CodePage(const CodePage&) = delete;
  CodePage& operator=(const CodePage&) = delete;

  int number() const { return number_; }
  // True when the byte starts a double-byte character.
  bool IsLead(unsigned char byte) const { return lead_[byte]; }
  char32_t Decode(unsigned char byte) const { return single_[byte]; }
  // U+FFFD for a pair without a character.
  char32_t DecodePair(unsigned char lead, unsigned char trail) const;
  // The one or two bytes of a character beyond ASCII; empty when the code page lacks it.
  std::string Encode(char32_t character) const;

 private:
  struct CloseConverter {
    void operator()(UConverter* converter) const;
  };

  void FillFromConverter();

  int number_;
  std::array<char32_t, 256> single_{};
  std::array<bool, 256> lead_{};
  std::vector<std::pair<char32_t, std::uint8_t>> reverse_;  // sorted, bytes from 0x80
  std::unique_ptr<UConverter, CloseConverter> converter_;   // only for double-byte sets
};

// Creates each code page once, on first use.
class CodePages {
 public:
  const CodePage& Get(int number);

 private:
  std::map<int, std::unique_ptr<CodePage>> pages_;
};

bool IsKnownCodePage(int number);

// \fcharsetN to a code page; the sets "default" (1) and those unknown are the document's own.
int CodePageOfCharset(int charset, int document_code_page);
// The character set that text of a code page is written in: 0 where Windows has none of its own.
int CharsetOfCodePage(int code_page);

}  // namespace tenora::richtext
