// Plays the records of a WMF file.
#pragma once

#include <memory>
#include <string_view>

#include "platform/printing/image/drawing.h"

namespace tenora::printing {

// With or without the header that gives the file a size; without one it is three inches wide. An
// empty drawing for bytes that are no such file.
std::shared_ptr<const Drawing> PlayWmf(std::string_view wmf);

}  // namespace tenora::printing
