// The records of a WMF file that draw bitmaps. Values are what follows a record's size and
// function.
#pragma once

#include <cstdint>

#include "platform/printing/image/metafile_canvas.h"
#include "platform/printing/image/record_bytes.h"

namespace tenora::printing {

// False for a record of another kind.
bool PlayWmfBitmap(std::uint16_t function, const RecordBytes& values, MetafileCanvas& canvas);

// A monochrome bitmap of the device, in the colours of the text and its ground; rows are whole
// words, from the top. Null for one with colours, which the drawing then lacks.
QImage WmfDeviceBitmap(const RecordBytes& bitmap, std::size_t bits_at, MetafileCanvas& canvas);

}  // namespace tenora::printing
