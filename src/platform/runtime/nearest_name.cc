#include "platform/runtime/nearest_name.h"

#include <algorithm>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Longer texts are not misspelt names.
constexpr std::size_t kLongestName = 80;

std::string Letters(std::string_view name) {
  std::string letters = ToLower(name);
  std::erase_if(letters, [](char c) { return c == ' ' || c == '_' || c == '-'; });
  return letters;
}

}  // namespace

std::size_t EditDistance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> before(right.size() + 1), above(right.size() + 1), row(right.size() + 1);
  for (std::size_t j = 0; j <= right.size(); ++j) above[j] = j;
  for (std::size_t i = 1; i <= left.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t exchange = left[i - 1] == right[j - 1] ? 0 : 1;
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + exchange});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    std::swap(before, above);
    std::swap(above, row);
  }
  return above[right.size()];
}

std::string NearestName(std::string_view name, const std::vector<std::string_view>& names) {
  if (name.empty() || name.size() > kLongestName) return {};
  const std::string letters = Letters(name);
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(1, letters.size() / 3) + 1;
  for (const std::string_view candidate : names) {
    if (candidate.size() > kLongestName) continue;
    const std::size_t distance = EditDistance(letters, Letters(candidate));
    if (distance >= least) continue;
    least = distance;
    nearest = candidate;
  }
  return std::string(nearest);
}

}  // namespace tenora
