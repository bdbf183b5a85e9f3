// Pictures of documents, decoded once each, and how they are drawn.
#pragma once

#include <QImage>
#include <QPainter>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/printing/image/drawing.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

// A picture in its size on paper, twips.
struct PlacedPicture {
  double width = 0, height = 0;
  QImage image;
  std::shared_ptr<const Drawing> drawing;  // instead of the image, for a metafile
  richtext::Picture::Crop crop;
  std::string caption;  // the kind of picture, for one that could not be read
  bool lossless = true;

  // Whether there is something to draw; else a frame with the caption is drawn.
  bool readable() const { return !image.isNull() || drawing != nullptr; }
};

class Pictures {
 public:
  Pictures() = default;
  Pictures(const Pictures&) = delete;
  Pictures& operator=(const Pictures&) = delete;

  // The picture in its own size on paper, made smaller where it exceeds the given twips.
  PlacedPicture Place(const richtext::Picture& picture, double most_width, double most_height);

 private:
  struct Content {
    QImage image;
    std::shared_ptr<const Drawing> drawing;
  };

  static Content Decode(const richtext::Picture& picture);
  const Content& Decoded(const richtext::Picture& picture);

  // Keyed by content, since each letter of a batch has its own copy of the letterhead.
  std::map<std::pair<richtext::Picture::Kind, std::string>, Content> decoded_;
  std::size_t decoded_bytes_ = 0;
};

// How much of a picture is drawn: all that can be seen in it, a metafile without some of its
// orders, or a frame in its place.
enum class Drawable { kWhole, kInPart, kNot };
Drawable DrawableIn(const richtext::Picture& picture);

// A metafile as a PNG file in that many dots to the inch of its size on paper, transparent where
// nothing is drawn; nothing for a picture that is drawn as a frame, or is none. Needs a Qt
// application (qt_application.h).
std::optional<std::string> MetafileAsPng(const richtext::Picture& picture, int dots_per_inch);

void DrawPicture(QPainter& painter, const QRectF& area, const PlacedPicture& picture);

// The picture in that many pixels, transparent where nothing is drawn.
QImage Rendered(const PlacedPicture& picture, QSize pixels);

}  // namespace tenora::printing
