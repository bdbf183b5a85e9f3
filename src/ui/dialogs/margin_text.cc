#include "ui/dialogs/margin_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

double TwipsIn(MarginUnit unit) { return unit == MarginUnit::kInches ? 1440 : 567; }

}  // namespace

std::string MarginText(double twips, MarginUnit unit) {
  const double rounded = std::nearbyint(twips / TwipsIn(unit) * 100) / 100;
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.begin(), text.end(), rounded, std::chars_format::fixed);
  return {text.data(), end.ptr};
}

double TwipsOfText(std::string_view text, MarginUnit unit) {
  // The parser requires a digit before the ".".
  const std::string digits = "0" + std::string(text);
  double number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed);
  return std::min(number * TwipsIn(unit), static_cast<double>(INT32_MAX));
}

int WholeTwips(double twips) {
  return static_cast<int>(std::nearbyint(std::clamp<double>(twips, INT32_MIN, INT32_MAX)));
}

bool IsMarginText(std::string_view text) {
  return std::ranges::count(text, '.') <= 1 &&
         std::ranges::all_of(text, [](char c) { return IsDigit(c) || c == '.'; });
}

}  // namespace tenora
