#include "platform/richtext/neighbours.h"

#include <algorithm>

#include "platform/richtext/page_heads.h"

namespace tenora::richtext {
namespace {

bool IsItem(const ParagraphFormat& format) { return format.bullet.kind != Bullet::Kind::kNone; }

}  // namespace

bool WithoutSpaceBetween(const ParagraphFormat& upper, const ParagraphFormat& lower) {
  if (upper.automatic_after && lower.automatic_before && IsItem(upper) && IsItem(lower))
    return true;
  return upper.contextual_style >= 0 && upper.contextual_style == lower.contextual_style;
}

bool HasHtmlSpacing(const Document& document) {
  return PageWord(document.page, "htmautsp").value_or(0) != 0;
}

int SpaceAbove(const ParagraphFormat& format, const ParagraphFormat* above, bool html_spacing) {
  if (above == nullptr) return format.space_before;
  if (WithoutSpaceBetween(*above, format)) return 0;
  return html_spacing ? std::max(0, format.space_before - above->space_after) : format.space_before;
}

int SpaceBelow(const ParagraphFormat& format, const ParagraphFormat* below) {
  return below != nullptr && WithoutSpaceBetween(format, *below) ? 0 : format.space_after;
}

bool SameFrame(const ParagraphFormat& one, const ParagraphFormat& other) {
  const auto left = [](const ParagraphFormat& format) {
    return format.left_indent + std::min(format.first_indent, 0);
  };
  const bool borders = one.top.present || one.bottom.present || one.left.present ||
                       one.right.present || one.between.present;
  return one.top == other.top && one.bottom == other.bottom && one.left == other.left &&
         one.right == other.right && one.between == other.between && one.frame == other.frame &&
         (borders || one.shading == other.shading) && left(one) == left(other) &&
         one.right_indent == other.right_indent;
}

}  // namespace tenora::richtext
