// The pages of one document: laid out once each, as they are drawn, so that printing takes time
// proportional to the document's length and memory for one page.
#pragma once

#include <QPainter>
#include <deque>
#include <memory>
#include <vector>

#include "platform/printing/layout/block_layout.h"
#include "platform/printing/layout/headers_footers.h"
#include "platform/printing/layout/layout_context.h"
#include "platform/printing/layout/page_columns.h"
#include "platform/printing/layout/paragraph_layout.h"
#include "platform/printing/paper_size.h"
#include "platform/richtext/document.h"
#include "platform/richtext/document_sections.h"

namespace tenora::printing {

class PageLayout {
 public:
  // The document and the resources must outlive this.
  PageLayout(const richtext::Document& document, const PageFrame& frame,
             SharedResources& resources);

  // Draws a page with what fits from the position on, the paper's corner at the painter's origin;
  // returns the position of the first character that did not fit. `to` -1 is the document's end.
  int DrawPage(QPainter& painter, int from, int to);

  bool IsFor(const richtext::Document& document, const PageFrame& frame) const {
    return &document == &context_.document && frame == frame_;
  }
  // Of the page that follows.
  const richtext::PageSetup& NextPageSetup() const;

 private:
  struct Pending {
    BlockStrips block;
    std::size_t section = 0;
    bool started = false;
  };
  // Where a page is among the others.
  struct PageCount {
    int page = 0;             // 1 the first
    std::size_t section = 0;  // in which it begins
    int in_section = 0;       // 1 the section's first
    int number = 0;           // that it shows
  };
  enum class Outcome { kPlaced, kColumnFull, kPageFull };

  // What the other lays out, from the beginning.
  struct Anew {};
  PageLayout(const PageLayout& other, Anew);

  // Lays all out until the page numbers in the text are those of the pages they are on.
  void FindBodyNumbers();
  void Restart();
  void StartAt(int position);
  void SkipTo(int position);
  void CountPages();
  void EnterSection(std::size_t section);
  PageArea AreaOf(const richtext::DocumentSection& section) const;
  // How far the text of the page stands to the right of the area.
  double Shift(const PageArea& area) const;
  LayoutContext ContextOf(std::size_t section) const;
  HeadersAndFooters& HeadsOf(std::size_t section);

  // Fills the next page; without a painter nothing is drawn.
  void FillPage(QPainter* painter, int to);
  PageCount NextPage();
  void BeginPage();
  bool NextColumn();
  // Goes on with the section of the next block on this page; false where it begins another.
  bool NextSection();
  void Draw(QPainter& painter);
  void DrawBorders(QPainter& painter);

  bool Load(std::size_t count);  // false when fewer blocks remain
  bool WantsNextColumn(double available_height);
  // Whether the next line would be alone in a column, or leave one line to the next.
  bool LeavesLineAlone() const;
  bool LoadEndnote();
  void PlaceRepeatedHeader();
  // The footnotes whose marks are in the strip.
  Strips NotesIn(const Strip& strip);
  // Puts as much of the waiting footnotes at the column's foot as fits into the room.
  void FillFoot(double room);
  void BeginColumn();
  // Places the next strip, or a part of it.
  Outcome PlaceNext();
  void DropStrip();

  PageFrame frame_;
  SharedResources& resources_;
  LayoutContext context_;  // of the section that is laid out
  std::vector<richtext::DocumentSection> sections_;
  int length_;

  std::unique_ptr<BlockLayout> blocks_;
  std::size_t load_section_ = 0;
  std::deque<Pending> pending_;
  std::size_t endnotes_loaded_ = 0;
  Strips waiting_notes_;      // footnotes that had no room on their page yet
  bool break_ahead_ = false;  // the author ended the last page
  int next_ = 0;

  PageCount page_, page_before_;
  std::unique_ptr<HeadersAndFooters> heads_;
  std::size_t heads_section_ = 0;
  std::size_t section_ = 0;  // that is placed
  std::unique_ptr<PageColumns> columns_;
  PageTotals totals_;
};

}  // namespace tenora::printing
