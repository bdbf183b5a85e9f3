#include "platform/query/cache/table_cache.h"

#include <chrono>

#include "platform/access/database_writer.h"
#include "platform/access/engine_error.h"
#include "platform/runtime/error.h"

namespace tenora::query {
namespace {

// Far more than another program's transaction takes.
constexpr std::chrono::milliseconds kWaitForWriters{10000};

// Null if the file system does not support locks: the file is then read without one.
std::unique_ptr<access::ReadLock> LockForReading(const std::filesystem::path& path) {
  try {
    return access::ReadLock::Take(path, kWaitForWriters);
  } catch (const RuntimeError& error) {
    if (error.number() == access::engine_error::kCannotLock) return nullptr;
    throw;
  }
}

}  // namespace

TableCache::TableCache(std::filesystem::path path, const access::FileState& state,
                       ReadLocking locking, CachedTables tables)
    : path_(std::move(path)), state_(state), locking_(locking), tables_(std::move(tables)) {}

const std::shared_ptr<access::DatabaseFile>& TableCache::OpenFile() {
  if (file_ == nullptr) file_ = access::DatabaseFile::Open(path_);
  return file_;
}

void TableCache::Add(std::string_view name, std::shared_ptr<CachedTable> table) {
  tables_.insert_or_assign(ToLower(name), std::move(table));
}

std::shared_ptr<CachedTable> TableCache::Find(std::string_view name) {
  const std::string key = ToLower(name);
  if (const auto known = tables_.find(key); known != tables_.end()) return known->second;
  const std::unique_ptr<access::ReadLock> lock =
      locking_ == ReadLocking::kLock ? LockForReading(path_) : nullptr;
  // If another program has written since the file was opened, the table is read from the file as
  // it is now: the catalogue and usage maps of the open one are out of date.
  const std::shared_ptr<access::DatabaseFile> file =
      access::ReadFileState(path_) == state_ ? OpenFile() : access::DatabaseFile::Open(path_);
  const access::Table* const table = file->FindTable(name);
  if (table == nullptr) return nullptr;
  return tables_
      .emplace(key, std::make_shared<CachedTable>(table->name(), table->columns(),
                                                  table->row_count(), *table->Rows()))
      .first->second;
}

CachedTables TableCache::TablesExcept(const std::set<std::string>& names) const {
  CachedTables kept = tables_;
  std::erase_if(kept, [&](const auto& entry) { return names.contains(entry.second->name()); });
  return kept;
}

}  // namespace tenora::query
