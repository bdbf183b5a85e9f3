// A row of a table on the page. Lengths are twips.
#pragma once

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <memory>
#include <vector>

#include "platform/printing/layout/rule.h"
#include "platform/printing/layout/strip.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

struct CellBox {
  using Direction = richtext::Cell::Direction;

  double x = 0, width = 0;
  double height = 0;  // more than the row's for a vertically merged cell
  // Between the cell's edges and its text; at the top the line above the row is included.
  double pad_top = 0, pad_left = 0, pad_bottom = 0, pad_right = 0;
  richtext::Cell::VerticalAlign align = richtext::Cell::VerticalAlign::kTop;
  Direction direction = Direction::kAcross;
  double line_length = 0;  // that text up or down the page would like to have
  QColor shading;          // invalid for none
  Rule top, bottom, left, right;
  bool covered = false;  // by the cell above
  Strips strips;

  // The height that holds all the text, for text up or down the page in lines of that length.
  double ContentHeight() const;
};

// A line along the bottom of a cell in the row above.
struct LineAbove {
  double x = 0, width = 0;
  Rule rule;
};

class RowStrip : public Strip {
 public:
  void Draw(QPainter& painter, QPointF corner) const override;
  void CollectFloating(QPointF corner, std::vector<PlacedFloating>* found) const override;
  void CollectRanges(std::vector<TextRange>* found) const override;
  std::shared_ptr<Strip> TakeTop(double available_height) override;

  std::vector<CellBox> cells;
  std::vector<LineAbove> lines_above;
  double line_below = 0;  // thickness of the line that ends the table, part of the row's height
  bool fixed_height = false;
  bool whole = false;  // divided only if higher than a page
  double page_height = 0;

 private:
  void DrawContent(QPainter& painter, const QRectF& area, const CellBox& cell) const;
};

}  // namespace tenora::printing
