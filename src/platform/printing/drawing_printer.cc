#include "platform/printing/drawing_printer.h"

#include "platform/runtime/error.h"

namespace tenora::printing {

int DrawingPrinter::Format(const FormatRange& range) {
  if (range.document == nullptr) {
    layout_.reset();
    return 0;
  }
  QPainter& painter = Page();
  const Rect& area = range.print_rect;
  const double width = area.right - area.left, height = area.bottom - area.top;
  if (width <= 0 || height <= 0) {
    throw StandardError(error_number::kPrinterError, "the margins leave no room on the page");
  }
  const double reach = paper_.width - paper_.offset_x - area.left;
  if (!layout_ || !layout_->IsFor(*range.document, width, height, reach)) {
    layout_ = std::make_unique<PageLayout>(*range.document, width, height, reach, resources_);
  }
  const QPointF corner(area.left + paper_.offset_x, area.top + paper_.offset_y);
  return layout_->DrawPage(painter, corner, range.range.from, range.range.to);
}

}  // namespace tenora::printing
