// What RTF source says about its fonts ahead of the text.
#pragma once

#include <cstddef>
#include <string_view>

namespace tenora::richtext {

// For text that is put into the source.
struct SourceHead {
  int code_page = 1252;
  bool one_code_page = true;  // of the document and of all its fonts, those for symbols aside
  std::size_t length = 0;     // of the source up to the end of the font table
};
SourceHead ReadHead(std::string_view source);

}  // namespace tenora::richtext
