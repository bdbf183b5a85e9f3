#include "ui/editor/text/protected_text.h"

#include <QTextBlock>

#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

bool IsProtectedAt(const QTextBlock& block, int position) {
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    if (it.fragment().contains(position)) return IsProtected(it.fragment().charFormat());
  }
  return false;
}

}  // namespace

bool IsProtected(const QTextFormat& format) {
  const QVariant own = format.property(kCharProperty);
  return own.isValid() && own.value<richtext::CharFormat>().protect;
}

bool TouchesProtected(const QTextDocument& document, int start, int end) {
  const QTextBlock first = document.findBlock(start), last = document.findBlock(end);
  for (QTextBlock block = first; block.isValid() && block.position() < end; block = block.next()) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
      const QTextFragment fragment = it.fragment();
      if (fragment.position() < end && fragment.position() + fragment.length() > start &&
          IsProtected(fragment.charFormat()))
        return true;
    }
  }
  return start > first.position() && IsProtectedAt(first, start - 1) && IsProtectedAt(last, end);
}

}  // namespace tenora
