#include "platform/query/cache/table_cache.h"

#include <utility>

#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

// A table is small when it is read here; a change meanwhile is rare.
constexpr int kTries = 50;

}  // namespace

TableCache::TableCache(const std::filesystem::path& path, const access::FileState& state,
                       ReadLocking locking, const TableSources& tables,
                       std::shared_ptr<LinkedFiles> linked)
    : reader_(std::make_shared<FileReader>(path, state, locking)),
      linked_(linked != nullptr ? std::move(linked) : std::make_shared<LinkedFiles>(path)) {
  for (const auto& [name, table] : tables) tables_.emplace(name, table->For(reader_));
}

void TableCache::Hold(const std::vector<access::Column>& columns,
                      const std::shared_ptr<CachedTable>& table) {
  std::shared_ptr<FileTable>& source = tables_[ToLower(table->name())];
  if (source == nullptr) {
    source = std::make_shared<FileTable>(columns, table);
  } else {
    source->Hold(table);
  }
}

bool TableCache::Holds(std::string_view name) const {
  const auto known = tables_.find(ToLower(name));
  return known != tables_.end() && known->second->rows() != nullptr;
}

std::shared_ptr<TableSource> TableCache::Find(std::string_view name) {
  const std::string key = ToLower(name);
  if (const auto known = tables_.find(key); known != tables_.end()) return known->second;
  std::optional<access::LinkedTable> link;
  auto source = reader_->Read(kTries, [&](const access::DatabaseFile& file) {
    const access::Table* const table = file.FindTable(name);
    if (table != nullptr) return std::make_shared<FileTable>(*table, reader_, table->name());
    link = file.FindLink(name);
    return std::shared_ptr<FileTable>();
  });
  if (source != nullptr) return tables_.emplace(key, std::move(source)).first->second;
  return link ? linked_->Open(*link) : nullptr;
}

void TableCache::EndStep() {
  reader_->EndStep();
  linked_->EndStep();
}

std::shared_ptr<LinkedFiles> TableCache::UnchangedLinks() const {
  return linked_->Unchanged() ? linked_ : nullptr;
}

std::shared_ptr<const access::SavedQuery> TableCache::FindQuery(std::string_view name) {
  const std::string key = ToLower(name);
  if (const auto known = queries_.find(key); known != queries_.end()) return known->second;
  std::optional<access::SavedQuery> query =
      reader_->Read(kTries, [&](const access::DatabaseFile& file) { return file.FindQuery(name); });
  if (!query) return nullptr;
  auto kept = std::make_shared<const access::SavedQuery>(*std::move(query));
  return queries_.emplace(key, std::move(kept)).first->second;
}

TableSources TableCache::TablesExcept(const std::set<std::string>& names) const {
  TableSources kept = tables_;
  std::erase_if(kept, [&](const auto& entry) { return names.contains(entry.second->name()); });
  return kept;
}

}  // namespace tenora::query
