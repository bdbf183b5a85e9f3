#include "platform/richtext/neighbours.h"

namespace tenora::richtext {

bool WithoutSpaceBetween(const ParagraphFormat& one, const ParagraphFormat& other) {
  return one.contextual_style >= 0 && one.contextual_style == other.contextual_style;
}

bool SameFrame(const ParagraphFormat& one, const ParagraphFormat& other) {
  return one.top == other.top && one.bottom == other.bottom && one.left == other.left &&
         one.right == other.right && one.frame == other.frame && one.shading == other.shading &&
         one.left_indent == other.left_indent && one.right_indent == other.right_indent;
}

}  // namespace tenora::richtext
