#include "platform/access/storage/lock_file.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/access/engine_error.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr const char* kSource = "DAO.Database";

// The file's content: an entry for each user, the computer's name and the user's, ended by a zero.
constexpr std::uint32_t kMostUsers = 255;
constexpr std::size_t kEntry = 64, kName = 32;

// What is locked lies far behind the content. A user's byte is locked as long as the database is
// open; other locks stand for a page each. A shared one is the byte of the user's number, an
// exclusive one covers those of all users and ends with a byte that tells the number again.
constexpr std::uint64_t kUsers = 0x10000000, kPages = 0x20000000, kTablesRead = 0x40000000,
                        kTablesWritten = 0x50000000, kTablesDenied = 0x60000000, kEnd = 0x70000000;
constexpr std::uint64_t kPerPage = 0x200, kExclusive = 0x100;

// Ours alone, shared while one of us enters and exclusive while one removes the file: otherwise a
// program could enter a file that another is about to remove.
constexpr ByteRange kGate{kUsers - 1, 1};
constexpr ByteRange kAllLocks{kUsers + 1, kEnd - kUsers - 1};

constexpr std::chrono::milliseconds kBetweenTries{5};
constexpr int kTriesToJoin = 3;

// Locking takes time by the square of the number of locks, so of more pages neighbours share one,
// and of very many all.
constexpr std::size_t kMostLocks = 1000;

std::uint64_t RangeOf(std::uint64_t kind, std::uint32_t page) { return kind + page * kPerPage; }

// One of the two names of an entry, printable; hostile as everything in a file is.
std::string NameIn(std::string_view bytes) {
  std::string name;
  for (const char c : TrimBlanks(bytes.substr(0, bytes.find('\0')))) {
    const auto code = static_cast<unsigned char>(c);
    AppendUtf8(name, code < 0x20 || (code >= 0x7F && code < 0xA0) ? U'?' : code);
  }
  return name;
}

void PutName(std::span<std::byte> field, std::string_view name) {
  for (std::size_t i = 0; i < std::min(name.size(), field.size() - 1); ++i) {
    field[i] = static_cast<std::byte>(name[i]);
  }
}

std::string UserName() {
  for (const char* variable : {"USER", "LOGNAME"}) {
    if (const char* name = std::getenv(variable); name != nullptr && *name != '\0') return name;
  }
  return "uid " + std::to_string(::getuid());
}

std::array<std::byte, kEntry> OwnEntry() {
  std::array<char, 256> host{};
  if (::gethostname(host.data(), host.size() - 1) != 0) host[0] = '\0';
  std::array<std::byte, kEntry> entry{};
  const std::span<std::byte> names(entry);
  PutName(names.first(kName), host.data());
  PutName(names.subspan(kName), UserName());
  return entry;
}

RuntimeError CannotLock(const std::filesystem::path& path, const std::string& why) {
  return RuntimeError(engine_error::kCannotLock,
                      "Could not lock file. '" + path.string() + "' " + why + ".", kSource);
}

// The first and the last page of each lock.
std::vector<std::pair<std::uint32_t, std::uint32_t>> Runs(std::vector<std::uint32_t> pages) {
  std::ranges::sort(pages);
  std::vector<std::pair<std::uint32_t, std::uint32_t>> runs;
  const bool apart = pages.size() <= kMostLocks;
  for (const std::uint32_t page : pages) {
    if (!apart && !runs.empty() && page == runs.back().second + 1) {
      runs.back().second = page;
    } else {
      runs.emplace_back(page, page);
    }
  }
  if (runs.size() > kMostLocks) runs = {{runs.front().first, runs.back().second}};
  return runs;
}

// The number of the user whose lock this is; not of one if it is nobody's.
std::uint64_t UserOf(ByteRange lock) {
  if (lock.length == 1) return lock.offset % kPerPage;
  return (lock.offset + lock.length - 1) % kPerPage - kExclusive;
}

// The name that another program may have given the file where names ignore case, as on Windows.
std::filesystem::path ExistingName(const std::filesystem::path& wanted) {
  std::error_code unreadable;
  const std::string name = wanted.filename().string();
  std::filesystem::path other = wanted;
  for (std::filesystem::directory_iterator at(wanted.parent_path(), unreadable), end;
       !unreadable && at != end; at.increment(unreadable)) {
    const std::string found = at->path().filename().string();
    if (found == name) return wanted;
    if (EqualsNoCase(found, name)) other = at->path();
  }
  return other;
}

// Null where it may be neither written nor read.
std::unique_ptr<StorageFile> OpenForReading(Storage& storage, const std::filesystem::path& path) {
  try {
    return storage.Open(path, Storage::Mode::kRead);
  } catch (const StorageError&) {
    return nullptr;
  }
}

}  // namespace

std::filesystem::path LockFilePath(const std::filesystem::path& database) {
  const bool newer = StartsWithNoCase(database.extension().string(), ".acc");
  return std::filesystem::path(database).replace_extension(newer ? ".laccdb" : ".ldb");
}

std::unique_ptr<LockFile> LockFile::JoinOthers(Storage& storage,
                                               const std::filesystem::path& database) {
  try {
    const bool link = std::filesystem::is_symlink(database);
    const std::filesystem::path path =
        LockFilePath(link ? std::filesystem::canonical(database) : database);
    for (int tries = 0; tries < kTriesToJoin; ++tries) {
      auto file = storage.Open(path, Storage::Mode::kReadWriteOneName);
      if (file == nullptr) return nullptr;
      std::unique_ptr<LockFile> joined(new LockFile(storage, path, std::move(file)));
      if (joined->TryToEnter()) return joined;
    }
  } catch (const StorageError&) {
  } catch (const std::filesystem::filesystem_error&) {
  }
  return nullptr;
}

std::unique_ptr<LockFile> LockFile::Enter(Storage& storage, const std::filesystem::path& database,
                                          std::chrono::milliseconds wait) {
  const std::filesystem::path path = ExistingName(LockFilePath(database));
  const auto deadline = std::chrono::steady_clock::now() + wait;
  for (;;) {
    std::unique_ptr<StorageFile> file;
    try {
      file = storage.Create(path, database);
    } catch (const StorageError& error) {
      if (error.reason() != EACCES && error.reason() != EPERM) throw;
      file = OpenForReading(storage, path);
      if (file == nullptr) throw CannotLock(path, "may not be read");
      return std::unique_ptr<LockFile>(new LockFile(storage, path, std::move(file)));
    }
    std::unique_ptr<LockFile> entered(new LockFile(storage, path, std::move(file)));
    if (entered->TryToEnter()) return entered;
    if (std::chrono::steady_clock::now() >= deadline) {
      throw CannotLock(path, "is locked as a whole or has " + std::to_string(kMostUsers) +
                                 " users, the most possible");
    }
    std::this_thread::sleep_for(kBetweenTries);
  }
}

bool LockFile::TryToEnter() {
  if (!file_->TryLock(LockKind::kShared, kGate) || !file_->IsAt(path_)) return false;
  std::uint32_t user = 1;
  while (user <= kMostUsers && !file_->TryLock(LockKind::kExclusive, {kUsers + user, 1})) ++user;
  if (user > kMostUsers) return false;
  user_ = user;
  file_->Write((user - 1) * kEntry, OwnEntry());
  file_->TryLock(LockKind::kNone, kGate);
  return true;
}

LockFile::~LockFile() {
  if (user_ == 0) return;
  try {
    if (file_->TryLock(LockKind::kExclusive, kGate) &&
        !file_->OtherLock(LockKind::kExclusive, kAllLocks) && file_->IsAt(path_)) {
      storage_.Remove(path_);
    }
  } catch (const StorageError&) {
    // A lock file that stays behind is harmless.
  }
}

std::optional<ByteRange> LockFile::Take(LockKind kind, ByteRange bytes) {
  if (user_ != 0 && file_->TryLock(kind, bytes)) return std::nullopt;
  const std::optional<ByteRange> other = file_->OtherLock(kind, bytes);
  // Let go meanwhile, by somebody who is no longer known.
  if (user_ != 0 && !other) return ByteRange{};
  return other;
}

std::optional<LockFile::Obstacle> LockFile::TryToLock(
    const std::vector<std::uint32_t>& pages, const std::map<std::uint32_t, std::string>& tables) {
  // Where the file is not entered, the last user's number does to see whether a lock is possible.
  const std::uint64_t user = user_ != 0 ? user_ : kMostUsers;
  for (const auto& [page, name] : tables) {
    for (const std::uint64_t use : {kTablesRead, kTablesWritten}) {
      const std::uint64_t start = RangeOf(use, page);
      if (const auto lock = Take(LockKind::kShared, {start + user, 1})) {
        return Obstacle{*lock, name};
      }
    }
    const std::uint64_t denied = RangeOf(kTablesDenied, page);
    if (const auto lock = file_->OtherLock(LockKind::kExclusive, {denied + 1, kExclusive})) {
      return Obstacle{*lock, name};
    }
  }
  for (const auto& [first, last] : Runs(pages)) {
    const std::uint64_t start = RangeOf(kPages, first) + 1;
    const std::uint64_t end = RangeOf(kPages, last) + kExclusive + user;
    if (const auto lock = Take(LockKind::kExclusive, {start, end - start + 1})) {
      return Obstacle{*lock, {}};
    }
  }
  return std::nullopt;
}

void LockFile::LockForChange(const std::vector<std::uint32_t>& pages,
                             const std::map<std::uint32_t, std::string>& tables,
                             std::chrono::milliseconds wait) {
  const auto deadline = std::chrono::steady_clock::now() + wait;
  while (const std::optional<Obstacle> obstacle = TryToLock(pages, tables)) {
    // Who waits holds nothing, so that two programs do not wait for each other.
    file_->TryLock(LockKind::kNone, {kPages, kEnd - kPages});
    if (std::chrono::steady_clock::now() >= deadline) throw InUse(*obstacle);
    std::this_thread::sleep_for(kBetweenTries);
  }
}

RuntimeError LockFile::InUse(const Obstacle& obstacle) {
  const std::uint64_t user = UserOf(obstacle.lock);
  std::array<std::byte, kEntry> entry{};
  const bool known = obstacle.lock.length > 0 && user >= 1 && user <= kMostUsers &&
                     file_->Read((user - 1) * kEntry, entry) == kEntry;
  const std::string_view names(reinterpret_cast<const char*>(entry.data()), entry.size());
  const std::string computer = NameIn(names.substr(0, kName)), name = NameIn(names.substr(kName));
  const std::string where = " The lock is in '" + path_.string() + "'; try again when it is free.";
  if (!known || computer.empty()) {
    return RuntimeError(engine_error::kCurrentlyLocked,
                        "Could not update; currently locked by another program." + where, kSource);
  }
  const std::string who = "by user '" + name + "' on machine '" + computer + "'.";
  if (!obstacle.table.empty()) {
    return RuntimeError(engine_error::kTableLockedByUser,
                        "Table '" + obstacle.table + "' is exclusively locked " + who + where,
                        kSource);
  }
  return RuntimeError(engine_error::kLockedByUser,
                      "Could not update; currently locked " + who + where, kSource);
}

}  // namespace tenora::access
