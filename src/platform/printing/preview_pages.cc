#include "platform/printing/preview_pages.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/printing/layout/drawing_printer.h"
#include "platform/printing/no_paper.h"
#include "platform/printing/qt_application.h"

namespace tenora::printing {

class PreviewPages::Device : public DrawingPrinter {
 public:
  explicit Device(const Printer& like)
      : DrawingPrinter(like.DeviceName(), PaperOf(like, {})),
        takes_any_paper_(like.TakesAnyPaper()),
        qt_(HoldQtApplication()) {}

  bool TakesAnyPaper() const override { return takes_any_paper_; }
  void StartDocument(const std::string&, const richtext::PageSetup&) override { open_ = true; }
  void NewPage() override {}
  // Records where the page begins; Page renders it on request.
  int Format(const FormatRange& range) override {
    if (range.document == nullptr) return DrawingPrinter::Format(range);
    const Paper paper = NextPaper(this->paper());
    const bool first = range.range.from == 0;
    pages_.push_back({range, first ? QSize(range.page_rect.right, range.page_rect.bottom)
                                   : QSize(paper.width, paper.height)});
    NoPaper nowhere;
    return Draw(nowhere.painter(), range);
  }
  std::filesystem::path EndJob() override {
    open_ = false;
    return {};
  }
  void CancelJob() override { pages_.clear(); }
  bool JobOpen() const override { return open_; }

  int PageCount() const { return static_cast<int>(pages_.size()); }

  std::vector<int> PageStarts() const {
    std::vector<int> starts;
    for (const ShownPage& page : pages_) {
      if (page.range.range.from > 0) starts.push_back(page.range.range.from);
    }
    return starts;
  }

  QSizeF PageSize() const {
    if (pages_.empty()) return QSizeF(Width(), Height());
    return pages_.front().size;
  }

  QImage PageImage(int number, double pixels_per_twip, double device_ratio) {
    const ShownPage& page = pages_.at(static_cast<std::size_t>(number));
    const double scale = pixels_per_twip * device_ratio;
    const auto pixels = [&](int twips) {
      return std::max(1, static_cast<int>(std::lround(twips * scale)));
    };
    QImage image(pixels(page.size.width()), pixels(page.size.height()), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    painter.scale(scale, scale);
    Draw(painter, page.range);
    painter.end();
    image.setDevicePixelRatio(device_ratio);
    return image;
  }

 protected:
  QPainter& Page() override { return *painter_; }

 private:
  int Draw(QPainter& painter, const FormatRange& range) {
    painter_ = &painter;
    const int next = DrawingPrinter::Format(range);
    painter_ = nullptr;
    return next;
  }

  struct ShownPage {
    FormatRange range;
    QSize size;  // twips
  };

  bool takes_any_paper_;
  bool open_ = false;
  std::vector<ShownPage> pages_;
  std::shared_ptr<void> qt_;
  QPainter* painter_ = nullptr;  // while a page is drawn
};

PreviewPages::PreviewPages(const Printer& like) : device_(std::make_unique<Device>(like)) {}

PreviewPages::~PreviewPages() = default;

std::vector<int> PreviewPages::PageStarts() const { return device_->PageStarts(); }

int PreviewPages::PageCount() const { return device_->PageCount(); }

QSizeF PreviewPages::PageSize() const { return device_->PageSize(); }

QImage PreviewPages::Page(int number, double pixels_per_twip, double device_ratio) {
  return device_->PageImage(number, pixels_per_twip, device_ratio);
}

std::vector<std::string> PreviewPages::Names() const { return {device_->DeviceName()}; }

Printer& PreviewPages::Current() { return *device_; }

}  // namespace tenora::printing
