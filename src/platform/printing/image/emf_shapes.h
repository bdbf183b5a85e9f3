// The records of an EMF file that draw lines and areas, or add to a path.
#pragma once

#include "platform/printing/image/emf_record.h"
#include "platform/printing/image/metafile_canvas.h"

namespace tenora::printing {

// False for a record of another kind.
bool PlayEmfShape(const EmfRecord& record, MetafileCanvas& canvas);

}  // namespace tenora::printing
