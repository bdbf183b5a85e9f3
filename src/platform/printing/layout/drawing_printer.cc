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
  const Paper paper =
      Oriented(paper_, landscape ? Orientation::kLandscape : Orientation::kAsPrinterIsSet);
  const PageArea on_paper{double(paper.width),
                          double(paper.height),
                          double(area.left + paper.offset_x),
                          double(area.top + paper.offset_y),
                          double(area.right + paper.offset_x),
                          double(area.bottom + paper.offset_y)};
  if (!layout_ || !layout_->IsFor(*range.document, on_paper)) {
    layout_ = std::make_unique<PageLayout>(*range.document, on_paper, resources_);
  }
  return layout_->DrawPage(painter, range.range.from, range.range.to);
}

}  // namespace tenora::printing
