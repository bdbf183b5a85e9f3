#include "platform/query/execute/connection_cache.h"

namespace tenora::query {

FileConnection ConnectionCache::Get(const std::filesystem::path& path) {
  const access::FileState state = access::ReadFileState(path);
  // Programs rarely open more than one database; an evicted one is only read again.
  constexpr std::size_t kMostConnections = 4;
  const std::string key = path.string();
  if (entries_.size() >= kMostConnections && !entries_.contains(key)) entries_.clear();
  Entry& entry = entries_[key];
  TableSources kept;
  std::shared_ptr<LinkedFiles> links;
  if (entry.open.connection != nullptr && entry.settled && entry.state == state) {
    links = entry.open.tables->UnchangedLinks();
    if (entry.changed.empty() && links != nullptr) return entry.open;
    kept = entry.open.tables->TablesExcept(entry.changed);
  }
  entry.open = {};
  auto tables = std::make_shared<TableCache>(path, state, ReadLocking::kLock, kept, links);
  const Collation& collation = Collation::Of(tables->File().sort_order());
  auto connection = std::make_shared<SqliteConnection>(tables, collation, settings_);
  entry = {.open = {std::move(connection), std::move(tables)},
           .state = state,
           .settled = access::IsSettled(state) || state == entry.committed,
           .changed = {},
           .committed = entry.committed};
  return entry.open;
}

void ConnectionCache::Follow(const std::filesystem::path& path, const access::CommitStates& states,
                             const std::set<std::string>& changed) {
  Entry& entry = entries_[path.string()];
  const bool known = states.before != access::FileState() && states.after != access::FileState();
  if (!known || !entry.settled || entry.state != states.before) entry.open = {};
  entry.state = states.after;
  entry.committed = states.after;
  entry.changed.insert(changed.begin(), changed.end());
}

FileConnection ConnectionCache::ForTransaction(const std::filesystem::path& path) const {
  auto tables = std::make_shared<TableCache>(path, access::ReadFileState(path), ReadLocking::kNone);
  const auto entry = entries_.find(path.string());
  const bool known = entry != entries_.end() && entry->second.open.connection != nullptr;
  const Collation& collation = known ? entry->second.open.connection->collation()
                                     : Collation::Of(tables->File().sort_order());
  auto connection = std::make_shared<SqliteConnection>(tables, collation, settings_);
  return {std::move(connection), std::move(tables)};
}

}  // namespace tenora::query
