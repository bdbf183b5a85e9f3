#include "platform/printing/preview_pages.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/printing/page_layout.h"
#include "platform/printing/qt_session.h"

namespace tenora::printing {
namespace {

// Where pages are set that nobody looks at yet.
class NoPaper {
 public:
  NoPaper() : image_(1, 1, QImage::Format_ARGB32_Premultiplied), painter_(&image_) {
    painter_.setClipRect(0, 0, 0, 0);
  }
  QPainter& painter() { return painter_; }

 private:
  QImage image_;
  QPainter painter_;
};

}  // namespace

class PreviewPages::Device : public Printer {
 public:
  explicit Device(const Printer& like)
      : name_(like.DeviceName()),
        width_(like.Width()),
        height_(like.Height()),
        offset_x_(std::lround(like.PhysicalOffsetX() * like.TwipsPerPixelX())),
        offset_y_(std::lround(like.PhysicalOffsetY() * like.TwipsPerPixelY())),
        qt_(HoldQtApplication()) {}

  const std::string& DeviceName() const override { return name_; }
  int Width() const override { return width_; }
  int Height() const override { return height_; }
  int PhysicalOffsetX() const override { return static_cast<int>(offset_x_); }
  int PhysicalOffsetY() const override { return static_cast<int>(offset_y_); }
  double TwipsPerPixelX() const override { return 1; }
  double TwipsPerPixelY() const override { return 1; }

  void StartDocument(const std::string&) override { open_ = true; }
  void NewPage() override {}
  int Format(const FormatRange& range) override {
    if (range.document == nullptr) {
      layout_.reset();
      return 0;
    }
    NoPaper nowhere;
    pages_.push_back(range);
    return Draw(nowhere.painter(), range);
  }
  std::filesystem::path EndJob() override {
    open_ = false;
    return {};
  }
  void CancelJob() override { pages_.clear(); }
  bool JobOpen() const override { return open_; }

  int PageCount() const { return static_cast<int>(pages_.size()); }

  QImage Page(int number, double pixels_per_twip, double device_ratio) {
    const double scale = pixels_per_twip * device_ratio;
    QImage image(std::max(1, static_cast<int>(std::lround(width_ * scale))),
                 std::max(1, static_cast<int>(std::lround(height_ * scale))), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    painter.scale(scale, scale);
    Draw(painter, pages_.at(static_cast<std::size_t>(number)));
    painter.end();
    image.setDevicePixelRatio(device_ratio);
    return image;
  }

 private:
  int Draw(QPainter& painter, const FormatRange& range) {
    const Rect& area = range.print_rect;
    const double width = area.right - area.left, height = area.bottom - area.top;
    const double reach = width_ - static_cast<double>(offset_x_) - area.left;
    if (!layout_ || !layout_->IsFor(*range.document, width, height, reach)) {
      layout_ = std::make_unique<PageLayout>(*range.document, width, height, reach);
    }
    const QPointF corner(static_cast<double>(area.left + offset_x_),
                         static_cast<double>(area.top + offset_y_));
    return layout_->DrawPage(painter, corner, range.range.from, range.range.to);
  }

  std::string name_;
  int width_, height_;
  long offset_x_, offset_y_;
  bool open_ = false;
  std::vector<FormatRange> pages_;
  std::shared_ptr<void> qt_;
  std::unique_ptr<PageLayout> layout_;
};

PreviewPages::PreviewPages(const Printer& like) : device_(std::make_unique<Device>(like)) {}

PreviewPages::~PreviewPages() = default;

int PreviewPages::PageCount() const { return device_->PageCount(); }

QSizeF PreviewPages::PageSize() const { return QSizeF(device_->Width(), device_->Height()); }

QImage PreviewPages::Page(int number, double pixels_per_twip, double device_ratio) {
  return device_->Page(number, pixels_per_twip, device_ratio);
}

std::vector<std::string> PreviewPages::Names() const { return {device_->DeviceName()}; }

Printer& PreviewPages::Current() { return *device_; }

}  // namespace tenora::printing
