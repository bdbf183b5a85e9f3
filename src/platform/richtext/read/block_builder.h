// Puts paragraphs, cells and rows together into the blocks of a text: tables are not written as
// such in RTF, they are runs of rows.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/read/row_definition.h"

namespace tenora::richtext {

class BlockBuilder {
 public:
  // Makes room for so many blocks outside tables.
  void Reserve(std::size_t blocks) { blocks_.reserve(blocks); }
  // Adds an empty paragraph. `level` is 0 outside tables, 1 in a table, 2 in a table in a cell, …
  Paragraph& AddParagraph(int level);
  // Ends the cell that the last paragraph was added to.
  void EndCell();
  void EndRow(int level, const RowDefinition& definition);
  // True when the cell being filled at this level, or the text outside tables, holds nothing yet.
  bool Empty(int level) const;
  // Ends what tables are open. The paragraph outside tables that was added last; null after a
  // table, and when there is none.
  Paragraph* LastParagraph();
  // Ends what is open and gives the blocks; a table at the end is followed by a paragraph
  // with this mark.
  std::vector<Block> Finish(const CharFormat& mark);

 private:
  struct OpenRow {
    std::vector<Cell> cells;
    std::vector<Block> blocks;  // of the cell being filled
  };

  // Makes `level` rows open: inner rows that never saw their end are ended without a definition.
  void MoveTo(int level);
  std::vector<Block>& Container(std::size_t level);
  static void EndCell(OpenRow* row);

  std::vector<Block> blocks_;
  std::vector<OpenRow> open_;
};

}  // namespace tenora::richtext
