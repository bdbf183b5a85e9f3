#include "output/html/html_characters.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "platform/runtime/text.h"

namespace tenora::html {
namespace {

// The small a with diaeresis deliberately shares the trade mark's row: letters written with the
// system rely on it.
constexpr std::string_view kTradeMark = "<rtf>:\\super TM\\nosupersub";

// The codes 80-84, 86-98, 9b-9d, 9f, a0 and ae have no row: they are dropped.
constexpr std::pair<std::uint8_t, std::string_view> kCharacters[] = {
    {0x00, "&nbsp;"},   {0x85, "..."},      {0x99, kTradeMark}, {0x9a, "š"},
    {0x9e, "ž"},        {0xa1, "&iexcl;"},  {0xa2, "&cent;"},   {0xa3, "&pound;"},
    {0xa4, "&curren;"}, {0xa5, "&yen;"},    {0xa6, "&brvbar;"}, {0xa7, "&sect;"},
    {0xa8, "&uml;"},    {0xa9, "&copy;"},   {0xaa, "&ordf;"},   {0xab, "&laquo;"},
    {0xac, "&not;"},    {0xad, "&shy;"},    {0xaf, "&macr;"},   {0xb0, "&deg;"},
    {0xb1, "&plusmn;"}, {0xb2, "&sup2;"},   {0xb3, "&sup3;"},   {0xb4, "&acute;"},
    {0xb5, "&micro;"},  {0xb6, "&para;"},   {0xb7, "&middot;"}, {0xb8, "&cedil;"},
    {0xb9, "&sup1;"},   {0xba, "&ordm;"},   {0xbb, "&raquo;"},  {0xbc, "&frac14;"},
    {0xbd, "&frac12;"}, {0xbe, "&frac34;"}, {0xbf, "&iquest;"}, {0xc0, "&Agrave;"},
    {0xc1, "&Aacute;"}, {0xc2, "&Acirc;"},  {0xc3, "&Atilde;"}, {0xc4, "&Auml;"},
    {0xc5, "&Aring;"},  {0xc6, "&AElig;"},  {0xc7, "&Ccedil;"}, {0xc8, "&Egrave;"},
    {0xc9, "&Eacute;"}, {0xca, "&Ecirc;"},  {0xcb, "&Euml;"},   {0xcc, "&Igrave;"},
    {0xcd, "&Iacute;"}, {0xce, "&Icirc;"},  {0xcf, "&Iuml;"},   {0xd0, "&ETH;"},
    {0xd1, "&Ntilde;"}, {0xd2, "&Ograve;"}, {0xd3, "&Oacute;"}, {0xd4, "&Ocirc;"},
    {0xd5, "&Otilde;"}, {0xd6, "&Ouml;"},   {0xd7, "&times;"},  {0xd8, "&Oslash;"},
    {0xd9, "&Ugrave;"}, {0xda, "&Uacute;"}, {0xdb, "&Ucirc;"},  {0xdc, "&Uuml;"},
    {0xdd, "&Yacute;"}, {0xde, "&THORN;"},  {0xdf, "&szlig;"},  {0xe0, "&agrave;"},
    {0xe1, "&aacute;"}, {0xe2, "&acirc;"},  {0xe3, "&atilde;"}, {0xe4, kTradeMark},
    {0xe5, "&aring;"},  {0xe6, "&aelig;"},  {0xe7, "&ccedil;"}, {0xe8, "&egrave;"},
    {0xe9, "&eacute;"}, {0xea, "&ecirc;"},  {0xeb, "&euml;"},   {0xec, "&igrave;"},
    {0xed, "&iacute;"}, {0xee, "&icirc;"},  {0xef, "&iuml;"},   {0xf0, "&eth;"},
    {0xf1, "&ntilde;"}, {0xf2, "&ograve;"}, {0xf3, "&oacute;"}, {0xf4, "&ocirc;"},
    {0xf5, "&otilde;"}, {0xf6, "&ouml;"},   {0xf7, "&divide;"}, {0xf8, "&oslash;"},
    {0xf9, "&ugrave;"}, {0xfa, "&uacute;"}, {0xfb, "&ucirc;"},  {0xfc, "&uuml;"},
    {0xfd, "&yacute;"}, {0xfe, "&thorn;"},  {0xff, "&yuml;"},
};

constexpr auto kByCode = [] {
  std::array<std::string_view, 256> table{};
  for (const auto& [code, written] : kCharacters) table[code] = written;
  return table;
}();

// Windows-1252 from 0x80 to 0x9F; above that it is Latin-1. 0 where the code page has no character.
constexpr char16_t kWindows1252[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr char32_t kReplacement = U'\xFFFD';

int LowerHexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

enum class Class : std::uint8_t { kPlain, kDropped, kMarkup, kBeyondAscii };

constexpr auto kClasses = [] {
  std::array<Class, 256> table{};
  for (int c = 0; c < 0x20; ++c) table[c] = Class::kDropped;
  table['\t'] = Class::kPlain;
  table['<'] = table['>'] = table['&'] = Class::kMarkup;
  for (int c = 0x80; c < 0x100; ++c) table[c] = Class::kBeyondAscii;
  return table;
}();

// What AppendEscaped writes as it is.
constexpr auto kIsPlain = [] {
  std::array<bool, 256> table{};
  for (int c = 0x20; c < 0x7F; ++c) table[c] = kClasses[c] == Class::kPlain && c != '"';
  return table;
}();

Class ClassOf(char c) { return kClasses[static_cast<unsigned char>(c)]; }

std::string_view Entity(char c) { return c == '<' ? "&lt;" : c == '>' ? "&gt;" : "&amp;"; }

// Takes one character beyond ASCII off the front of `text`.
void AppendBeyondAscii(std::string& html, std::string_view& text) {
  const std::string_view before = text;
  TakeCodePoint(text);
  const std::size_t length = before.size() - text.size();
  if (length > 1) {
    html.append(before.substr(0, length));
    return;
  }
  const auto byte = static_cast<unsigned char>(before.front());
  const char16_t known = byte < 0xA0 ? kWindows1252[byte - 0x80] : byte;
  AppendUtf8(html, known != 0 ? char32_t{known} : kReplacement);
}

}  // namespace

std::string_view EscapedCharacter(std::string_view two_digits) {
  if (two_digits.size() != 2) return {};
  const int high = LowerHexDigit(two_digits[0]), low = LowerHexDigit(two_digits[1]);
  return high < 0 || low < 0 ? std::string_view() : kByCode[high * 16 + low];
}

void AppendText(std::string& html, std::string_view text, bool entities) {
  while (!text.empty()) {
    std::size_t plain = 0;
    while (plain < text.size() && ClassOf(text[plain]) == Class::kPlain) ++plain;
    html.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.empty()) return;
    switch (ClassOf(text.front())) {
      case Class::kBeyondAscii:
        AppendBeyondAscii(html, text);
        continue;
      case Class::kMarkup:
        html.append(entities ? Entity(text.front()) : text.substr(0, 1));
        break;
      default:
        break;
    }
    text.remove_prefix(1);
  }
}

void AppendEscaped(std::string& html, std::string_view text) {
  while (!text.empty()) {
    std::size_t plain = 0;
    while (plain < text.size() && kIsPlain[static_cast<unsigned char>(text[plain])]) ++plain;
    html.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.empty()) return;
    const char first = text.front();
    const char32_t c = TakeCodePoint(text);
    if (c >= 0xA0) {
      AppendUtf8(html, c);
    } else if (first == '"') {
      html += "&quot;";
    } else if (ClassOf(first) == Class::kMarkup) {
      html += Entity(first);
    }
  }
}

std::string WithReferences(std::string_view html) {
  std::string ascii;
  ascii.reserve(html.size());
  while (!html.empty()) {
    const auto end = std::ranges::find_if(html, [](char c) { return (c & 0x80) != 0; });
    const auto plain = static_cast<std::size_t>(end - html.begin());
    ascii.append(html.substr(0, plain));
    html.remove_prefix(plain);
    if (html.empty()) break;
    const auto c = static_cast<std::uint32_t>(TakeCodePoint(html));
    ascii.append("&#").append(std::to_string(c)).append(";");
  }
  return ascii;
}

}  // namespace tenora::html
