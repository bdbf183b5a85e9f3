#include "output/html/tab_stops.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "output/html/css_style.h"
#include "platform/runtime/text.h"

namespace tenora::html {
namespace {

using richtext::TabStop;

constexpr double kSlack = 20;  // twips; estimated widths are not exact
constexpr int kUsualTab = 720;
constexpr double kTwipsPerHalfPoint = 10;

// Widths of U+0020 to U+007E in thousandths of the font's size, of the usual faces of each kind.
using Widths = std::array<std::uint16_t, 95>;
constexpr Widths kSans = {
    278, 278, 355, 556, 556, 889, 667, 191, 333, 333, 389, 584, 278, 333,  278, 278, 556, 556, 556,
    556, 556, 556, 556, 556, 556, 556, 278, 278, 584, 584, 584, 556, 1015, 667, 667, 722, 722, 667,
    611, 778, 722, 278, 500, 667, 556, 833, 722, 778, 667, 778, 722, 667,  611, 722, 667, 944, 667,
    667, 611, 278, 278, 278, 469, 556, 333, 556, 556, 500, 556, 556, 278,  556, 556, 222, 222, 500,
    222, 833, 556, 556, 556, 556, 333, 500, 278, 556, 500, 722, 500, 500,  500, 334, 260, 334, 584};
constexpr Widths kSerif = {
    250, 333, 408, 500, 500, 833, 778, 180, 333, 333, 500, 564, 250, 333, 250, 278, 500, 500, 500,
    500, 500, 500, 500, 500, 500, 500, 278, 278, 564, 564, 564, 444, 921, 722, 667, 667, 722, 611,
    556, 722, 722, 333, 389, 722, 611, 889, 722, 722, 556, 722, 667, 556, 611, 722, 722, 944, 722,
    722, 611, 333, 278, 333, 469, 500, 333, 444, 500, 444, 500, 444, 333, 500, 500, 278, 278, 500,
    278, 778, 500, 500, 500, 500, 333, 389, 278, 500, 500, 722, 500, 500, 444, 480, 200, 480, 541};
constexpr int kMonospaceWidth = 600, kUsualWidth = 550, kIdeographWidth = 1000;
constexpr double kBoldFactor = 1.08;
// Common fonts that are narrower or wider than the rest of their kind.
constexpr std::pair<std::string_view, double> kFactors[] = {
    {"Calibri", 0.9}, {"Carlito", 0.9}, {"Arial Narrow", 0.82}, {"Verdana", 1.16}};

}  // namespace

TabTarget NextTab(const richtext::ParagraphFormat& format, int default_tab, double x) {
  const TabStop* next = nullptr;
  for (const TabStop& tab : format.tabs) {
    if (tab.kind == TabStop::Kind::kBar || tab.position <= x + kSlack) continue;
    if (next == nullptr || tab.position < next->position) next = &tab;
  }
  // A hanging indent is a tab stop of its own.
  if (format.first_indent < 0 && format.left_indent > x + kSlack &&
      (next == nullptr || format.left_indent < next->position)) {
    return {double(format.left_indent), TabStop::Kind::kLeft, {}};
  }
  if (next != nullptr) return {double(next->position), next->kind, next->leader};
  const double step = default_tab > 0 ? default_tab : kUsualTab;
  return {(std::floor((x + kSlack) / step) + 1) * step, TabStop::Kind::kLeft, {}};
}

char LeaderCharacter(std::string_view leader) {
  if (leader == "dot") return '.';
  if (leader == "hyph") return '-';
  if (leader == "ul" || leader == "th") return '_';
  return leader == "eq" ? '=' : '\0';
}

std::string_view AheadOfDecimalPoint(std::string_view text) {
  const std::size_t point = text.find_last_of(".,");
  if (point == std::string_view::npos) return text;
  std::size_t digits = 0;
  while (point + 1 + digits < text.size() && IsDigit(text[point + 1 + digits])) ++digits;
  // A comma ahead of three digits separates thousands.
  return digits == 3 && text[point] == ',' ? text : text.substr(0, point);
}

double TextWidth(std::string_view utf8, const richtext::CharFormat& format,
                 const richtext::Font& font) {
  const std::string_view generic = GenericFamily(font);
  const Widths& widths = generic == "serif" ? kSerif : kSans;
  double thousandths = 0;
  while (!utf8.empty()) {
    const char32_t c = TakeCodePoint(utf8);
    if (generic == "monospace") {
      thousandths += kMonospaceWidth;
    } else if (c >= 0x20 && c < 0x7F) {
      thousandths += widths[c - 0x20];
    } else {
      thousandths += c >= 0x2E80 ? kIdeographWidth : kUsualWidth;
    }
  }
  double factor = format.bold ? kBoldFactor : 1;
  for (const auto& [name, of_font] : kFactors) {
    if (StartsWithNoCase(font.name, name)) factor *= of_font;
  }
  return thousandths / 1000 * factor * format.half_points * kTwipsPerHalfPoint;
}

}  // namespace tenora::html
