#include "platform/access/storage/exclusive_access.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <thread>

#include "platform/access/storage/rollback.h"

namespace tenora::access {
namespace {

constexpr const char* kSource = "DAO.Database";
// Interval between attempts to take a lock that another program holds.
constexpr std::chrono::milliseconds kBetweenTries{2};

// Runs `step`; a failed system call becomes the engine's error.
template <typename Step>
auto ConvertingErrors(Step step) {
  try {
    return step();
  } catch (const StorageError& error) {
    throw WriteError(error);
  }
}

void WaitForLock(StorageFile& file, LockKind kind, std::chrono::milliseconds wait,
                 const std::filesystem::path& path) {
  const auto deadline = std::chrono::steady_clock::now() + wait;
  while (!file.TryLock(kind, kWholeFile)) {
    if (std::chrono::steady_clock::now() >= deadline) {
      const std::string failed = kind == LockKind::kShared ? "Could not read" : "Could not update";
      throw RuntimeError(engine_error::kCurrentlyLocked,
                         failed + "; currently locked. Another program has locked '" +
                             path.string() + "'; try again when it has finished.",
                         kSource);
    }
    std::this_thread::sleep_for(kBetweenTries);
  }
}

// All paths to the database must lead to the same journal.
std::filesystem::path Resolved(const std::filesystem::path& path) {
  std::error_code unresolved;
  const auto resolved = std::filesystem::weakly_canonical(path, unresolved);
  return unresolved ? path : resolved;
}

RuntimeError CannotRead(const std::filesystem::path& path, std::string_view why) {
  return RuntimeError(
      engine_error::kCannotOpenFile,
      "The database engine cannot open the file '" + path.string() + "'. " + std::string(why),
      kSource);
}

// Of steps that only read: "Cannot update" would mislead.
template <typename Step>
auto ConvertingReadErrors(Step step) {
  try {
    return step();
  } catch (const StorageError& error) {
    if (error.reason() != EACCES && error.reason() != EPERM) throw WriteError(error);
    throw CannotRead(error.path(), "You need permission to view its data.");
  }
}

RuntimeError NoSuchFile(const std::filesystem::path& path) {
  return RuntimeError(engine_error::kFileNotFound, "Could not find file '" + path.string() + "'.",
                      "DAO.Workspace");
}

}  // namespace

std::filesystem::path JournalPath(const std::filesystem::path& database) {
  return database.string() + ".journal";
}

RuntimeError WriteError(const StorageError& error) {
  const std::string reason = std::string(" ") + error.what() + ".";
  switch (error.reason()) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return RuntimeError(engine_error::kDiskFull, "Not enough space on disk." + reason, kSource);
    case EACCES:
    case EPERM:
    case EROFS:
      return RuntimeError(engine_error::kReadOnly,
                          "Cannot update. Database or object is read-only." + reason, kSource);
    case ENOLCK:
      return RuntimeError(engine_error::kCannotLock, "Could not lock file." + reason, kSource);
    default:
      return RuntimeError(engine_error::kDiskOrNetworkError, "Disk or network error." + reason,
                          kSource);
  }
}

ExclusiveAccess::ExclusiveAccess(Storage& storage, const std::filesystem::path& path,
                                 std::chrono::milliseconds wait)
    : storage_(storage), wait_(wait) {
  path_ = Resolved(path);
  journal_path_ = JournalPath(path_);
  ConvertingErrors([&] {
    database_ = storage_.Open(path_, Storage::Mode::kReadWrite);
    if (database_ == nullptr) throw NoSuchFile(path);
    LockJournal(wait);
    try {
      WaitForLock(*database_, LockKind::kExclusive, wait, path_);
      Recover();
      lock_file_ = LockFile::Enter(storage_, path_, wait);
    } catch (...) {
      if (!journal_in_use_) storage_.Remove(journal_path_);
      throw;
    }
  });
}

ExclusiveAccess::~ExclusiveAccess() {
  if (journal_in_use_) return;
  try {
    storage_.Remove(journal_path_);
  } catch (const StorageError&) {
    // An empty journal that stays behind is harmless.
    journal_in_use_ = true;
  }
}

// A writer removes its journal when it has finished, so the file that this one waited for may be
// gone from the folder: only a lock on the file that is still there counts.
void ExclusiveAccess::LockJournal(std::chrono::milliseconds wait) {
  for (;;) {
    journal_ = storage_.Create(journal_path_, path_);
    WaitForLock(*journal_, LockKind::kExclusive, wait, path_);
    if (journal_->IsAt(journal_path_)) break;
  }
  journal_in_use_ = journal_->Size() > 0;
}

void ExclusiveAccess::Recover() {
  if (!journal_in_use_) return;
  switch (RollBackInterruptedChange(*journal_, *database_)) {
    case Recovery::kDone:
      return DropJournal();
    case Recovery::kOverwritten:
      throw CannotRollBack();
    case Recovery::kDamaged:
      throw SetAside();
    case Recovery::kHalfWritten:
      throw RuntimeError(
          engine_error::kCorruptFile,
          "The journal '" + journal_path_.string() + "' of an interrupted change to '" +
              path_.string() +
              "' is damaged, and pages of the change may be half written, so that the database is "
              "not read. Restore a backup, or compact and repair the database; then move the "
              "journal to another folder.",
          kSource);
  }
}

// Keeps the journal under another name, so that the database can be opened from now on.
RuntimeError ExclusiveAccess::SetAside() {
  const std::string wanted = journal_path_.string() + ".damaged";
  std::string kept = wanted;
  for (int taken = 1; !storage_.Rename(journal_path_, kept); ++taken) {
    kept = wanted + "(" + std::to_string(taken) + ")";
  }
  return RuntimeError(
      engine_error::kCorruptFile,
      "The journal of an interrupted change to '" + path_.string() +
          "' is damaged. Nothing of such a change was found in the database. The journal has been "
          "kept as '" +
          kept +
          "'. Try again; if a number or name looks wrong, or \"tenora check\" finds faults, "
          "restore a backup.",
      kSource);
}

RuntimeError ExclusiveAccess::CannotRollBack() const {
  return RuntimeError(
      engine_error::kCorruptFile,
      "A change to '" + path_.string() +
          "' was interrupted, and another program has written to the file since, so that it "
          "cannot be rolled back. Restore a backup, or compact and repair the database, and "
          "delete '" +
          journal_path_.string() + "'.",
      kSource);
}

CommitStates ExclusiveAccess::Commit(const Journal& journal,
                                     const std::vector<AppendedPage>& appended,
                                     const std::map<std::uint32_t, std::string>& tables) {
  return ConvertingErrors([&] {
    CommitStates states;
    std::vector<std::uint32_t> pages;
    for (const JournalPage& page : journal.pages) pages.push_back(page.number);
    for (const AppendedPage& page : appended) pages.push_back(page.number);
    lock_file_->LockForChange(pages, tables, wait_);
    RequireUnchanged(journal);
    SaveJournal(journal);
    try {
      states = WritePages(journal, appended);
      journal_->Truncate(0);
    } catch (const StorageError&) {
      // If this fails too, the journal stays, and whoever opens the database next rolls back.
      RollBack(journal, *database_);
      DropJournal();
      throw;
    }
    journal_in_use_ = false;
    try {
      journal_->Sync();
    } catch (const StorageError& error) {
      throw WithDetail(WriteError(error),
                       "The change is in the file, but may not survive a power failure");
    }
    return states;
  });
}

// Most programs that have the file open do not honour these locks.
void ExclusiveAccess::RequireUnchanged(const Journal& journal) {
  bool unchanged = database_->Size() == journal.old_length;
  std::vector<std::byte> found(journal.page_size);
  for (const JournalPage& page : journal.pages) {
    if (!unchanged) break;
    unchanged =
        database_->Read(std::uint64_t{page.number} * journal.page_size, found) == found.size() &&
        found == page.before;
  }
  if (unchanged) return;
  throw RuntimeError(engine_error::kChangedByAnother,
                     "The database engine stopped the process because you and another user are "
                     "attempting to change the same data at the same time. File '" +
                         path_.string() + "'.",
                     kSource);
}

void ExclusiveAccess::SaveJournal(const Journal& journal) {
  try {
    journal_->Write(0, EncodeJournal(journal));
    journal_->Sync();
    storage_.SyncFolder(path_.parent_path());
    journal_in_use_ = true;
  } catch (const StorageError&) {
    journal_->Truncate(0);
    throw;
  }
}

CommitStates ExclusiveAccess::WritePages(const Journal& journal,
                                         const std::vector<AppendedPage>& appended) {
  CommitStates states{.before = database_->State(), .after = {}};
  // Appended pages first: a full disk is noticed before anything is overwritten.
  for (const AppendedPage& page : appended) {
    database_->Write(std::uint64_t{page.number} * journal.page_size, page.bytes);
  }
  for (const JournalPage& page : journal.pages) {
    database_->Write(std::uint64_t{page.number} * journal.page_size, page.after);
  }
  states.after = database_->MarkChanged();
  database_->Sync();
  return states;
}

void ExclusiveAccess::DropJournal() {
  journal_->Truncate(0);
  journal_->Sync();
  journal_in_use_ = false;
}

bool HasJournal(Storage& storage, const std::filesystem::path& path) {
  return ConvertingReadErrors([&] {
    const auto journal = storage.Open(JournalPath(Resolved(path)), Storage::Mode::kRead);
    return journal != nullptr && journal->Size() > 0;
  });
}

bool HasUnneededJournal(Storage& storage, StorageFile& database,
                        const std::filesystem::path& path) {
  return ConvertingReadErrors([&] {
    const auto journal = storage.Open(JournalPath(Resolved(path)), Storage::Mode::kRead);
    return journal == nullptr || IsUnneeded(*journal, database);
  });
}

std::unique_ptr<StorageFile> LockForReading(Storage& storage, const std::filesystem::path& path,
                                            std::chrono::milliseconds wait) {
  return ConvertingReadErrors([&] {
    auto file = storage.Open(path, Storage::Mode::kRead);
    if (file == nullptr) throw NoSuchFile(path);
    WaitForLock(*file, LockKind::kShared, wait, path);
    return file;
  });
}

void RecoverDatabase(Storage& storage, const std::filesystem::path& path,
                     std::chrono::milliseconds wait) {
  if (!HasJournal(storage, path)) return;
  try {
    const ExclusiveAccess recovered(storage, path, wait);
  } catch (const RuntimeError& error) {
    if (error.number() != engine_error::kReadOnly) throw;
    // The lock also waits for a writer that is just using the journal.
    const auto file = LockForReading(storage, path, wait);
    if (HasUnneededJournal(storage, *file, path)) return;
    throw CannotRead(path,
                     "A change to it was interrupted and must be rolled back first, which needs "
                     "permission to write to the file and its folder.");
  }
}

}  // namespace tenora::access
