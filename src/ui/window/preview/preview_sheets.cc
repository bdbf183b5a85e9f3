#include "ui/window/preview/preview_sheets.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

namespace tenora {
namespace {

constexpr int kGap = 18;       // pixels around each sheet
constexpr int kMostKept = 96;  // megabytes of cached page images
constexpr double kTwipsPerInch = 1440;

}  // namespace

PreviewSheets::PreviewSheets(printing::PreviewPages& pages, QWidget* parent)
    : QWidget(parent), pages_(pages), drawn_(kMostKept) {
  setAccessibleName(tr("Pages"));
  setBackgroundRole(QPalette::Mid);
  SetZoom(1);
}

double PreviewSheets::PixelsPerTwip() const { return zoom_ * logicalDpiX() / kTwipsPerInch; }

QSize PreviewSheets::SheetSize() const { return (pages_.PageSize() * PixelsPerTwip()).toSize(); }

void PreviewSheets::SetZoom(double zoom) {
  zoom_ = zoom;
  drawn_.clear();
  const QSize sheet = SheetSize();
  setMinimumSize(sheet.width() + 2 * kGap, pages_.PageCount() * (sheet.height() + kGap) + kGap);
  update();
}

QRect PreviewSheets::SheetAt(int page) const {
  const QSize sheet = SheetSize();
  return QRect(
      QPoint(std::max(kGap, (width() - sheet.width()) / 2), kGap + page * (sheet.height() + kGap)),
      sheet);
}

int PreviewSheets::PageAt(int y) const {
  return std::clamp((y - kGap / 2) / (SheetSize().height() + kGap), 0,
                    std::max(0, pages_.PageCount() - 1));
}

void PreviewSheets::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  for (int page = PageAt(event->rect().top()); page < pages_.PageCount(); ++page) {
    const QRect sheet = SheetAt(page);
    if (sheet.top() > event->rect().bottom()) break;
    if (!drawn_.contains(page)) {
      auto* image = new QImage(pages_.Page(page, PixelsPerTwip(), devicePixelRatioF()));
      const qsizetype megabytes = 1 + image->sizeInBytes() / (1 << 20);
      // A single page may exceed the cache.
      drawn_.insert(page, image, std::min<qsizetype>(megabytes, kMostKept));
    }
    painter.fillRect(sheet.translated(3, 3), QColor(0, 0, 0, 50));
    painter.drawImage(sheet.topLeft(), *drawn_.object(page));
    painter.setPen(QColor(0, 0, 0, 70));
    painter.drawRect(sheet.adjusted(-1, -1, 0, 0));
  }
}

}  // namespace tenora
