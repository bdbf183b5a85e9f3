// Page numbers and page counts, filled in for each page.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

struct PageNumbers {
  int page = 1;                                 // as shown
  int pages = 1;                                // of the document
  int section = 1;                              // the page's
  int section_pages = 1;                        // of the section
  Bullet::Kind style = Bullet::Kind::kDecimal;  // of page numbers whose field names none
};

// Which of the page number, which differs from page to page, and the page count, which is known at
// the end, the blocks show.
struct PageFields {
  bool number = false, count = false;
};

PageFields PageFieldsIn(const std::vector<Block>& blocks);

// What the run shows if it is such a field's result, or the first run of one, or such a character.
std::optional<std::string> PageNumberIn(const Run& run, const PageNumbers& numbers);
// Whether PageNumberIn gives a text.
bool HoldsPageNumber(const Run& run);

// The blocks with the numbers in place of their fields (PAGE, NUMPAGES, SECTION, SECTIONPAGES) and
// characters (\chpgn, \sectnum).
std::vector<Block> WithPageNumbers(std::vector<Block> blocks, const PageNumbers& numbers);

}  // namespace tenora::richtext
