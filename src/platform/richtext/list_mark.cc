#include "platform/richtext/list_mark.h"

#include <array>

#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr int kLargestRoman = 32767;

std::string Roman(int number) {
  struct Digit {
    int value;
    const char* text;
  };
  static constexpr std::array<Digit, 13> kDigits{{{1000, "m"},
                                                  {900, "cm"},
                                                  {500, "d"},
                                                  {400, "cd"},
                                                  {100, "c"},
                                                  {90, "xc"},
                                                  {50, "l"},
                                                  {40, "xl"},
                                                  {10, "x"},
                                                  {9, "ix"},
                                                  {5, "v"},
                                                  {4, "iv"},
                                                  {1, "i"}}};
  std::string text;
  for (const Digit& digit : kDigits) {
    for (; number >= digit.value; number -= digit.value) text += digit.text;
  }
  return text;
}

}  // namespace

std::string FormatNumber(Bullet::Kind kind, int number) {
  const bool upper = kind == Bullet::Kind::kUpperLetter || kind == Bullet::Kind::kUpperRoman;
  std::string text = std::to_string(number);
  const bool has_form = number >= 1 && number <= kLargestRoman;
  if (has_form && (kind == Bullet::Kind::kLowerRoman || kind == Bullet::Kind::kUpperRoman))
    text = Roman(number);
  if (has_form && (kind == Bullet::Kind::kLowerLetter || kind == Bullet::Kind::kUpperLetter))
    // Word processors write aa for 27 and bb for 28.
    text.assign(static_cast<std::size_t>((number - 1) / 26 % 16 + 1),
                static_cast<char>('a' + (number - 1) % 26));
  return upper ? ToUpper(text) : text;
}

std::string ListMark(const Bullet& bullet, int number) {
  if (bullet.kind == Bullet::Kind::kNone) return {};
  if (bullet.kind == Bullet::Kind::kBullet) return bullet.before.empty() ? "•" : bullet.before;
  return bullet.before + FormatNumber(bullet.kind, number) + bullet.after;
}

}  // namespace tenora::richtext
