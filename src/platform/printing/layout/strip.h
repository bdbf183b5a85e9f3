// Strips as wide as the text area, with which a page is filled from the top: a line of text is one,
// a row of a table another. Lengths are twips.
#pragma once

#include <QPainter>
#include <QPointF>
#include <deque>
#include <memory>
#include <vector>

#include "platform/printing/layout/floating.h"

namespace tenora::printing {

// Something that floats, in its place: the left top corner.
struct PlacedFloating {
  const Floating* floating = nullptr;
  QPointF corner;
};

// Positions in the document; `end` is behind the last.
struct TextRange {
  int begin = 0, end = 0;
};

class Strip {
 public:
  virtual ~Strip() = default;
  // Draws with the strip's left top corner at this point; the space before it is not part of it.
  virtual void Draw(QPainter& painter, QPointF corner) const = 0;
  // Whether it is the first or the last strip of its column, for what goes on in another one.
  virtual void SetEnds(bool /*begins_column*/, bool /*ends_column*/) {}
  // Cuts off the part that fits into this height, never an empty one; null when the strip cannot be
  // divided there.
  virtual std::shared_ptr<Strip> TakeTop(double /*available_height*/) { return nullptr; }

  // Adds what floats in the strip when it is at `corner`.
  virtual void CollectFloating(QPointF corner, std::vector<PlacedFloating>* found) const {
    for (const Floating& one : floating) found->push_back({&one, one.Corner(corner)});
  }
  // Adds the positions of the strip's text.
  virtual void CollectRanges(std::vector<TextRange>* found) const {
    found->push_back({begin, end});
  }
  // The strip goes so much lower, and what floats in it stays where it is.
  void MoveBelowFloating(double distance) {
    for (Floating& one : floating) {
      if (!one.y_on_paper) one.y -= distance;
    }
  }

  bool BreaksBefore() const { return page_break_before || column_break_before; }
  // For text that stands in a cell or a note.
  void ForgetBreaks() { page_break_before = column_break_before = false; }

  double height = 0;
  double ink_left = 0, ink_right = 0;  // between which it shows something
  double space_before = 0;             // left out at the top of a page
  double space_after = 0;              // left out at the bottom of a page
  int begin = 0, end = 0;              // positions in the document, the end not included
  bool page_break_before = false, column_break_before = false;
  std::vector<Floating> floating;
};

using Strips = std::deque<std::shared_ptr<Strip>>;

// The strips of a paragraph or of table rows that belong together.
struct BlockStrips {
  Strips strips;
  bool keep_together = false, keep_with_next = false;
  bool widow_control = false;  // of a paragraph
  // The table's header rows, drawn again at the top of every page the table goes on to.
  std::shared_ptr<const Strips> header;
};

}  // namespace tenora::printing
