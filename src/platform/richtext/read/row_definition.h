// The definition of a table row while it is read: the words from \trowd to the last \cellx.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "platform/richtext/document.h"
#include "platform/richtext/read/colour_table.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

// The words that keep text off the edges of a row's cells, each a length with a unit:
// \clpadl57\clpadfl3. Only lengths in twips count.
class CellPadding {
 public:
  // Takes \trpadd… and \clpad…; passes over any other word.
  void Take(const Token& word);
  // The padding of the cell that ends here; the next one starts with the row's.
  Padding EndCell();

 private:
  struct Side {
    int length = 0, unit = 0;
  };
  using Sides = std::array<Side, 4>;  // top, left, bottom, right

  Sides row_, cell_;
};

// The words that make a table float: \tphpg\tposx1134\tpvpara\tposy720\tdfrmtxtLeft180.
class TablePosition {
 public:
  void Take(const Token& word);
  // Nothing for words that leave the table where it is.
  const std::optional<FramePlace>& place() const { return place_; }

 private:
  void SetHeight(ShapeBox::Align align, int y);

  FramePlace set_;
  bool y_from_named_ = false;
  std::optional<FramePlace> place_;
};

class RowDefinition {
 public:
  // A word that Take may take.
  static bool IsRowWord(std::string_view name);
  // Takes a word that defines rows or cells; false for any other word. Border words are taken after
  // a word that names an edge of a row or cell.
  bool Take(const Token& word, ColourTable& colours);
  // Any other word ends the words of an edge.
  void LeaveEdge() { in_border_ = false; }
  bool started() const { return !source_.empty(); }

  // Gives a row with its cells' content the geometry defined here. Cells without a definition get
  // one, defined cells without content are empty: both sides then agree.
  void Apply(Row* row) const;
  std::size_t size() const { return source_.size(); }

 private:
  void TakeRowWord(const Token& word);
  bool TakeCellWord(const Token& word, const ColourTable& colours);
  void EndCell(const Token& word, ColourTable& colours);

  std::string source_;   // up to the last \cellx
  std::string pending_;  // after it
  Row row_;              // cells without blocks
  Cell cell_;
  CellPadding padding_;
  TablePosition position_;
  bool in_border_ = false;
  Border Cell::*edge_ = nullptr;  // null for a row's border
  int pattern_colour_ = 0;        // of the cell's shading; 0 is black
  int pattern_share_ = 0;         // in hundredths of a percent; the rest has the cell's colour
};

}  // namespace tenora::richtext
