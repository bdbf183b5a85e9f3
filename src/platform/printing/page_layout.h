// The pages of one document: set as they are drawn, once each, so that printing takes time in
// proportion to the length and memory for a page.
#pragma once

#include <QPainter>
#include <deque>
#include <memory>

#include "platform/printing/flow.h"
#include "platform/printing/paragraph_layout.h"
#include "platform/printing/resources.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

class PageLayout {
 public:
  // Width and height of the text area, and the way from its left edge to the paper's right edge, in
  // twips. The document and the resources must outlive this.
  PageLayout(const richtext::Document& document, double width, double height, double reach,
             Resources& resources);

  // Draws what fits from the position on, with the text area's corner at this point, and gives the
  // position of the first character that did not fit. `to` -1 is the document's end.
  int DrawPage(QPainter& painter, QPointF corner, int from, int to);

  bool IsFor(const richtext::Document& document, double width, double height, double reach) const {
    return &document == &typesetting_.document && width == width_ && height == height_ &&
           reach == typesetting_.reach;
  }

 private:
  struct Pending {
    BlockStrips block;
    bool started = false;
  };

  void StartAt(int position);
  bool Load(std::size_t count);  // false when fewer blocks remain
  bool WantsNextPage(double room);
  double DrawRepeatedHeader(QPainter& painter, QPointF corner) const;
  // Draws the next strip at y, or a part of it; false when the page is full.
  bool DrawNext(QPainter& painter, QPointF corner, double& y, bool& page_empty);
  void DropStrip();

  Typesetting typesetting_;
  double width_, height_;
  int length_;
  std::unique_ptr<Flow> flow_;
  std::deque<Pending> pending_;
  double space_after_ = 0;  // of the last strip drawn
  int next_ = 0;
};

}  // namespace tenora::printing
