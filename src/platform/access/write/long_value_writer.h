// Stores the content of memo and OLE columns and frees it. Short content stays in the row, longer
// has a row of its own on a page of long values, the longest a chain of them; long_value.h has the
// bytes.
#pragma once

#include <vector>

#include "platform/access/format/table_definition.h"
#include "platform/access/write/data_page_editor.h"
#include "platform/access/write/usage_map_editor.h"

namespace tenora::access {

class LongValueWriter {
 public:
  explicit LongValueWriter(ChangedPages& pages) : pages_(pages), maps_(pages) {}

  // How many bytes the row will keep of a content that long.
  static std::size_t SizeInRow(std::size_t length);
  // What the row keeps.
  std::vector<std::byte> Store(const LongValueMaps& maps, Bytes content);
  // Frees the content of the value whose bytes in a row are `field`.
  void Free(const LongValueMaps& maps, Bytes field);

 private:
  RowPointer AddRow(const LongValueMaps& maps, Bytes row);

  ChangedPages& pages_;
  UsageMapEditor maps_;
};

}  // namespace tenora::access
