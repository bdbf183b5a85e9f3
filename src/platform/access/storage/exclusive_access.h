// The only way to change a database: alone, and whole or not at all. docs/writing-safely.md has the
// protocol and what each moment of failure leaves.
//
// Beside the database lies, while someone changes it, its journal ("property.mdb.journal"). A lock
// on the journal keeps those who would change the database apart; one on the database keeps out
// programs that lock what they read. Both are held from the first page read to the last written.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/access/storage/file_storage.h"
#include "platform/access/storage/journal.h"
#include "platform/runtime/error.h"

namespace tenora::access {

struct AppendedPage {
  std::uint32_t number = 0;
  std::vector<std::byte> bytes;
};

class ExclusiveAccess {
 public:
  // Takes both locks, waiting up to `wait` for each, and takes back what an interrupted change
  // left. Raises 3024 (no such file), 3027 (file or folder is read-only), 3218 (locked by another),
  // 3050 (the file system has no locks), 3043, 3049 (an interrupted change that cannot be taken
  // back).
  ExclusiveAccess(Storage& storage, const std::filesystem::path& path,
                  std::chrono::milliseconds wait);
  ~ExclusiveAccess();
  ExclusiveAccess(const ExclusiveAccess&) = delete;
  ExclusiveAccess& operator=(const ExclusiveAccess&) = delete;

  // Links resolved.
  const std::filesystem::path& path() const { return path_; }
  StorageFile& database() { return *database_; }

  // Writes the pages of `journal` and those appended. When it returns, the change survives a power
  // cut. Raises 3026 (disk full), 3027 or 3043; the database then is as before, or will be when it
  // is next opened. 3197 when another program has changed a page or the length since it was read:
  // nothing is written.
  CommitStates Commit(const Journal& journal, const std::vector<AppendedPage>& appended);

 private:
  void LockJournal(std::chrono::milliseconds wait);
  void Recover();
  RuntimeError CannotTakeBack() const;
  void RequireUnchanged(const Journal& journal);
  void SaveJournal(const Journal& journal);
  CommitStates WritePages(const Journal& journal, const std::vector<AppendedPage>& appended);
  void TakeBack(const Journal& journal);
  void DropJournal();

  Storage& storage_;
  std::filesystem::path path_;
  std::filesystem::path journal_path_;
  std::unique_ptr<StorageFile> journal_;
  std::unique_ptr<StorageFile> database_;
  bool journal_in_use_ = true;  // it must stay: what it says may still be needed
};

// "…/property.mdb.journal"
std::filesystem::path JournalPath(const std::filesystem::path& database);

// Takes back what an interrupted change left, if there is any: one look at the folder when there is
// none. Raises as ExclusiveAccess.
void RecoverDatabase(Storage& storage, const std::filesystem::path& path,
                     std::chrono::milliseconds wait);

// Whether a journal with something in it lies beside the database.
bool HasJournal(Storage& storage, const std::filesystem::path& path);

// The database, open and locked against those who would change it until it is closed. Raises 3024,
// 3027, 3218, 3050, 3043.
std::unique_ptr<StorageFile> LockForReading(Storage& storage, const std::filesystem::path& path,
                                            std::chrono::milliseconds wait);

// The error a caller sees for a refused call of the system.
RuntimeError WriteError(const StorageError& error);

}  // namespace tenora::access
