#include "platform/richtext/padding_words.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tenora::richtext {
namespace {

constexpr std::string_view kRowSides = "tlbr";
// Word processors write a cell's top and left the wrong way round, and all read it so.
constexpr std::string_view kCellSides = "ltbr";
constexpr int kTwips = 3;
constexpr int kMostPadding = 1440;

}  // namespace

void PaddingWords::Take(const Token& word) {
  std::string_view name = word.text;
  const bool of_row = name.starts_with("trpadd");
  if (!of_row && !name.starts_with("clpad")) return;
  name.remove_prefix(of_row ? 6 : 5);
  const bool unit = name.starts_with('f');
  if (unit) name.remove_prefix(1);
  const std::size_t side = (of_row ? kRowSides : kCellSides).find(name);
  if (name.size() != 1 || side == std::string_view::npos) return;
  Side& changed = (of_row ? row_ : cell_)[side];
  (unit ? changed.unit : changed.length) = word.param;
}

Padding PaddingWords::EndCell() {
  const Sides own = std::exchange(cell_, {});
  const auto length = [&](std::size_t side) {
    const Side& set = own[side].unit == kTwips ? own[side] : row_[side];
    return set.unit == kTwips ? std::clamp(set.length, 0, kMostPadding) : -1;
  };
  return {length(0), length(1), length(2), length(3)};
}

}  // namespace tenora::richtext
