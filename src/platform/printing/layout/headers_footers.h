// The headers and footers of a document: which one a page has, where it is drawn, and the height it
// leaves for the text. Lengths are twips from the paper's top left corner.
#pragma once

#include <QPainter>
#include <array>
#include <optional>
#include <vector>

#include "platform/printing/layout/layout_context.h"
#include "platform/printing/layout/strip.h"
#include "platform/richtext/document.h"
#include "platform/richtext/page_heads.h"
#include "platform/richtext/page_number_fields.h"

namespace tenora::printing {

class HeadersAndFooters {
 public:
  // The context's document must outlive this.
  HeadersAndFooters(const LayoutContext& context, const PageArea& area);

  // What is left of the text area's height on a page, 1 the first.
  struct Body {
    double top = 0, bottom = 0;
    double height() const { return bottom - top; }
  };
  Body BodyOf(int page) const;
  // On the page with the least.
  double LeastBodyHeight() const;

  // Whether some page shows how many pages there are.
  bool ShowPageCount() const;
  void Draw(QPainter& painter, int page, int page_count);

 private:
  // One header or footer, laid out.
  struct Head {
    bool footer = false;
    const std::vector<richtext::Block>* blocks = nullptr;
    richtext::PageFields fields;
    std::vector<richtext::Block> filled;  // the blocks with page numbers filled in, if any
    Strips strips;
    double height = 0;
  };
  using Heads = std::array<std::optional<Head>, richtext::kPageSides>;

  Heads LayOutAll(bool footers);
  void LayOut(Head* head, const richtext::PageNumbers& numbers);
  int NumberOf(int page) const { return which_.first_number + page - 1; }
  richtext::PageSide SideOf(int page) const { return which_.SideOf(page); }
  Body BodyWith(richtext::PageSide side) const;
  void Draw(QPainter& painter, const Head& head) const;

  LayoutContext context_;
  PageArea area_;
  richtext::PageHeads which_;
  double header_top_, footer_bottom_;  // to the paper's edges
  Heads headers_, footers_;
};

}  // namespace tenora::printing
