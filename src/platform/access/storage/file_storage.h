// The file operations that reading and writing a database need. A failure of any of them at any
// moment must be harmless; tests substitute a storage that injects I/O errors, torn and lost
// writes.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>

#include "platform/access/file_state.h"
#include "platform/access/format/bytes.h"

namespace tenora::access {

// A failed system call; `reason` is its errno.
class StorageError : public std::runtime_error {
 public:
  StorageError(int reason, const std::filesystem::path& path, const char* what);
  int reason() const { return reason_; }
  const std::filesystem::path& path() const { return path_; }

 private:
  int reason_;
  std::filesystem::path path_;
};

enum class LockKind { kNone, kShared, kExclusive };

// Bytes of a file, which may lie behind its end.
struct ByteRange {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;  // 0: to the end of the file, however far it grows
};

inline constexpr ByteRange kWholeFile{};

// A file open for reading. Every function raises StorageError when its system call fails.
class ReadableFile {
 public:
  virtual ~ReadableFile() = default;
  virtual std::uint64_t Size() = 0;
  // Fills `into` from `offset`, in bytes; returns fewer bytes only at the end of the file.
  virtual std::size_t Read(std::uint64_t offset, std::span<std::byte> into) = 0;
};

// An open file. Every function raises StorageError when its system call fails.
class StorageFile : public ReadableFile {
 public:
  virtual void Write(std::uint64_t offset, Bytes bytes) = 0;
  virtual void Truncate(std::uint64_t size) = 0;
  // Once it has returned, what was written and the file's length survive a power cut.
  virtual void Sync() = 0;
  // Locks the bytes against other open file descriptions, those of this process included, until
  // this one is closed, or unlocks them. False when another holds a conflicting lock.
  virtual bool TryLock(LockKind kind, ByteRange bytes) = 0;
  // A lock of another that would conflict with such a lock; the file may be open for reading only.
  virtual std::optional<ByteRange> OtherLock(LockKind kind, ByteRange bytes) = 0;
  // The current state, fetched from the server on a network file system; all zero if unavailable.
  virtual FileState State() { return {}; }
  // Sets a modification time that no earlier or later write can have, however coarse the file
  // system's clock. Returns the state after that, all zero if it could not be set.
  virtual FileState MarkChanged() { return {}; }
  // Whether `path` still refers to this file.
  virtual bool IsAt(const std::filesystem::path& path) = 0;
};

class Storage {
 public:
  // kReadWriteOneName: a file with a second name, a hard link, is an error.
  enum class Mode { kRead, kReadWrite, kReadWriteOneName };

  virtual ~Storage() = default;
  // Null when there is no such file. For writing, links must have been resolved.
  virtual std::unique_ptr<StorageFile> Open(const std::filesystem::path& path, Mode mode) = 0;
  // Opens the file, or creates one that is readable and writable by whoever may read and write
  // `like`, as its owner's if that is allowed. Links, symbolic or hard, are errors.
  virtual std::unique_ptr<StorageFile> Create(const std::filesystem::path& path,
                                              const std::filesystem::path& like) = 0;
  virtual void Remove(const std::filesystem::path& path) = 0;
  // False, and nothing changed, where the new name is taken.
  virtual bool Rename(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
  // Once it has returned, the folder's entries survive a power cut.
  virtual void SyncFolder(const std::filesystem::path& folder) = 0;
};

// The local file system.
class DiskStorage final : public Storage {
 public:
  std::unique_ptr<StorageFile> Open(const std::filesystem::path& path, Mode mode) override;
  std::unique_ptr<StorageFile> Create(const std::filesystem::path& path,
                                      const std::filesystem::path& like) override;
  void Remove(const std::filesystem::path& path) override;
  bool Rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  void SyncFolder(const std::filesystem::path& folder) override;
};

}  // namespace tenora::access
