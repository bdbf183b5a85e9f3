// Pictures on their way into a letter, from a file, the clipboard or another program: one way for
// all, so that the same picture has the same size on paper however it arrives.
#pragma once

#include <QImage>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/richtext/document.h"

namespace tenora::printing {

// The bytes of a picture file in a form that rich text holds: PNG, JPEG and metafiles as they are,
// every other kind (bitmaps, icons, cursors) as PNG. The size on paper follows the picture's own
// resolution, 96 dots to the inch where it gives none, and is at most that of a page's text; more
// than 4000 pixels a side are scaled down. Nothing for bytes that are no picture.
std::optional<richtext::Picture> ImportPicture(std::string file);

// As ImportPicture, of a file up to 64 MB. Raises 481 (Invalid picture) for a file that is none, 75
// for a larger one, and the errors of reading files.
richtext::Picture ImportPictureFile(const std::filesystem::path& path);

// A decoded picture, as PNG; nothing for an empty one.
std::optional<richtext::Picture> ImportImage(const QImage& image);

}  // namespace tenora::printing
