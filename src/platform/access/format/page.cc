#include "platform/access/format/page.h"

namespace tenora::access {

DataPage::DataPage(const Layout& layout, const PageBuffer& page)
    : page_(&page),
      offsets_(page.bytes.data() + layout.data_row_offsets),
      row_count_(Load16(page.bytes.data() + layout.data_row_count)),
      first_row_(layout.data_row_offsets + 2 * row_count_) {
  if (page.type() != PageType::kData) {
    throw Corruption(page.number, "expected a data page, found a page of type " +
                                      std::to_string(static_cast<int>(page.type())));
  }
  if (first_row_ > page.size) {
    throw Corruption(page.number, std::to_string(row_count_) + " rows do not fit on a page");
  }
}

Corruption DataPage::NoSuchRow(std::size_t row) const {
  return Corruption(page_->number, "row " + std::to_string(row) +
                                       " does not exist, the number of rows on the page is " +
                                       std::to_string(row_count_));
}

Corruption DataPage::Outside(std::size_t row) const {
  return Corruption(page_->number, "row " + std::to_string(row) + " lies outside the page");
}

}  // namespace tenora::access
