// Pictures on their way into a letter.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/richtext/document.h"

namespace tenora::printing {

// A picture file in a form that rich text holds: PNG, JPEG and metafiles as they are, every other
// kind (bitmaps, icons, cursors) as PNG. What has more than 4000 pixels a side is made smaller, and
// so is on paper what is larger than a page's text. Raises 481 (Invalid picture) for a file that is
// none, 75 for one that is larger than 64 MB, and the errors of reading files.
richtext::Picture ReadPictureFile(const std::filesystem::path& path);

// A sheet of paper with a file's name under it, as it stands in a letter for an embedded file.
richtext::Picture FileLabel(std::string_view name);

// The RTF group of a picture.
std::string PictureGroup(const richtext::Picture& picture);

}  // namespace tenora::printing
