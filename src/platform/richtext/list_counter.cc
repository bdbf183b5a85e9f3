#include "platform/richtext/list_counter.h"

namespace tenora::richtext {

int ListCounter::Next(const ParagraphFormat& format) {
  if (format.bullet.kind == Bullet::Kind::kNone) {
    EndAll();
    return 1;
  }
  lists_.erase(lists_.upper_bound(format.left_indent), lists_.end());
  const auto [list, is_new] = lists_.try_emplace(format.left_indent);
  NumberedList& numbered = list->second;
  if (is_new || numbered.bullet != format.bullet) {
    numbered = {format.bullet, format.bullet.start};
  } else {
    ++numbered.number;
  }
  return numbered.number;
}

}  // namespace tenora::richtext
