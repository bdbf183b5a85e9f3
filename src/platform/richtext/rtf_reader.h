// Reads RTF. The reader is total: any bytes give a document. Groups nest, memory and time are
// bounded by the length of the source.
#pragma once

#include <string_view>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// True when the bytes begin as RTF does, blanks and a byte order mark aside.
bool IsRtf(std::string_view source);

// The document of an RTF source: runs joined, styles resolved, fonts and colours that nothing uses
// left out, those left numbered by their position.
Document ReadRtf(std::string_view source);

}  // namespace tenora::richtext
