// Plain text files.
#pragma once

#include <string>
#include <string_view>

namespace tenora::richtext {

// The text of a file in UTF-8: UTF-8 or UTF-16 by its byte order mark, otherwise UTF-8 if that is
// valid, else Windows-1252.
std::string DecodeTextFile(std::string_view bytes);

}  // namespace tenora::richtext
