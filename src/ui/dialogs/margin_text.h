// Converts page margins between twips and the text in a margin box.
#pragma once

#include <string>
#include <string_view>

namespace tenora {

enum class MarginUnit { kCentimetres, kInches };

// Rounded to two decimal places: 567 twips are "1", 1417.5 are "2.5" in centimetres.
std::string MarginText(double twips, MarginUnit unit);
// Twips of the text typed in a box; 0 without a digit, limited to 32 bits.
double TwipsOfText(std::string_view text, MarginUnit unit);
// The integer to store, halves rounded to even.
int WholeTwips(double twips);
// Whether a box accepts this text: digits and at most one ".".
bool IsMarginText(std::string_view text);

}  // namespace tenora
