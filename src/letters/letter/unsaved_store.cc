#include "letters/unsaved_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSession = "session-";
constexpr const char* kUnnamed = "new-";
constexpr const char* kLock = "lock";
constexpr const char* kExtension = ".letter";
constexpr std::size_t kLargestLetter = std::size_t{256} << 20;

// Whether this is a folder, or a file, of this user and no link.
bool IsOwn(const fs::path& path, mode_t type) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) == type &&
         status.st_uid == ::geteuid();
}

void MakePrivateFolder(const fs::path& folder) {
  MakeFolder(folder.parent_path());
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) throw FileError(errno, folder);
  if (!IsOwn(folder, S_IFDIR)) {
    throw StandardError(error_number::kPathFileAccess,
                        folder.string() + " is not a folder of this user");
  }
  if (::chmod(folder.c_str(), 0700) != 0) throw FileError(errno, folder);
}

std::vector<fs::path> EntriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    entries.push_back(entry->path());
  }
  return entries;
}

// The descriptor that holds the lock of a session; -1 if its program is running, or it is none.
int TakeLock(const fs::path& session) {
  if (!IsOwn(session, S_IFDIR)) return -1;
  const int lock = OpenOwnFile(session / kLock, O_RDWR);
  struct stat status {};
  const bool taken = lock >= 0 && ::flock(lock, LOCK_EX | LOCK_NB) == 0 &&
                     ::fstat(lock, &status) == 0 && status.st_nlink > 0;
  if (!taken && lock >= 0) ::close(lock);
  return taken ? lock : -1;
}

std::optional<UnsavedLetter> ReadLetter(const fs::path& file) {
  if (file.extension() != kExtension || !IsOwn(file, S_IFREG)) return std::nullopt;
  try {
    return ReadUnsavedLetter(ReadWholeFile(file, kLargestLetter));
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

}  // namespace

UnsavedStore::~UnsavedStore() {
  taken_over_.push_back(own_);
  for (const Session& session : taken_over_) {
    if (session.lock >= 0 && !EndIfEmpty(session)) ::close(session.lock);
  }
}

fs::path UnsavedStore::FileOf(int number) const {
  return own_.folder / (std::to_string(number) + kExtension);
}

void UnsavedStore::BeginSession() {
  MakePrivateFolder(folder_);
  std::string unnamed = (folder_ / kUnnamed).string() + "XXXXXX";
  if (::mkdtemp(unnamed.data()) == nullptr) throw FileError(errno, folder_);
  const std::string number = unnamed.substr(unnamed.size() - 6);
  const fs::path folder = folder_ / (kSession + number);
  const int lock = OpenOwnFile(fs::path(unnamed) / kLock, O_RDWR | O_CREAT | O_EXCL, 0600);
  // It is a session, for others to look at, once it is locked.
  if (lock < 0 || ::flock(lock, LOCK_EX | LOCK_NB) != 0 ||
      ::rename(unnamed.c_str(), folder.c_str()) != 0) {
    const int reason = errno;
    if (lock >= 0) ::close(lock);
    throw FileError(reason, folder);
  }
  own_ = {folder, lock};
}

void UnsavedStore::Keep(int number, const UnsavedLetter& letter) {
  if (own_.lock < 0) BeginSession();
  WritePrivateFile(FileOf(number), WriteUnsavedLetter(letter));
}

void UnsavedStore::Drop(int number) noexcept {
  if (own_.lock >= 0) ::unlink(FileOf(number).c_str());
}

std::vector<UnsavedStore::Left> UnsavedStore::FindLeft(std::string_view program_folder) {
  for (const fs::path& entry : EntriesOf(folder_)) {
    const bool known = entry == own_.folder || std::ranges::any_of(taken_over_, [&](const auto& s) {
                         return s.folder == entry;
                       });
    if (known || !entry.filename().native().starts_with(kSession)) continue;
    if (const int lock = TakeLock(entry); lock >= 0) taken_over_.push_back({entry, lock});
  }
  std::vector<Left> left;
  std::erase_if(taken_over_, [&](const Session& session) {
    if (EndIfEmpty(session)) return true;
    const std::size_t before = left.size();
    for (const fs::path& file : EntriesOf(session.folder)) {
      auto letter = ReadLetter(file);
      if (letter && letter->program_folder == program_folder) left.push_back({*letter, file});
    }
    if (left.size() > before) return false;
    ::close(session.lock);  // for a program that it belongs to
    return true;
  });
  std::ranges::sort(left, std::greater<>(), [](const Left& l) { return l.letter.kept; });
  return left;
}

void UnsavedStore::Discard(const Left& left) noexcept {
  ::unlink(left.file.c_str());
  std::erase_if(taken_over_, [&](const Session& session) {
    return session.folder == left.file.parent_path() && EndIfEmpty(session);
  });
}

bool UnsavedStore::EndIfEmpty(const Session& session) noexcept {
  const auto letters = EntriesOf(session.folder);
  if (std::ranges::any_of(letters, [](const fs::path& f) { return f.filename() != kLock; })) {
    return false;
  }
  // The lock last of all: a program that waits for it then finds that it has no name.
  ::unlink((session.folder / kLock).c_str());
  ::rmdir(session.folder.c_str());
  ::close(session.lock);
  return true;
}

}  // namespace tenora
