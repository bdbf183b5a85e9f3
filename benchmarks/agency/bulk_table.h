// Appends rows to a table by the page, and builds its indexes anew at the end: some hundred times
// as fast as inserting them one by one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/access/format/index_page.h"
#include "platform/access/read/table_data.h"
#include "platform/access/write/data_page_editor.h"
#include "platform/access/write/usage_map_editor.h"

namespace tenora {

class BulkTable {
 public:
  explicit BulkTable(std::string name) : name_(std::move(name)) {}

  // To be called first with the pages of each transaction, and at its end.
  void Begin(const std::shared_ptr<access::ChangedPages>& pages);
  void End();

  // In the order of the table's columns. An AutoNumber column gets its next value instead.
  void Add(const std::vector<Value>& values);
  // In a transaction of its own.
  void BuildIndexes();

 private:
  void NewPage();
  void BuildIndex(const access::PhysicalIndex& index, std::vector<access::IndexEntry>& entries);
  void FreePages(const access::PhysicalIndex& index);
  std::vector<access::IndexEntry> BuildLevel(const access::PhysicalIndex& index,
                                             const std::vector<access::IndexEntry>& entries,
                                             bool leaf);

  std::string name_;
  std::shared_ptr<access::ChangedPages> pages_;
  std::shared_ptr<const access::TableData> table_;
  std::unique_ptr<access::TextCodec> codec_;
  std::unique_ptr<access::DataPageEditor> page_;
  std::vector<std::vector<access::IndexEntry>> keys_;  // of the rows added, by index
  std::uint32_t rows_ = 0;
};

}  // namespace tenora
