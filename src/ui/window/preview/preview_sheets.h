// The pages of a print preview; only the visible ones are drawn.
#pragma once

#include <QCache>
#include <QImage>
#include <QWidget>

#include "platform/printing/preview_pages.h"

namespace tenora {

class PreviewSheets : public QWidget {
  Q_OBJECT

 public:
  // The pages must outlive the widget.
  explicit PreviewSheets(printing::PreviewPages& pages, QWidget* parent = nullptr);

  double zoom() const { return zoom_; }
  void SetZoom(double zoom);
  // The rectangle of a page in the widget.
  QRect SheetAt(int page) const;
  int PageAt(int y) const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  double PixelsPerTwip() const;
  QSize SheetSize() const;

  printing::PreviewPages& pages_;
  QCache<int, QImage> drawn_;
  double zoom_ = 1;
};

}  // namespace tenora
