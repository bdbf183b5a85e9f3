// What the tables of one transaction share.
#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/access/catalogue.h"
#include "platform/access/changed_pages.h"
#include "platform/access/column_properties.h"
#include "platform/access/relationships.h"

namespace tenora::access {

class WriteContext {
 public:
  explicit WriteContext(std::shared_ptr<ChangedPages> changed)
      : pages_(std::move(changed)), codec_(pages_->header()), catalogue_(ReadCatalogue(pages_)) {}

  ChangedPages& pages() { return *pages_; }
  const TextCodec& codec() const { return codec_; }
  // Null when there is no such table. Raises as DatabaseFile::FindTable.
  std::shared_ptr<const TableData> Load(std::string_view name) const;
  bool IsSystemTable(std::string_view name) const;
  // Raises 3049 where they are damaged.
  TableProperties Properties(const TableData& table) const;
  const std::vector<Relationship>& relationships();

  // Set while pages are changed for one statement: if that fails half way, the transaction holds
  // something between and must never be committed.
  bool spoiled = false;

 private:
  const CatalogueEntry* Find(std::string_view name) const;

  std::shared_ptr<ChangedPages> pages_;
  TextCodec codec_;
  std::vector<CatalogueEntry> catalogue_;
  std::optional<std::vector<Relationship>> relationships_;
};

}  // namespace tenora::access
