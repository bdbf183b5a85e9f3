// Splits a PDF of many documents into one file each. What the documents share, above all fonts, is
// then embedded once, which is most of the work of a one-page PDF.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tenora::printing {

class PdfSplitter {
 public:
  // A whole PDF as QPdfWriter lays it out: one table of plain objects of generation 0. Raises 482
  // (Printer error) for another layout.
  explicit PdfSplitter(std::string pdf);

  std::size_t Pages() const { return pages_.size(); }
  // A file of `count` pages from `first` on (0 the first page), under a title in UTF-8. Raises 482
  // when an object that the pages need is missing.
  std::string File(std::size_t first, std::size_t count, std::string_view title) const;

 private:
  std::string_view Object(std::size_t number) const;

  std::string pdf_;
  std::vector<std::size_t> starts_;  // of the objects by number; 0 for none
  std::vector<std::size_t> ends_;
  std::size_t info_ = 0, page_root_ = 0;
  std::vector<std::size_t> pages_;
};

}  // namespace tenora::printing
