// A paragraph as a sequence of items to place on lines: shaped text, tabs, pictures and breaks.
#pragma once

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "platform/printing/layout/layout_context.h"
#include "platform/printing/layout/text_line.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

struct TextItem {
  std::shared_ptr<ShapedText> text;
};
struct TabItem {
  const richtext::CharFormat* format = nullptr;
  int position = 0;
  std::optional<double> target;  // of the tab after a list mark
};
struct PictureItem {
  PlacedPicture picture;
  int position = 0;
  bool across = false;  // a rule, as high as the line of text that it makes
};
struct FloatItem {
  Floating floating;  // on a strip at the paragraph's top
};
struct BreakItem {
  enum class Kind { kLine, kColumn, kPage };
  const richtext::CharFormat* format = nullptr;
  int position = 0;
  Kind kind = Kind::kLine;
};
using ParagraphItem = std::variant<TextItem, TabItem, PictureItem, FloatItem, BreakItem>;

struct ItemPlace {
  int position = 0;            // of the paragraph's first character
  int number = 1;              // in its list
  double left = 0, right = 0;  // the indents, twips from the left edge of the text area
  double width = 0;            // of the text area
};

// A list's mark takes no position in the document; hidden text takes positions but no width.
std::vector<ParagraphItem> CollectItems(LayoutContext& context,
                                        const richtext::Paragraph& paragraph,
                                        const ItemPlace& place);

}  // namespace tenora::printing
