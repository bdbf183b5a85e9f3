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

// What a source says about its fonts, for text that is put into it.
struct HeadInfo {
  int code_page = 1252;
  bool one_code_page = true;  // of the document and of all its fonts, those for symbols aside
  std::size_t length = 0;     // of the source up to the end of the font table
};
HeadInfo ReadHead(std::string_view source);

}  // namespace tenora::richtext
