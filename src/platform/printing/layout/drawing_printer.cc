#include "platform/printing/layout/drawing_printer.h"

#include "platform/runtime/error.h"

namespace tenora::printing {

int DrawingPrinter::Format(const FormatRange& range) {
  if (range.document == nullptr) {
    layout_.reset();
    return 0;
  }
  QPainter& painter = Page();
  const Rect& area = range.print_rect;
  if (area.right <= area.left || area.bottom <= area.top) {
    throw StandardError(error_number::kPrinterError, "the margins leave no space on the page");
  }
  const bool landscape = range.page_rect.right > range.page_rect.bottom;
  richtext::PageSetup page = range.document->page;
  page.landscape = landscape;
  const Paper paper = PaperFor(page, paper_, TakesAnyPaper());
  const PageArea on_paper{double(paper.width),
                          double(paper.height),
                          double(area.left + paper.offset_x),
                          double(area.top + paper.offset_y),
                          double(area.right + paper.offset_x),
                          double(area.bottom + paper.offset_y)};
  const PageFrame frame{on_paper,
                        paper_,
                        TakesAnyPaper(),
                        !range.own_margins.left,
                        !range.own_margins.top,
                        !range.own_margins.right,
                        !range.own_margins.bottom};
  if (!layout_ || !layout_->IsFor(*range.document, frame)) {
    layout_ = std::make_unique<PageLayout>(*range.document, frame, resources_);
  }
  return layout_->DrawPage(painter, range.range.from, range.range.to);
}

}  // namespace tenora::printing
