// The picture that stands in a letter for an embedded file.
#pragma once

#include <string_view>

#include "platform/richtext/document.h"

namespace tenora::printing {

// A sheet of paper with the file's name under it, shortened in the middle where it is long.
richtext::Picture FileLabel(std::string_view name);

}  // namespace tenora::printing
