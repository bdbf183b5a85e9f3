// Stores and frees the content of memo and OLE columns. Short content stays in the row, longer
// content has a row on a page of long values, the longest a chain of such rows. long_value.h
// describes the bytes.
#pragma once

#include <vector>

#include "platform/access/format/table_definition.h"
#include "platform/access/write/data_page_editor.h"
#include "platform/access/write/usage_map_editor.h"

namespace tenora::access {

class LongValueWriter {
 public:
  explicit LongValueWriter(ChangedPages& pages) : pages_(pages), maps_(pages) {}

  // The number of bytes in the row for content of that length.
  static std::size_t SizeInRow(std::size_t length);
  // Stores the content and returns the bytes for the row.
  std::vector<std::byte> Store(const LongValueMaps& maps, Bytes content);
  // Frees the content of the long value whose bytes in a row are `field`.
  void Free(const LongValueMaps& maps, Bytes field);

 private:
  RowPointer AddRow(const LongValueMaps& maps, Bytes row);

  ChangedPages& pages_;
  UsageMapEditor maps_;
};

}  // namespace tenora::access
