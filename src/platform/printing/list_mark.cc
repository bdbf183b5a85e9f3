#include "platform/printing/list_mark.h"

#include <algorithm>
#include <utility>

#include "platform/runtime/text.h"

namespace tenora::printing {
namespace {

std::string Letters(int number, char first) {
  // a … z, then aa, bb …: as word processors count.
  const int letter = (number - 1) % 26, times = std::min((number - 1) / 26 + 1, 20);
  return std::string(static_cast<std::size_t>(times), static_cast<char>(first + letter));
}

std::string Roman(int number) {
  constexpr std::pair<int, const char*> kParts[] = {
      {1000, "M"}, {900, "CM"}, {500, "D"}, {400, "CD"}, {100, "C"}, {90, "XC"}, {50, "L"},
      {40, "XL"},  {10, "X"},   {9, "IX"},  {5, "V"},    {4, "IV"},  {1, "I"}};
  std::string text;
  for (const auto& [value, letters] : kParts) {
    for (; number >= value && text.size() < 40; number -= value) text += letters;
  }
  return text;
}

}  // namespace

std::string ListMark(const richtext::Bullet& bullet, int number) {
  using Kind = richtext::Bullet::Kind;
  if (number < 1) number = 1;
  std::string text;
  switch (bullet.kind) {
    case Kind::kNone:
      return {};
    case Kind::kBullet:
      return bullet.before.empty() ? "\u2022" : bullet.before;
    case Kind::kDecimal:
      text = std::to_string(number);
      break;
    case Kind::kLowerLetter:
      text = Letters(number, 'a');
      break;
    case Kind::kUpperLetter:
      text = Letters(number, 'A');
      break;
    case Kind::kLowerRoman:
      text = ToLower(Roman(number));
      break;
    case Kind::kUpperRoman:
      text = Roman(number);
      break;
  }
  return bullet.before + text + bullet.after;
}

}  // namespace tenora::printing
