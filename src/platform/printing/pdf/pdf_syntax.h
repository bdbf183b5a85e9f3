// The few pieces of PDF syntax that are read and written by hand: of files as QPdfWriter lays them
// out, one table of plain objects of generation 0.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tenora::printing {

// Of the table of objects: "0000000015 00000 n \n".
inline constexpr std::size_t kPdfEntrySize = 20;

// Raises 482 (Printer error).
[[noreturn]] void UnreadablePdf(const char* what);

// The number that the text begins with. Raises 482 for none.
std::size_t PdfNumberAt(std::string_view text);
// The number after the last such word. Raises 482 for none.
std::size_t PdfNumberBehind(std::string_view text, std::string_view word);

// A text string object of UTF-8.
std::string PdfText(std::string_view utf8);
// The table's entry for an object that starts there.
std::string PdfEntry(std::size_t start);

}  // namespace tenora::printing
