// A letter's picture as a file that any program can show.
#pragma once

#include <optional>
#include <string>

#include "platform/richtext/document.h"

namespace tenora::printing {

struct PictureFile {
  std::string content_type;  // "image/png", "image/jpeg"
  std::string extension;     // ".png", ".jpg"
  std::string bytes;
};

// PNG and JPEG pictures as they are unless they are cropped, bitmaps and metafiles as PNG; nothing
// for a picture that cannot be drawn. Raises what HoldQtApplication does.
std::optional<PictureFile> ShowableFile(const richtext::Picture& picture);

}  // namespace tenora::printing
