// The records of an EMF file that draw bitmaps.
#pragma once

#include "platform/printing/image/emf_record.h"
#include "platform/printing/image/metafile_canvas.h"

namespace tenora::printing {

// False for a record of another kind.
bool PlayEmfBitmap(const EmfRecord& record, MetafileCanvas& canvas);

// The bitmap whose header's offset, header's size, pixels' offset and pixels' size stand in the
// record at `field`. Null where there is none.
QImage EmfBitmap(const EmfRecord& record, std::size_t field, MetafileCanvas& canvas,
                 bool alpha = false);

}  // namespace tenora::printing
