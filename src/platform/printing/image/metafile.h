// Windows' picture files of drawing orders: what they are, how large, and the drawing they give.
#pragma once

#include <QRectF>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/printing/image/drawing.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

// A metafile with its size on paper, twips. The bytes are as rich text holds them, without the
// header that gives a WMF file its size; they lie in the file's.
struct Metafile {
  richtext::Picture::Kind kind;
  double width, height;
  std::string_view bytes;
};

// Nothing for a file of another kind.
std::optional<Metafile> ReadMetafile(std::string_view file);

// Length of the header that gives a WMF file its size.
inline constexpr std::size_t kPlaceableHeader = 22;
// The rectangle in that header, in logical units; nothing for a file without one.
std::optional<QRectF> PlaceableBox(std::string_view file);

// The drawing of a WMF or EMF picture's bytes, empty for others.
std::shared_ptr<const Drawing> DrawingOf(richtext::Picture::Kind kind, std::string_view bytes);

}  // namespace tenora::printing
