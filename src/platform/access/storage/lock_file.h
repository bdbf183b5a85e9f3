// The lock file of the database engine, "property.ldb" beside "property.mdb" and
// "agency.laccdb" beside "agency.accdb": by it the programs that have a database open, on all
// machines, see one another. docs/writing-safely.md says what it holds and what is locked in it.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/access/storage/file_storage.h"

namespace tenora::access {

// "…/property.ldb"
std::filesystem::path LockFilePath(const std::filesystem::path& database);

class LockFile {
 public:
  // Enters the lock file if there is one that may be written; null otherwise, and where anything
  // fails: whoever only reads goes on without. A symbolic link to the database is followed.
  static std::unique_ptr<LockFile> JoinOthers(Storage& storage,
                                              const std::filesystem::path& database);
  // Enters the lock file, which is made if there is none. Where it may only be read, it is looked
  // at and not entered. `database` has no symbolic links. Raises StorageError, and 3050 where it
  // may not be read, is full or does not become free within `wait`.
  static std::unique_ptr<LockFile> Enter(Storage& storage, const std::filesystem::path& database,
                                         std::chrono::milliseconds wait);
  // Leaves the lock file, and removes it if nobody else is in it.
  ~LockFile();
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

  // Locks the pages against all others, and their use of these tables to the exclusion of writers,
  // until the object is destroyed. Tables are given by the first page of their definition, with
  // their names. Raises 3260 (a page is in use), 3261 (a table is), which name computer and user
  // of whoever holds the lock, or 3218 where they are not known, when it is not free within `wait`.
  void LockForChange(const std::vector<std::uint32_t>& pages,
                     const std::map<std::uint32_t, std::string>& tables,
                     std::chrono::milliseconds wait);

 private:
  struct Obstacle {
    ByteRange lock;     // that another holds
    std::string table;  // empty: a page is locked
  };

  LockFile(Storage& storage, std::filesystem::path path, std::unique_ptr<StorageFile> file)
      : storage_(storage), path_(std::move(path)), file_(std::move(file)) {}
  bool TryToEnter();
  // None when everything is locked.
  std::optional<Obstacle> TryToLock(const std::vector<std::uint32_t>& pages,
                                    const std::map<std::uint32_t, std::string>& tables);
  // Locks the bytes, or only looks whether that would be possible where the file is not entered.
  std::optional<ByteRange> Take(LockKind kind, ByteRange bytes);
  RuntimeError InUse(const Obstacle& obstacle);

  Storage& storage_;
  std::filesystem::path path_;
  std::unique_ptr<StorageFile> file_;
  std::uint32_t user_ = 0;  // from 1; 0: not entered
};

}  // namespace tenora::access
