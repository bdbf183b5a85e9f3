#include "platform/richtext/list_mark.h"

#include <algorithm>

#include "platform/richtext/write/list_number.h"

namespace tenora::richtext {

std::string ListMark(const Bullet& bullet, int number) {
  if (bullet.kind == Bullet::Kind::kNone) return {};
  if (bullet.kind == Bullet::Kind::kBullet) return bullet.before.empty() ? "\u2022" : bullet.before;
  return bullet.before + FormatNumber(bullet.kind, std::max(number, 1)) + bullet.after;
}

}  // namespace tenora::richtext
