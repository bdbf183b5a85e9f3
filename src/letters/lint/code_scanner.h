// Finds what is written, or was meant to be written, as a merge code in plain text.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace tenora {

struct ScannedCode {
  std::size_t begin = 0, end = 0;  // bytes of the text, with the brackets; to the line's end where
                                   // it is not closed
  bool closed = true;
  bool holds_code = false;  // contains another code, which a merge fills first
};

// The codes between "<<" and ">>", in the order of their beginnings. A code ends on its line; only
// a prompt may run on to a "?>>" that comes before the next "<<". Of "<<<" the last two count.
std::vector<ScannedCode> ScanCodes(std::string_view text);

// The same in other brackets: "«Tenant Name»", "‹‹Tenant Name››", "<Tenant Name>". The end is that
// of the closing bracket. Everything between such brackets is given, codes or not.
std::vector<ScannedCode> ScanLookalikes(std::string_view text);

}  // namespace tenora
