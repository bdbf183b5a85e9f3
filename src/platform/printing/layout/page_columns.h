// A page while it is filled: strips placed in the columns of one section after the other. A page
// without columns has one. Lengths are twips.
#pragma once

#include <QPainter>
#include <QPointF>
#include <cstddef>
#include <memory>
#include <vector>

#include "platform/printing/layout/layout_context.h"
#include "platform/printing/layout/strip.h"
#include "platform/printing/layout/taken_areas.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

// The columns of a section. Unequal ones get lines of the narrowest's length.
struct ColumnSetup {
  std::vector<double> left;  // of each, from the left of the text area; at least one
  double width = 0;
  bool line_between = false;
};
ColumnSetup ColumnsOf(const richtext::PageSetup& page, double text_width);

// Where the text of a page stands that does not fill it.
enum class VerticalPlace { kTop, kCentre, kBottom, kJustified };
VerticalPlace VerticalPlaceOf(const richtext::PageSetup& page);

class PageColumns {
 public:
  // Between these heights from the paper's top.
  PageColumns(double top, double bottom)
      : page_top_(top),
        page_bottom_(bottom),
        top_(top),
        bottom_(bottom),
        foot_bottom_(bottom),
        y_(top),
        lowest_(top) {}

  // Goes on with the columns of another section, below what is there.
  void Begin(ColumnSetup setup, double left);
  // All is placed. `full`: the text goes on on the next page of itself.
  void MoveDown(VerticalPlace place, bool full);
  // Nothing more is placed in these columns.
  void EndColumns();
  // Makes the columns of the section that ends here equally long.
  void Balance();
  // False where the current column is the last.
  bool NextColumn();
  // The author goes on in the next column: these columns stay as long as they are.
  void Break() { broken_ = true; }
  bool single() const { return setup_.left.size() < 2; }
  bool LastColumn() const { return column_ + 1 >= setup_.left.size(); }

  // Keeps the space above the first strip of the page, if it then fits.
  void LeaveSpaceAbove(const Strip& strip);
  // The strip's place below the last one and below what floats there. What floats in the strip
  // itself takes its room.
  double FindTop(Strip* strip);
  // Whether something in the strip would run off the column's end that the next one has room for.
  bool FloatsOffEnd(const Strip& strip) const;
  // The strip is not placed there after all.
  void GiveBack(Strip* strip, double top);
  // `begins`: it is the first of a paragraph or of a table's row.
  void Place(std::shared_ptr<Strip> strip, double top, bool begins);
  // A row of a table's header, at the top of a column that counts as empty nevertheless.
  void PlaceRepeated(std::shared_ptr<Strip> strip);
  // Below what is at the column's foot, all of which moves up: a line of a note.
  void PlaceAtFoot(std::shared_ptr<Strip> strip);
  // Scaled to what is left, where it is alone.
  void PlaceSmaller(std::shared_ptr<Strip> strip, double top);

  bool page_empty() const { return page_empty_; }
  bool column_empty() const { return empty_; }
  bool foot_empty() const { return !foot_open_; }
  // Whether the column reaches from the page's top to its bottom.
  bool column_is_whole() const { return top_ <= page_top_; }
  double Left() const { return bottom_ - y_; }  // below the last strip, its space after included
  double bottom() const { return bottom_; }
  double ColumnHeight() const { return bottom_ - top_; }
  double width() const { return setup_.width; }
  double space_after() const { return space_after_; }

  // Of all that is on the page.
  std::vector<TextRange> Ranges() const;
  void Draw(QPainter& painter) const;

 private:
  struct Placed {
    std::shared_ptr<Strip> strip;
    QPointF corner;
    double scale = 1;
    bool begins = false;  // a paragraph or a row
  };
  struct Line {
    double x, top, bottom;
  };
  // What is at the foot of a column.
  struct Foot {
    double left = 0, bottom = 0, height = 0;
    Strips strips;
  };

  // Whether something keeps its place on the paper for which text made room.
  bool TextMadeRoom() const;
  double Top(const Strip& strip) const;
  QPointF Corner(double y) const;
  // Tells the strips which of them begin and end columns.
  void SetEnds() const;
  // How many columns the strips take when none is longer; places them if wanted.
  std::size_t Distribute(double height, bool place);

  double page_top_, page_bottom_;
  double top_, bottom_;  // of the columns; the bottom is above what is at the column's foot
  double foot_bottom_;   // of that
  double y_, lowest_;
  bool page_empty_ = true;
  ColumnSetup setup_;
  double left_ = 0;
  std::size_t column_ = 0;
  bool empty_ = true;
  bool broken_ = false;     // by the author
  double space_after_ = 0;  // of the last strip placed
  std::size_t first_ = 0;   // of placed_ in these columns
  std::vector<Placed> placed_;
  std::vector<Line> lines_;
  std::vector<Foot> feet_;
  bool foot_open_ = false;  // the last is the current column's
  TakenAreas taken_{QPointF()};
  TakenAreas taken_before_{QPointF()};  // before a strip in which something floats took its room
};

}  // namespace tenora::printing
