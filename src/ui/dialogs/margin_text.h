// Page margins between twips and what a margin box shows.
#pragma once

#include <string>
#include <string_view>

namespace tenora {

enum class MarginUnit { kCentimetres, kInches };

// Rounded to two decimal places: 567 twips are "1", 1417.5 are "2.5" in centimetres.
std::string MarginText(double twips, MarginUnit unit);
// What is typed in a box; a text without a digit is 0. No more than a 32-bit number of twips.
double TwipsOfText(std::string_view text, MarginUnit unit);
// The whole number that is stored, halves to even.
int WholeTwips(double twips);
// Whether a box may hold this: digits, and one "." at the most.
bool IsMarginText(std::string_view text);

}  // namespace tenora
