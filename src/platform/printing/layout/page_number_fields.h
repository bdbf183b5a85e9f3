// The numbers of pages in headers and footers: written anew for every page.
#pragma once

#include <vector>

#include "platform/richtext/document.h"

namespace tenora::printing {

struct PageNumbers {
  int page = 1;   // as shown
  int pages = 1;  // of the document
};

// What the blocks ask for that differs from page to page, or that only the last page tells.
struct PageFields {
  bool number = false, count = false;
};

PageFields PageFieldsIn(const std::vector<richtext::Block>& blocks);

// The blocks with the numbers in place of their fields (PAGE, NUMPAGES, SECTIONPAGES) and
// characters (\chpgn).
std::vector<richtext::Block> WithPageNumbers(std::vector<richtext::Block> blocks,
                                             const PageNumbers& numbers);

}  // namespace tenora::printing
