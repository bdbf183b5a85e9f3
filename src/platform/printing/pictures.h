// The pictures of a document, decoded once each.
#pragma once

#include <QImage>
#include <map>

#include "platform/printing/text_line.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

class Pictures {
 public:
  Pictures() = default;
  Pictures(const Pictures&) = delete;
  Pictures& operator=(const Pictures&) = delete;

  // The picture in its own size on paper, made smaller where it exceeds the given twips.
  PlacedPicture Place(const richtext::Picture& picture, double most_width, double most_height);

 private:
  const QImage& Decoded(const richtext::Picture& picture);

  std::map<const richtext::Picture*, QImage> decoded_;
};

}  // namespace tenora::printing
