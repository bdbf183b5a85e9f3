// Pictures of documents, decoded once each.
#pragma once

#include <QImage>
#include <map>
#include <string>
#include <utility>

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
  QImage Decoded(const richtext::Picture& picture);

  // By content: each letter of a batch has its own copy of the letterhead.
  std::map<std::pair<richtext::Picture::Kind, std::string>, QImage> decoded_;
  std::size_t decoded_bytes_ = 0;
};

}  // namespace tenora::printing
