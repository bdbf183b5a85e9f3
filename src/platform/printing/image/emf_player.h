// Plays the records of an EMF file.
#pragma once

#include <memory>
#include <string_view>

#include "platform/printing/image/drawing.h"

namespace tenora::printing {

// An empty drawing for bytes that are no such file. Of a file with both kinds of records (EMF and
// EMF+) the EMF records are played.
std::shared_ptr<const Drawing> PlayEmf(std::string_view emf);

}  // namespace tenora::printing
