// The pages of one document: laid out once each, as they are drawn, so that printing takes time
// proportional to the document's length and memory for one page.
#pragma once

#include <QPainter>
#include <deque>
#include <memory>

#include "platform/printing/layout/block_layout.h"
#include "platform/printing/layout/headers_footers.h"
#include "platform/printing/layout/layout_context.h"
#include "platform/printing/layout/paragraph_layout.h"
#include "platform/printing/layout/placed_strips.h"
#include "platform/printing/layout/taken_areas.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

class PageLayout {
 public:
  // The document and the resources must outlive this.
  PageLayout(const richtext::Document& document, const PageArea& area, SharedResources& resources);

  // Draws a page with what fits from the position on, the paper's corner at the painter's origin;
  // returns the position of the first character that did not fit. `to` -1 is the document's end.
  int DrawPage(QPainter& painter, int from, int to);

  bool IsFor(const richtext::Document& document, const PageArea& area) const {
    return &document == &context_.document && area == area_;
  }

 private:
  struct Pending {
    BlockStrips block;
    bool started = false;
  };

  void Restart();
  void StartAt(int position);
  void SkipTo(int position);
  int CountPages();
  // Fills the next page; without a painter nothing is drawn.
  void FillPage(QPainter* painter, int to);
  bool Load(std::size_t count);  // false when fewer blocks remain
  bool WantsNextPage(double available_height);
  double DrawRepeatedHeader(QPainter* painter);
  // Draws the next strip at y, or a part of it; false when the page is full.
  bool DrawNext(QPainter* painter, double& y, bool& page_empty);
  void DropStrip();

  PageArea area_;
  SharedResources& resources_;
  LayoutContext context_;
  HeadersAndFooters headers_and_footers_;
  int length_;
  std::unique_ptr<BlockLayout> blocks_;
  std::deque<Pending> pending_;
  double space_after_ = 0;  // of the last strip drawn
  int next_ = 0;
  int page_ = 0;                 // the page last begun, 1 the first
  QPointF corner_;               // of its text
  double height_ = 0;            // for its text
  int page_count_ = 0;           // 0 until counted
  TakenAreas taken_{QPointF()};  // of the page
  PlacedStrips placed_;
};

}  // namespace tenora::printing
