// Tabs in HTML and plain text, which have no tab stops: a tab becomes blanks up to about where its
// stop is. Lengths are twips from the left edge of the text area.
#pragma once

#include <string>
#include <string_view>

#include "platform/richtext/document.h"

namespace tenora::html {

struct TabTarget {
  double position = 0;
  richtext::TabStop::Kind kind = richtext::TabStop::Kind::kLeft;
  std::string leader;  // of TabStop
};

// The stop that a tab at `x` leads to.
TabTarget NextTab(const richtext::ParagraphFormat& format, int default_tab, double x);

// The character that fills the way to the stop; 0 for a stop without a leader.
char LeaderCharacter(std::string_view leader);

// The part of the text ahead of the decimal point at which a decimal stop aligns it; all of it
// where there is none.
std::string_view AheadOfDecimalPoint(std::string_view text);

// About how wide the text is; the font that it will be read in is not known.
double TextWidth(std::string_view utf8, const richtext::CharFormat& format,
                 const richtext::Font& font);

}  // namespace tenora::html
