#include "platform/richtext/list_counter.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kDeepestList = 16;

}  // namespace

std::size_t ListCounter::Kept(const ParagraphFormat& format) const {
  std::size_t kept = open_.size();
  while (kept > 0 && open_[kept - 1].bullet != format.bullet &&
         open_[kept - 1].indent >= format.left_indent) {
    // Another list at the same indent takes this one's place.
    --kept;
  }
  return kept;
}

int ListCounter::Peek(const ParagraphFormat& format) const {
  if (format.bullet.kind == Bullet::Kind::kNone) return 0;
  const std::size_t kept = Kept(format);
  const bool counts_on = kept > 0 && open_[kept - 1].bullet == format.bullet;
  return counts_on ? open_[kept - 1].number + 1 : format.bullet.start;
}

int ListCounter::Next(const ParagraphFormat& format) {
  if (format.bullet.kind == Bullet::Kind::kNone) {
    EndAll();
    return 0;
  }
  const int number = Peek(format);
  open_.resize(Kept(format));
  if (open_.empty() || open_.back().bullet != format.bullet) {
    if (open_.size() == kDeepestList) open_.erase(open_.begin());
    open_.push_back({format.bullet, format.left_indent, number});
  }
  open_.back().indent = format.left_indent;
  open_.back().number = number;
  return number;
}

}  // namespace tenora::richtext
