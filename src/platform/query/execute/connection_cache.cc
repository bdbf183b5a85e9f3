#include "platform/query/execute/connection_cache.h"

namespace tenora::query {

std::shared_ptr<SqliteConnection> ConnectionCache::Get(const std::filesystem::path& path) {
  const access::FileState state = access::ReadFileState(path);
  // Programs rarely open more than one database; an evicted one is only read again.
  constexpr std::size_t kMostConnections = 4;
  const std::string key = path.string();
  if (entries_.size() >= kMostConnections && !entries_.contains(key)) entries_.clear();
  Entry& entry = entries_[key];
  TableSources kept;
  if (entry.connection != nullptr && entry.settled && entry.state == state) {
    if (entry.changed.empty()) return entry.connection;
    kept = entry.connection->tables().TablesExcept(entry.changed);
  }
  entry.connection = nullptr;
  TableCache tables(path, state, ReadLocking::kLock, kept);
  const Collation& collation = Collation::Of(tables.File().sort_order());
  auto connection = std::make_shared<SqliteConnection>(std::move(tables), collation, settings_);
  entry = {.connection = connection,
           .state = state,
           .settled = access::IsSettled(state) || state == entry.committed,
           .changed = {},
           .committed = entry.committed};
  return connection;
}

void ConnectionCache::Follow(const std::filesystem::path& path, const access::CommitStates& states,
                             const std::set<std::string>& changed) {
  Entry& entry = entries_[path.string()];
  const bool known = states.before != access::FileState() && states.after != access::FileState();
  if (!known || !entry.settled || entry.state != states.before) entry.connection = nullptr;
  entry.state = states.after;
  entry.committed = states.after;
  entry.changed.insert(changed.begin(), changed.end());
}

std::shared_ptr<SqliteConnection> ConnectionCache::ForTransaction(
    const std::filesystem::path& path) const {
  TableCache tables(path, access::ReadFileState(path), ReadLocking::kNone);
  const auto entry = entries_.find(path.string());
  const bool known = entry != entries_.end() && entry->second.connection != nullptr;
  const Collation& collation =
      known ? entry->second.connection->collation() : Collation::Of(tables.File().sort_order());
  return std::make_shared<SqliteConnection>(std::move(tables), collation, settings_);
}

}  // namespace tenora::query
