// The connections to the files opened so far, each kept while its file is unchanged. After a commit
// of our own, the tables that it did not change are kept too, provided that the commit found the
// file in the state they were read from.
#pragma once

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>

#include "platform/access/file_state.h"
#include "platform/query/cache/table_cache.h"
#include "platform/query/execute/sqlite_connection.h"

namespace tenora::query {

struct FileConnection {
  std::shared_ptr<SqliteConnection> connection;  // null for none
  std::shared_ptr<TableCache> tables;            // that it reads
};

class ConnectionCache {
 public:
  explicit ConnectionCache(ConnectionSettings settings) : settings_(std::move(settings)) {}

  // A connection to the file as it is now. Raises the errors of access::DatabaseFile::Open.
  FileConnection Get(const std::filesystem::path& path);

  // Records a commit of our own that changed these tables (named as the file spells them).
  void Follow(const std::filesystem::path& path, const access::CommitStates& states,
              const std::set<std::string>& changed);

  // A connection for use while this process itself locks out other writers. It opens the file only
  // if there was none to it before, or a statement names a table that it was not given.
  FileConnection ForTransaction(const std::filesystem::path& path) const;

  void Forget(const std::filesystem::path& path) { entries_.erase(path.string()); }

 private:
  struct Entry {
    FileConnection open;      // empty if there is none that is valid
    access::FileState state;  // in which the file holds what the tables do, but for `changed`
    bool settled = false;     // no other change of the file can show the same state
    std::set<std::string> changed;
    access::FileState committed;  // by our own last commit: no other change shows its time
  };

  ConnectionSettings settings_;
  std::unordered_map<std::string, Entry> entries_;  // by path
};

}  // namespace tenora::query
