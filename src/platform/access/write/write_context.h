// The state that the tables of one transaction share: its pages, and the schema read so far.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/access/format/table_properties.h"
#include "platform/access/read/relationships.h"
#include "platform/access/read/system_catalogue.h"
#include "platform/access/storage/changed_pages.h"

namespace tenora::access {

class WriteContext {
 public:
  explicit WriteContext(std::shared_ptr<ChangedPages> changed)
      : pages_(std::move(changed)), codec_(pages_->header()), catalogue_(pages_) {}

  ChangedPages& pages() { return *pages_; }
  const TextCodec& codec() const { return codec_; }
  const SystemCatalogue& catalogue() const { return catalogue_; }

  // Null when there is no such table. A definition is read once in a transaction; its counts are of
  // that time. Raises as DatabaseFile::FindTable.
  std::shared_ptr<const TableData> Load(std::string_view name);

  bool IsSystemTable(std::string_view name) const;

  // Raises 3049 where they are corrupt.
  TableProperties Properties(const TableData& table) const;

  const std::vector<Relationship>& relationships();

  // Set while a change modifies pages: if that fails half way, the pages are inconsistent and the
  // transaction must never be committed.
  bool spoiled = false;

 private:
  std::shared_ptr<ChangedPages> pages_;
  TextCodec codec_;
  SystemCatalogue catalogue_;
  std::map<std::uint32_t, std::shared_ptr<const TableData>> loaded_;  // by page of the definition
  std::optional<std::vector<Relationship>> relationships_;
};

// Error 3073 for a table that cannot be written, or not in this way. `index` names the index that
// is the reason, where one is.
RuntimeError NotUpdatable(std::string_view table, std::string_view why,
                          std::string_view index = {});

}  // namespace tenora::access
