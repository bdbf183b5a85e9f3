// The look of text as inline CSS, which is the only kind that every mail program keeps.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::html {

using Rgb = std::uint32_t;  // 0xRRGGBB

// What HTML says of a run of text. Runs that look alike have equal looks.
struct TextLook {
  int font = kNoFont;  // position in Document::fonts
  int half_points = 0;
  // None is the reader's own colour: black text on white, or light on dark.
  std::optional<Rgb> colour, background;
  bool bold = false, italic = false, strike = false, all_caps = false, small_caps = false;
  richtext::Underline underline = richtext::Underline::kNone;
  richtext::Script script = richtext::Script::kNormal;
  int raise_half_points = 0;

  // The font of the text around: the characters of symbol fonts are Unicode by now.
  static constexpr int kNoFont = -1;

  bool operator==(const TextLook&) const = default;
};

// What an element's text inherits from those around it.
struct Inherited {
  int font = TextLook::kNoFont;
  int half_points = 0;  // 0: the reader's own
  std::optional<Rgb> colour;
};

// The looks of one document.
class Looks {
 public:
  // Without `font_faces` no font is named.
  Looks(const richtext::Document& document, bool font_faces);

  TextLook Of(const richtext::CharFormat& format) const;
  // Ink that is black or nearly so and white paper are the reader's own colours, however the
  // document writes them.
  std::optional<Rgb> Ink(int position) const;
  std::optional<Rgb> Paper(int position) const;
  static std::optional<Rgb> Ink(const richtext::Colour& colour);
  static std::optional<Rgb> Paper(const richtext::Colour& colour);
  // "Arial,sans-serif", ready for an attribute in double quotes.
  const std::string& Family(int font) const;

 private:
  bool font_faces_;
  std::vector<std::string> families_;              // empty for symbol fonts
  std::vector<std::optional<Rgb>> inks_, papers_;  // of the document's colours
};

// The generic family that stands in for a font that the reader does not have.
const char* GenericFamily(const richtext::Font& font);

// Declarations, each ended by a semicolon.
void AppendFontStyle(std::string& css, const Looks& looks, const Inherited& around, int font,
                     int half_points);
// A background with the colour that text on it has, which keeps it readable in dark mode.
void AppendBackgroundStyle(std::string& css, std::optional<Rgb> background,
                           std::optional<Rgb> colour);
struct Borders {
  const richtext::Border &top, &right, &bottom, &left;
  bool Any() const { return top.present || right.present || bottom.present || left.present; }
};
// For borders of which there are any. No longhands of single sides: programs that lay out with a
// word processor lose them.
void AppendBorderStyle(std::string& css, const Looks& looks, const Borders& borders);

// "#RRGGBB"
std::string ColourText(Rgb colour);
// A length in tenths of a point, as CSS has it here.
long long TenthsOfPoint(double twips);
// A length in points, "10.5pt" or "0".
void AppendPoints(std::string& css, double twips);
std::string Points(double twips);
// A length in pixels of 96 to the inch, at least 1.
int Pixels(double twips);

}  // namespace tenora::html
