// The headers and footers of a section: which one a page has, where it is drawn, and the height it
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
  // The context is that of the section's pages. Its document must outlive this.
  HeadersAndFooters(const LayoutContext& context, const richtext::DocumentSection& section);

  // What is left of the text area's height.
  struct Body {
    double top = 0, bottom = 0;
    double height() const { return bottom - top; }
  };
  // On a page of the section, 1 the first, that shows this number.
  Body BodyOf(int page, int number) const;
  // On the page with the least.
  double LeastBodyHeight() const;

  // Whether some page shows how many pages there are.
  bool ShowPageCount() const;
  // On a page of the section, 1 the first; `shift` is to the right of the text area.
  void Draw(QPainter& painter, int page, richtext::PageNumbers numbers, double shift);

  // From the header's top, where the page has one, to the footer's end; else the body's.
  Body WithHeads(int page, int number, bool header, bool footer) const;

  // That the section's first page shows; nothing where the count goes on.
  std::optional<int> FirstNumber() const { return which_.first_number; }
  richtext::Bullet::Kind NumberStyle() const { return which_.number_style; }

 private:
  // One header or footer, laid out.
  struct Head {
    bool footer = false;
    bool shows = false;  // anything
    const std::vector<richtext::Block>* blocks = nullptr;
    richtext::PageFields fields;
    std::vector<richtext::Block> filled;  // the blocks with page numbers filled in, if any
    Strips strips;
    double height = 0;
  };
  using Heads = std::array<std::optional<Head>, richtext::kPageSides>;

  Heads LayOutAll(bool footers);
  void LayOut(Head* head, const richtext::PageNumbers& numbers);
  double MostOn(richtext::PageSide side) const;
  double EndOf(const Head& head) const;
  double TextEdge(const Head& head) const;
  Body BodyWith(richtext::PageSide side) const;
  void Draw(QPainter& painter, const Head& head, double most, double left) const;

  LayoutContext context_;
  PageArea area_;
  const richtext::PageSetup& page_;
  richtext::PageHeads which_;
  double header_top_, footer_bottom_;  // to the paper's edges
  Heads headers_, footers_;
};

}  // namespace tenora::printing
