// Lays out the blocks of a document or of a table's cell one after another, on demand.
#pragma once

#include <QPointF>
#include <optional>
#include <vector>

#include "platform/printing/layout/paragraph_layout.h"
#include "platform/printing/layout/strip.h"
#include "platform/printing/layout/taken_areas.h"
#include "platform/richtext/document.h"
#include "platform/richtext/list_counter.h"

namespace tenora::printing {

class BlockLayout {
 public:
  // Empty paragraphs at a letter's end must not add a page; elsewhere they have height.
  enum class Ending { kVisible, kWhole };

  // `position` is that of the first block's first character; `depth` counts the tables around.
  // `origin` is the paper's point where the first block begins, and each after a page break.
  BlockLayout(LayoutContext& context, const std::vector<richtext::Block>& blocks, double width,
              int position, int depth, Ending ending, std::optional<QPointF> origin = std::nullopt);

  // A section begins, which has lines of this width; `origin` is where its first page begins, and
  // is not given where it goes on below the blocks before.
  void BeginSection(double width, std::optional<QPointF> origin);
  // The number of the block that comes next.
  std::size_t block() const { return block_; }

  // The next paragraph or table rows; none at the end, or where nothing that follows is visible.
  std::optional<BlockStrips> Next();

 private:
  const richtext::FramePlace* FrameOf(std::size_t block) const;
  std::optional<BlockStrips> NextFrame(const richtext::FramePlace& frame);
  std::size_t EndOfFrame(const richtext::FramePlace& frame) const;
  Strips TakeAll();
  BlockStrips NextParagraph(const richtext::Paragraph& paragraph);
  std::optional<BlockStrips> NextRows(const richtext::Table& table);
  bool EndsCellBehindTable(std::size_t block) const;
  void StartPage();
  void Pass(const Strips& strips);
  const richtext::ParagraphFormat* FormatOf(std::size_t block) const;
  double SpaceAbove(std::size_t block) const;
  double SpaceBelow(std::size_t block) const;
  bool FrameGoesOn(std::size_t block) const;

  LayoutContext& context_;
  const std::vector<richtext::Block>& blocks_;
  double width_;
  int position_;
  int depth_;
  std::size_t block_ = 0, row_ = 0, visible_blocks_ = 0;
  std::size_t in_text_until_ = 0;  // of blocks whose frame has no room on a page
  std::shared_ptr<Strips> header_;
  bool header_open_ = false;  // the table's rows so far are all header rows
  richtext::ListCounter numbers_;
  double y_ = 0;  // of the next block, where no page ends before it
  TakenAreas taken_;
  bool letter_;  // these are all the letter's own blocks
};

// All lines of blocks that stand inside something, a cell or a note: without page breaks of their
// own, and with the room that what is placed among them takes.
Strips LayOutInside(LayoutContext& context, const std::vector<richtext::Block>& blocks,
                    double width, int position, int depth);

}  // namespace tenora::printing
