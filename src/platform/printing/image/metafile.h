// Metafiles as documents hold them: mostly a list of drawing orders with one bitmap in it, which is
// all that is drawn here.
#pragma once

#include <string>
#include <string_view>

namespace tenora::printing {

// A BMP file made from a device-independent bitmap; empty when its header makes no sense.
std::string BmpFromDib(std::string_view dib);

// The largest bitmap among the drawing orders, as a BMP file; empty when there is none.
std::string BitmapOfWmf(std::string_view wmf);
std::string BitmapOfEmf(std::string_view emf);

}  // namespace tenora::printing
