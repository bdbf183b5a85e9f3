// A painter that draws nothing, for pages that are laid out but neither shown nor printed.
#pragma once

#include <QImage>
#include <QPainter>

namespace tenora::printing {

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

}  // namespace tenora::printing
