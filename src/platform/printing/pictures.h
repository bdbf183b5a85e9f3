// Pictures of documents, decoded once each, and how they are drawn.
#pragma once

#include <QImage>
#include <QPainter>
#include <map>
#include <string>
#include <utility>

#include "platform/richtext/document.h"

namespace tenora::printing {

// A picture in its size on paper, twips.
struct PlacedPicture {
  double width = 0, height = 0;
  QImage image;         // null: a frame with the caption is drawn
  std::string caption;  // the kind of picture that could not be read
  bool lossless = true;
};

class Pictures {
 public:
  Pictures() = default;
  Pictures(const Pictures&) = delete;
  Pictures& operator=(const Pictures&) = delete;

  // The picture in its own size on paper, made smaller where it exceeds the given twips.
  PlacedPicture Place(const richtext::Picture& picture, double most_width, double most_height);

 private:
  QImage Decoded(const richtext::Picture& picture);

  // Keyed by content, since each letter of a batch has its own copy of the letterhead.
  std::map<std::pair<richtext::Picture::Kind, std::string>, QImage> decoded_;
  std::size_t decoded_bytes_ = 0;
};

// Whether the picture itself is drawn, not a frame in its place.
bool CanDraw(const richtext::Picture& picture);

void DrawPicture(QPainter& painter, const QRectF& area, const PlacedPicture& picture);

}  // namespace tenora::printing
