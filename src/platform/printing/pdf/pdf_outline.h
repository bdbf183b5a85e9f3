// Bookmarks for a finished PDF.
#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <vector>

namespace tenora::printing {

struct PdfBookmark {
  std::string title;     // UTF-8
  std::size_t page = 0;  // 0 the first
  double top = 0;        // the page's height, in points
};

// What is to stand behind a PDF, as QPdfWriter lays it out, to give it these bookmarks, at least
// one, which a viewer then shows at once. Only the table of pages is held in memory, however large
// the file. Raises 482 (Printer error) for another layout and for a page that is not there.
std::string PdfOutline(std::istream& pdf, const std::vector<PdfBookmark>& bookmarks);

}  // namespace tenora::printing
