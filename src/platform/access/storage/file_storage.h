// The disk, as far as writing to a database needs it: a few calls whose failure at any moment must
// be harmless. Tests put a storage of their own in its place that fails, tears and forgets.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "platform/access/file_state.h"
#include "platform/access/format/bytes.h"

namespace tenora::access {

// A call of the system that failed; `reason` is its errno.
class StorageError : public std::runtime_error {
 public:
  StorageError(int reason, const std::filesystem::path& path, const char* what);
  int reason() const { return reason_; }
  const std::filesystem::path& path() const { return path_; }

 private:
  int reason_;
  std::filesystem::path path_;
};

enum class LockKind { kShared, kExclusive };

// A file open for reading. Every call raises StorageError when the system refuses it.
class ReadableFile {
 public:
  virtual ~ReadableFile() = default;
  virtual std::uint64_t Size() = 0;
  // Fills `into` from `offset`, in bytes; returns fewer bytes only at the end of the file.
  virtual std::size_t Read(std::uint64_t offset, std::span<std::byte> into) = 0;
};

// An open file. Every call raises StorageError when the system refuses it.
class StorageFile : public ReadableFile {
 public:
  virtual void Write(std::uint64_t offset, Bytes bytes) = 0;
  virtual void Truncate(std::uint64_t size) = 0;
  // Returns when what was written, and the file's length, would survive a power cut.
  virtual void Sync() = 0;
  // A lock of the whole file against other open files, also those of this process, held until this
  // one is closed. False when another holds it.
  virtual bool TryLock(LockKind kind) = 0;
  // The state of the file as its server knows it now, all zero where that cannot be had.
  virtual FileState State() { return {}; }
  // Gives the file a time of change that neither an earlier write nor a later one can show, however
  // coarsely the file system counts time. The state then, all zero where it cannot be had.
  virtual FileState MarkChanged() { return {}; }
  // Whether `path` still names this file.
  virtual bool IsAt(const std::filesystem::path& path) = 0;
};

class Storage {
 public:
  enum class Mode { kRead, kReadWrite };

  virtual ~Storage() = default;
  // Null when there is no such file.
  virtual std::unique_ptr<StorageFile> Open(const std::filesystem::path& path, Mode mode) = 0;
  // Opens or makes the file, readable and writable by whoever may read and write `like`.
  virtual std::unique_ptr<StorageFile> Create(const std::filesystem::path& path,
                                              const std::filesystem::path& like) = 0;
  virtual void Remove(const std::filesystem::path& path) = 0;
  // Returns when the folder's entries would survive a power cut.
  virtual void SyncFolder(const std::filesystem::path& folder) = 0;
};

// The disks of this machine.
class DiskStorage final : public Storage {
 public:
  std::unique_ptr<StorageFile> Open(const std::filesystem::path& path, Mode mode) override;
  std::unique_ptr<StorageFile> Create(const std::filesystem::path& path,
                                      const std::filesystem::path& like) override;
  void Remove(const std::filesystem::path& path) override;
  void SyncFolder(const std::filesystem::path& folder) override;
};

}  // namespace tenora::access
