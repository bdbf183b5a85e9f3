#include "output/html/css_style.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "output/html/html_characters.h"
#include "platform/richtext/border_kinds.h"
#include "platform/richtext/symbol_characters.h"
#include "platform/runtime/text.h"

namespace tenora::html {
namespace {

using richtext::Border;

constexpr Rgb kBlack = 0x000000, kWhite = 0xFFFFFF;
constexpr Rgb kDarkest = 0x40;  // of each component of a colour that is as good as black
constexpr double kTwipsPerPoint = 20, kTwipsPerPixel = 15;
constexpr std::size_t kLongestFamily = 64;  // bytes; no real name comes near this
constexpr int kThickBorder = 30;            // twips

Rgb RgbOf(const richtext::Colour& colour) {
  return Rgb{colour.red} << 16 | Rgb{colour.green} << 8 | Rgb{colour.blue};
}

// Text of this colour looks black on paper, and cannot be read on a dark screen.
bool IsNearlyBlack(Rgb colour) {
  return (colour >> 16) <= kDarkest && (colour >> 8 & 0xFF) <= kDarkest &&
         (colour & 0xFF) <= kDarkest;
}

bool IsNameCharacter(char32_t c) {
  return c >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         c == '-';
}

// A name without the characters that could end the attribute or the declaration around it.
std::string FamilyName(std::string_view name) {
  std::string clean;
  bool quoted = false;
  for (name = BoundedUtf8(name, kLongestFamily); !name.empty();) {
    const char32_t c = TakeCodePoint(name);
    if (c != ' ' && !IsNameCharacter(c)) continue;
    quoted = quoted || c == ' ' || c >= 0x80 || (c >= '0' && c <= '9');
    AppendUtf8(clean, c);
  }
  const std::string trimmed(TrimBlanks(clean));
  if (trimmed.empty()) return {};
  std::string text;
  AppendEscaped(text, trimmed);
  return quoted ? "'" + text + "'" : text;
}

std::string FamilyStack(const richtext::Font& font) {
  if (richtext::SymbolFontOf(font.name) != richtext::SymbolFont::kNone) return {};
  const std::string name = FamilyName(font.name);
  return name.empty() ? GenericFamily(font) : name + "," + GenericFamily(font);
}

// Of the automatic colour, which is at 0, none.
std::optional<Rgb> At(const std::vector<std::optional<Rgb>>& colours, int position) {
  const auto index = static_cast<std::size_t>(position);
  return position > 0 && index < colours.size() ? colours[index] : std::nullopt;
}

const char* StyleOf(const Border& border) {
  if (richtext::HasSeveralLines(border.kind)) return "double";
  switch (border.kind) {
    case Border::Kind::kDotted:
      return "dotted";
    case Border::Kind::kDashed:
    case Border::Kind::kDashDot:
    case Border::Kind::kDashDotDot:
      return "dashed";
    default:
      return "solid";
  }
}

}  // namespace

const char* GenericFamily(const richtext::Font& font) {
  constexpr std::string_view kSerif[] = {"Times",    "Georgia", "Cambria",    "Garamond",
                                         "Palatino", "Century", "Constantia", "Book"};
  constexpr std::string_view kMonospace[] = {"Courier", "Consolas", "Lucida Console"};
  const auto begins = [&](std::string_view start) { return StartsWithNoCase(font.name, start); };
  if (font.family == "modern" || std::ranges::any_of(kMonospace, begins)) return "monospace";
  if (font.family == "roman" || std::ranges::any_of(kSerif, begins)) return "serif";
  return font.family == "script" ? "cursive" : "sans-serif";
}

Looks::Looks(const richtext::Document& document, bool font_faces) : font_faces_(font_faces) {
  for (const richtext::Font& font : document.fonts) families_.push_back(FamilyStack(font));
  for (const richtext::Colour& colour : document.colours) {
    inks_.push_back(colour.automatic ? std::nullopt : Ink(colour));
    papers_.push_back(colour.automatic ? std::nullopt : Paper(colour));
  }
}

TextLook Looks::Of(const richtext::CharFormat& format) const {
  TextLook look;
  if (font_faces_ && !Family(format.font).empty()) look.font = format.font;
  look.half_points = std::max(format.half_points, 1);
  look.colour = Ink(format.colour);
  look.background = Paper(format.highlight);
  // Text on a background of its own has its own colour too.
  if (look.background && !look.colour) look.colour = kBlack;
  look.bold = format.bold;
  look.italic = format.italic;
  look.strike = format.strike;
  look.all_caps = format.all_caps;
  look.small_caps = format.small_caps && !format.all_caps;
  look.underline = format.underline;
  look.script = format.script;
  look.raise_half_points = format.raise_half_points;
  return look;
}

std::optional<Rgb> Looks::Ink(int position) const { return At(inks_, position); }

std::optional<Rgb> Looks::Paper(int position) const { return At(papers_, position); }

std::optional<Rgb> Looks::Ink(const richtext::Colour& colour) {
  const Rgb rgb = RgbOf(colour);
  return IsNearlyBlack(rgb) ? std::nullopt : std::optional(rgb);
}

std::optional<Rgb> Looks::Paper(const richtext::Colour& colour) {
  const Rgb rgb = RgbOf(colour);
  return rgb == kWhite ? std::nullopt : std::optional(rgb);
}

const std::string& Looks::Family(int font) const {
  static const std::string kNone;
  return font < 0 || static_cast<std::size_t>(font) >= families_.size()
             ? kNone
             : families_[static_cast<std::size_t>(font)];
}

void AppendFontStyle(std::string& css, const Looks& looks, const Inherited& around, int font,
                     int half_points) {
  if (font != TextLook::kNoFont && font != around.font)
    css.append("font-family:").append(looks.Family(font)).append(";");
  if (half_points != around.half_points) {
    AppendPoints(css.append("font-size:"), half_points * 10);
    css += ';';
  }
}

void AppendBackgroundStyle(std::string& css, std::optional<Rgb> background,
                           std::optional<Rgb> colour) {
  if (background) css.append("background-color:").append(ColourText(*background)).append(";");
  if (colour) css.append("color:").append(ColourText(*colour)).append(";");
}

void AppendBorderStyle(std::string& css, const Looks& looks, const Borders& borders) {
  const std::array<const Border*, 4> sides{&borders.top, &borders.right, &borders.bottom,
                                           &borders.left};
  const auto* first = *std::ranges::find_if(sides, [](const Border* b) { return b->present; });
  const auto four = [&](const char* name, auto&& value) {
    std::array<std::string, 4> values;
    std::ranges::transform(sides, values.begin(), [&](const Border* b) { return value(*b); });
    const bool equal = std::ranges::count(values, values[0]) == 4;
    css.append(name).append(values[0]);
    for (std::size_t i = 1; !equal && i < values.size(); ++i) css.append(" ").append(values[i]);
    css += ';';
  };
  const auto width = [](const Border& b) {
    if (!b.present) return "0";
    // Two lines and the space between them.
    if (richtext::HasSeveralLines(b.kind)) return "3px";
    const bool thick = b.kind == Border::Kind::kThick || b.width >= kThickBorder;
    return thick ? "2px" : "1px";
  };
  // A border without a colour has the text's, in dark mode too.
  css.append("border:").append(StyleOf(*first));
  const auto colour = looks.Ink(first->colour);
  if (colour) css.append(" ").append(ColourText(*colour));
  css += ';';
  four("border-width:", width);
  const bool one_kind = std::ranges::all_of(
      sides, [&](const Border* b) { return !b->present || b->kind == first->kind; });
  if (!one_kind) four("border-style:", [](const Border& b) { return StyleOf(b); });
  const bool one_colour = std::ranges::all_of(
      sides, [&](const Border* b) { return !b->present || looks.Ink(b->colour) == colour; });
  if (one_colour) return;
  four("border-color:", [&](const Border& b) {
    return ColourText((b.present ? looks.Ink(b.colour) : colour).value_or(kBlack));
  });
}

std::string ColourText(Rgb colour) {
  std::string text = "#";
  for (int shift = 20; shift >= 0; shift -= 4) text += "0123456789ABCDEF"[colour >> shift & 0xF];
  return text;
}

long long TenthsOfPoint(double twips) { return std::llround(twips / kTwipsPerPoint * 10); }

void AppendPoints(std::string& css, double twips) {
  const long long tenths = TenthsOfPoint(twips);
  if (tenths == 0) {
    css += '0';
    return;
  }
  if (tenths < 0) css += '-';
  std::array<char, 24> digits{};
  const auto written = std::to_chars(digits.begin(), digits.end(), std::abs(tenths) / 10);
  css.append(digits.begin(), written.ptr);
  if (tenths % 10 != 0)
    css.append(1, '.').append(1, static_cast<char>('0' + std::abs(tenths) % 10));
  css += "pt";
}

std::string Points(double twips) {
  std::string text;
  AppendPoints(text, twips);
  return text;
}

int Pixels(double twips) {
  return static_cast<int>(std::clamp(std::round(twips / kTwipsPerPixel), 1.0, 30'000.0));
}

}  // namespace tenora::html
