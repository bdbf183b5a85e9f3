// Exclusive access to a database for one atomic change; all writing goes through it.
// docs/writing-safely.md describes the protocol and the state after a failure at each step.
//
// While a database is being changed, its rollback journal is beside it ("property.mdb.journal"). A
// lock on the journal excludes other writers; a lock on the database excludes programs that lock
// what they read. Both are held from the first page read to the last page written. Programs that
// use the database engine see and respect locks in its lock file, which stand for single pages.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/access/storage/file_storage.h"
#include "platform/access/storage/journal.h"
#include "platform/access/storage/lock_file.h"
#include "platform/runtime/error.h"

namespace tenora::access {

struct AppendedPage {
  std::uint32_t number = 0;
  std::vector<std::byte> bytes;
};

class ExclusiveAccess {
 public:
  // Takes both locks, waiting up to `wait` for each, and rolls back an interrupted change. Raises
  // 3024 (no such file), 3027 (file or folder is read-only), 3218 (locked by another program), 3050
  // (the file system does not support locks, or the lock file cannot be entered), 3043 (I/O error),
  // 3049 (an interrupted change that cannot be rolled back, or whose journal is damaged).
  ExclusiveAccess(Storage& storage, const std::filesystem::path& path,
                  std::chrono::milliseconds wait);
  ~ExclusiveAccess();
  ExclusiveAccess(const ExclusiveAccess&) = delete;
  ExclusiveAccess& operator=(const ExclusiveAccess&) = delete;

  // With symbolic links resolved.
  const std::filesystem::path& path() const { return path_; }
  StorageFile& database() { return *database_; }

  // Writes the pages of `journal` and the appended ones. Once it has returned, the change survives
  // a power cut. Raises 3026 (disk full), 3027 or 3043; the database is then unchanged, or is
  // rolled back when it is next opened. Raises 3197, without writing, when another program has
  // changed one of the pages or the length since they were read, and what LockFile::LockForChange
  // raises when one has locked a page, or one of the tables that are changed.
  CommitStates Commit(const Journal& journal, const std::vector<AppendedPage>& appended,
                      const std::map<std::uint32_t, std::string>& tables);

 private:
  void LockJournal(std::chrono::milliseconds wait);
  void Recover();
  RuntimeError CannotRollBack() const;
  RuntimeError SetAside();
  void RequireUnchanged(const Journal& journal);
  void SaveJournal(const Journal& journal);
  CommitStates WritePages(const Journal& journal, const std::vector<AppendedPage>& appended);
  void DropJournal();

  Storage& storage_;
  std::filesystem::path path_;
  std::filesystem::path journal_path_;
  std::unique_ptr<StorageFile> journal_;
  std::unique_ptr<StorageFile> database_;
  std::unique_ptr<LockFile> lock_file_;
  std::chrono::milliseconds wait_;
  bool journal_in_use_ = true;  // its content may still be needed, so it must not be removed
};

// "…/property.mdb.journal"
std::filesystem::path JournalPath(const std::filesystem::path& database);

// Rolls back an interrupted change, if there is one; costs one look-up in the folder when there is
// none. A journal that cannot be removed stays if it is not needed. Raises like the constructor of
// ExclusiveAccess.
void RecoverDatabase(Storage& storage, const std::filesystem::path& path,
                     std::chrono::milliseconds wait);

// Whether there is a journal beside the database that is not empty.
bool HasJournal(Storage& storage, const std::filesystem::path& path);

// Whether the journal, if there is one, is not needed to read the database, which the caller has
// open and locked. Only reads.
bool HasUnneededJournal(Storage& storage, StorageFile& database, const std::filesystem::path& path);

// Opens the database with a lock that excludes writers until it is closed. Raises 3024, 3027, 3218,
// 3050, 3043.
std::unique_ptr<StorageFile> LockForReading(Storage& storage, const std::filesystem::path& path,
                                            std::chrono::milliseconds wait);

// The error that callers see for a failed system call.
RuntimeError WriteError(const StorageError& error);

}  // namespace tenora::access
