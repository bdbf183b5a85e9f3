// The base of all printers: they draw the same pages, laid out in twips, so that text breaks alike
// on all of them.
#pragma once

#include <QPainter>
#include <memory>
#include <string>
#include <utility>

#include "platform/printing/layout/page_layout.h"
#include "platform/printing/printing.h"

namespace tenora::printing {

class DrawingPrinter : public virtual Printer {
 public:
  const std::string& DeviceName() const override { return name_; }
  int Width() const override { return paper_.width; }
  int Height() const override { return paper_.height; }
  int PhysicalOffsetX() const override { return paper_.offset_x; }
  int PhysicalOffsetY() const override { return paper_.offset_y; }
  double TwipsPerPixelX() const override { return 1; }
  double TwipsPerPixelY() const override { return 1; }
  int Format(const FormatRange& range) override;

 protected:
  DrawingPrinter(std::string name, const Paper& paper) : name_(std::move(name)), paper_(paper) {}

  // Of the current page. Raises 482 when no job is open.
  virtual QPainter& Page() = 0;
  const Paper& paper() const { return paper_; }
  void SetPaper(const Paper& paper) { paper_ = paper; }
  void ResetLayout() { layout_.reset(); }
  // For the page that follows the one drawn last; before that `first`, the document's first.
  Paper NextPaper(const Paper& first) const {
    return layout_ ? PaperFor(layout_->NextPageSetup(), paper_, TakesAnyPaper()) : first;
  }

 private:
  std::string name_;
  Paper paper_;
  SharedResources resources_;
  std::unique_ptr<PageLayout> layout_;
};

}  // namespace tenora::printing
