// The headers and footers of a document: which one a page has, where it is drawn, and the height it
// leaves for the text. Lengths are twips from the paper's top left corner.
#pragma once

#include <QPainter>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/printing/layout/layout_context.h"
#include "platform/printing/layout/page_number_fields.h"
#include "platform/printing/layout/strip.h"
#include "platform/richtext/document.h"

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
    PageFields fields;
    std::vector<richtext::Block> filled;  // the blocks with page numbers filled in, if any
    Strips strips;
    double height = 0;
  };
  enum Which { kCommon, kFirst, kEven, kWhichCount };
  using Heads = std::array<std::optional<Head>, kWhichCount>;

  void Load(std::string_view side, Which which);
  void LayOut(Head* head, const PageNumbers& numbers);
  int NumberOf(int page) const { return first_number_ + page - 1; }
  Which WhichOf(int page) const;
  Body BodyWith(Which which) const;
  void Draw(QPainter& painter, const Head& head) const;

  LayoutContext context_;
  PageArea area_;
  bool first_differs_, even_differs_;
  int first_number_;
  double header_top_, footer_bottom_;  // to the paper's edges
  Heads headers_, footers_;
};

}  // namespace tenora::printing
