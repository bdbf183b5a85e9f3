#include "platform/richtext/symbol_characters.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr char16_t kBullet = u'\u2022';

// Glyphs 0x20 to 0x7E and 0xA0 to 0xFE of Symbol.
constexpr char16_t kSymbolLow[] =
    u" !\u2200#\u2203%&\u220B()\u2217+,\u2212./0123456789:;<=>?"
    u"\u2245\u0391\u0392\u03A7\u0394\u0395\u03A6\u0393\u0397\u0399\u03D1\u039A\u039B\u039C\u039D"
    u"\u039F\u03A0\u0398\u03A1\u03A3\u03A4\u03A5\u03C2\u03A9\u039E\u03A8\u0396[\u2234]\u22A5_"
    u"\u203E\u03B1\u03B2\u03C7\u03B4\u03B5\u03C6\u03B3\u03B7\u03B9\u03D5\u03BA\u03BB\u03BC\u03BD"
    u"\u03BF\u03C0\u03B8\u03C1\u03C3\u03C4\u03C5\u03D6\u03C9\u03BE\u03C8\u03B6{|}\u223C";
constexpr char16_t kSymbolHigh[] =
    u"\u20AC\u03D2\u2032\u2264\u2044\u221E\u0192\u2663\u2666\u2665\u2660\u2194\u2190\u2191\u2192"
    u"\u2193\u00B0\u00B1\u2033\u2265\u00D7\u221D\u2202\u2022\u00F7\u2260\u2261\u2248\u2026\u23D0"
    u"\u23AF\u21B5\u2135\u2111\u211C\u2118\u2297\u2295\u2205\u2229\u222A\u2283\u2287\u2284\u2282"
    u"\u2286\u2208\u2209\u2220\u2207\u00AE\u00A9\u2122\u220F\u221A\u22C5\u00AC\u2227\u2228\u21D4"
    u"\u21D0\u21D1\u21D2\u21D3\u25CA\u2329\u00AE\u00A9\u2122\u2211\u239B\u239C\u239D\u23A1\u23A2"
    u"\u23A3\u23A7\u23A8\u23A9\u23AA\u20AC\u232A\u222B\u2320\u23AE\u2321\u239E\u239F\u23A0\u23A4"
    u"\u23A5\u23A6\u23AB\u23AC\u23AD";
static_assert(std::size(kSymbolLow) == 0x7F - 0x20 + 1);
static_assert(std::size(kSymbolHigh) == 0xFF - 0xA0 + 1);

struct Glyph {
  char16_t number;
  char16_t unicode;
};

// The glyphs that letters use and other fonts have, by their numbers in the font.
constexpr Glyph kWingdings[] = {
    {0x20, u' '},      {0x22, u'\u2702'}, {0x23, u'\u2701'}, {0x28, u'\u260E'}, {0x29, u'\u2706'},
    {0x2A, u'\u2709'}, {0x36, u'\u231B'}, {0x3E, u'\u2707'}, {0x3F, u'\u270D'}, {0x41, u'\u270C'},
    {0x45, u'\u261C'}, {0x46, u'\u261E'}, {0x47, u'\u261D'}, {0x48, u'\u261F'}, {0x4A, u'\u263A'},
    {0x4C, u'\u2639'}, {0x4E, u'\u2620'}, {0x4F, u'\u2690'}, {0x51, u'\u2708'}, {0x52, u'\u263C'},
    {0x54, u'\u2744'}, {0x56, u'\u271E'}, {0x58, u'\u2720'}, {0x59, u'\u2721'}, {0x5A, u'\u262A'},
    {0x5B, u'\u262F'}, {0x5D, u'\u2638'}, {0x5E, u'\u2648'}, {0x5F, u'\u2649'}, {0x60, u'\u264A'},
    {0x61, u'\u264B'}, {0x62, u'\u264C'}, {0x63, u'\u264D'}, {0x64, u'\u264E'}, {0x65, u'\u264F'},
    {0x66, u'\u2650'}, {0x67, u'\u2651'}, {0x68, u'\u2652'}, {0x69, u'\u2653'}, {0x6A, u'&'},
    {0x6B, u'&'},      {0x6C, u'\u25CF'}, {0x6D, u'\u274D'}, {0x6E, u'\u25A0'}, {0x6F, u'\u25A1'},
    {0x70, u'\u25A1'}, {0x71, u'\u2751'}, {0x72, u'\u2752'}, {0x73, u'\u25C6'}, {0x74, u'\u25C6'},
    {0x75, u'\u25C6'}, {0x76, u'\u2756'}, {0x77, u'\u25C6'}, {0x78, u'\u2327'}, {0x7A, u'\u2318'},
    {0x7B, u'\u2740'}, {0x7C, u'\u273F'}, {0x7D, u'\u275D'}, {0x7E, u'\u275E'}, {0x80, u'\u24EA'},
    {0x81, u'\u2460'}, {0x82, u'\u2461'}, {0x83, u'\u2462'}, {0x84, u'\u2463'}, {0x85, u'\u2464'},
    {0x86, u'\u2465'}, {0x87, u'\u2466'}, {0x88, u'\u2467'}, {0x89, u'\u2468'}, {0x8A, u'\u2469'},
    {0x8B, u'\u24FF'}, {0x8C, u'\u2776'}, {0x8D, u'\u2777'}, {0x8E, u'\u2778'}, {0x8F, u'\u2779'},
    {0x90, u'\u277A'}, {0x91, u'\u277B'}, {0x92, u'\u277C'}, {0x93, u'\u277D'}, {0x94, u'\u277E'},
    {0x95, u'\u277F'}, {0x9E, u'\u00B7'}, {0x9F, u'\u2022'}, {0xA1, u'\u25CB'}, {0xA4, u'\u25C9'},
    {0xA5, u'\u25CE'}, {0xA7, u'\u25AA'}, {0xA8, u'\u25A1'}, {0xAA, u'\u2726'}, {0xAB, u'\u2605'},
    {0xAC, u'\u2736'}, {0xAD, u'\u2734'}, {0xAE, u'\u2739'}, {0xAF, u'\u2735'}, {0xB5, u'\u272A'},
    {0xB6, u'\u2730'}, {0xD5, u'\u232B'}, {0xD6, u'\u2326'}, {0xD8, u'\u27A2'}, {0xDC, u'\u27B2'},
    {0xDF, u'\u2190'}, {0xE0, u'\u2192'}, {0xE1, u'\u2191'}, {0xE2, u'\u2193'}, {0xE3, u'\u2196'},
    {0xE4, u'\u2197'}, {0xE5, u'\u2199'}, {0xE6, u'\u2198'}, {0xE7, u'\u2B05'}, {0xE8, u'\u2794'},
    {0xE9, u'\u2B06'}, {0xEA, u'\u2B07'}, {0xEF, u'\u21E6'}, {0xF0, u'\u21E8'}, {0xF1, u'\u21E7'},
    {0xF2, u'\u21E9'}, {0xF3, u'\u2B04'}, {0xFB, u'\u2717'}, {0xFC, u'\u2713'}, {0xFD, u'\u2612'},
    {0xFE, u'\u2611'}};
constexpr Glyph kWingdings2[] = {
    {0x20, u' '},      {0x24, u'\u270F'}, {0x25, u'\u2704'}, {0x26, u'\u2702'}, {0x27, u'\u260E'},
    {0x28, u'\u260E'}, {0x4F, u'\u2717'}, {0x50, u'\u2713'}, {0x51, u'\u2612'}, {0x52, u'\u2611'},
    {0x53, u'\u2612'}, {0x54, u'\u2612'}, {0x57, u'\u29B8'}, {0x69, u'\u24EA'}, {0x6A, u'\u2460'},
    {0x6B, u'\u2461'}, {0x6C, u'\u2462'}, {0x6D, u'\u2463'}, {0x6E, u'\u2464'}, {0x6F, u'\u2465'},
    {0x70, u'\u2466'}, {0x71, u'\u2467'}, {0x72, u'\u2468'}, {0x73, u'\u2469'}, {0x74, u'\u24FF'},
    {0x75, u'\u2776'}, {0x76, u'\u2777'}, {0x77, u'\u2778'}, {0x78, u'\u2779'}, {0x79, u'\u277A'},
    {0x7A, u'\u277B'}, {0x7B, u'\u277C'}, {0x7C, u'\u277D'}, {0x7D, u'\u277E'}, {0x7E, u'\u277F'},
    {0x80, u'\u2609'}, {0x95, u'\u2022'}, {0x96, u'\u25CF'}, {0x97, u'\u25CF'}, {0x98, u'\u25CF'},
    {0x9D, u'\u25E6'}, {0x9E, u'\u25AA'}, {0x9F, u'\u25AA'}, {0xA0, u'\u25AA'}, {0xA1, u'\u25A0'},
    {0xA2, u'\u25A0'}, {0xA3, u'\u25A1'}, {0xA4, u'\u25A2'}, {0xAE, u'\u25C6'}, {0xAF, u'\u25C7'},
    {0xB0, u'\u25C8'}};
constexpr Glyph kWebdings[] = {
    {0x20, u' '},      {0x33, u'\u25C4'}, {0x34, u'\u25BA'}, {0x35, u'\u25B2'}, {0x36, u'\u25BC'},
    {0x59, u'\u2665'}, {0x5B, u'\u262F'}, {0x5C, u'\u271D'}, {0x61, u'\u2714'}, {0x63, u'\u25A1'},
    {0x67, u'\u25A0'}, {0x6E, u'\u25CF'}, {0x72, u'\u2716'}, {0x73, u'?'},      {0x78, u'\u2297'},
    {0x79, u'\u2298'}, {0xC9, u'\u260E'}};
static_assert(std::ranges::is_sorted(kWingdings, {}, &Glyph::number));
static_assert(std::ranges::is_sorted(kWingdings2, {}, &Glyph::number));
static_assert(std::ranges::is_sorted(kWebdings, {}, &Glyph::number));

char16_t FromSymbol(char16_t glyph) {
  if (glyph >= 0x20 && glyph <= 0x7E) return kSymbolLow[glyph - 0x20];
  if (glyph >= 0xA0 && glyph <= 0xFE) return kSymbolHigh[glyph - 0xA0];
  return kBullet;
}

char16_t From(std::span<const Glyph> table, char16_t glyph) {
  const auto found = std::ranges::lower_bound(table, glyph, {}, &Glyph::number);
  return found == table.end() || found->number != glyph ? kBullet : found->unicode;
}

}  // namespace

SymbolFont SymbolFontOf(std::string_view font_name) {
  if (EqualsNoCase(font_name, "Symbol")) return SymbolFont::kSymbol;
  if (EqualsNoCase(font_name, "Wingdings 2")) return SymbolFont::kWingdings2;
  if (EqualsNoCase(font_name, "Webdings")) return SymbolFont::kWebdings;
  return StartsWithNoCase(font_name, "Wingdings") ? SymbolFont::kWingdings : SymbolFont::kNone;
}

char32_t UnicodeSymbol(SymbolFont font, char32_t code) {
  const bool is_glyph = IsPrivateSymbol(code) || (code >= 0x20 && code <= 0xFF);
  if (font == SymbolFont::kNone || !is_glyph) return code;
  const auto glyph = static_cast<char16_t>(code & 0xFF);
  switch (font) {
    case SymbolFont::kSymbol:
      return FromSymbol(glyph);
    case SymbolFont::kWingdings:
      return From(kWingdings, glyph);
    case SymbolFont::kWingdings2:
      return From(kWingdings2, glyph);
    case SymbolFont::kWebdings:
      return From(kWebdings, glyph);
    case SymbolFont::kNone:
      break;
  }
  return code;
}

bool IsPrivateSymbol(char32_t code) { return code >= 0xF020 && code <= 0xF0FF; }

}  // namespace tenora::richtext
