// The size on paper that a picture itself asks for.
#pragma once

#include <optional>

#include "platform/richtext/document.h"

namespace tenora::richtext {

struct PictureSize {
  int width = 0, height = 0;  // twips
};

// From the pixels and the resolution in the picture's bytes, at 96 dots to the inch where they name
// none. Nothing for metafiles, whose \picw and \pich are lengths, and for what is no picture.
std::optional<PictureSize> SizeOf(const Picture& picture);

}  // namespace tenora::richtext
