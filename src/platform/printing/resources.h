// What a printer looks up once for all its documents: letters from one template share their fonts
// and their letterhead. Used by one thread at a time.
#pragma once

#include "platform/printing/fonts.h"
#include "platform/printing/pictures.h"

namespace tenora::printing {

struct Resources {
  InstalledFamilies families;
  Pictures pictures;
};

}  // namespace tenora::printing
