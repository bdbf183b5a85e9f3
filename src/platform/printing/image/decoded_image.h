// Bitmaps from bytes that nobody vouches for.
#pragma once

#include <QImage>
#include <string>
#include <string_view>

namespace tenora::printing {

// A picture file's image, "PNG", "JPEG" or "BMP"; one finer than paper shows (20 million pixels) is
// scaled down, and one beyond 400 million is refused. Null for what cannot be read.
QImage DecodedImage(std::string_view bytes, const char* format);

// Whether the bytes start with the header of a device-independent bitmap, without that of a BMP
// file.
bool IsDib(std::string_view bytes);
// A BMP file made from a device-independent bitmap; empty when its header is invalid.
std::string BmpFromDib(std::string_view dib);

// A device-independent bitmap as a metafile holds it: header and colours, and the pixels, which in
// a WMF file follow the colours at once.
struct DibParts {
  std::string_view head;
  std::string_view pixels;
};

// The parts of a bitmap in one piece; empty ones when the header is invalid.
DibParts PartsOf(std::string_view dib);
// Its pixels in all, by its header; 0 for an invalid one.
double PixelCount(const DibParts& dib);
// Null for what cannot be read. With `alpha`, a fourth byte a pixel is its opacity, and the colours
// are multiplied by it already.
QImage ImageOf(const DibParts& dib, bool alpha = false);

}  // namespace tenora::printing
