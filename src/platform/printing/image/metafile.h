// Windows' own picture formats. A device-independent bitmap becomes a BMP file; a metafile is
// mostly a list of drawing orders with one bitmap in it, which is all that is drawn of it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/richtext/document.h"

namespace tenora::printing {

// Whether the bytes start with the header of a device-independent bitmap, without that of a BMP
// file.
bool IsDib(std::string_view bytes);
// A BMP file made from a device-independent bitmap; empty when its header is invalid.
std::string BmpFromDib(std::string_view dib);

// The largest bitmap among the drawing orders, as a BMP file; empty when there is none.
std::string BitmapOfWmf(std::string_view wmf);
std::string BitmapOfEmf(std::string_view emf);

// A metafile with its size on paper, twips. The bytes are as rich text holds them, without the
// header that gives a WMF file its size; they lie in the file's.
struct Metafile {
  richtext::Picture::Kind kind;
  double width, height;
  std::string_view bytes;
};

// Nothing for a file of another kind.
std::optional<Metafile> ReadMetafile(std::string_view file);

}  // namespace tenora::printing
