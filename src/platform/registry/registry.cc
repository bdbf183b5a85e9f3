#include "platform/registry/registry.h"

#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <utility>

#include "platform/registry/hive_file.h"
#include "platform/registry/hive_lock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/user_folders.h"

namespace tenora::registry {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMachineFolder = "/etc/tenora";
constexpr const char* kMachineFile = "machine.settings";
constexpr const char* kUserFile = "user.settings";
// Far beyond any settings file; a larger one is something else that took its name.
constexpr std::uintmax_t kLargestFile = 16 * 1024 * 1024;

int StatusOf(const RuntimeError& error) {
  switch (error.number()) {
    case error_number::kFileNotFound:
      return kFileNotFound;
    case error_number::kDiskFull:
      return kDiskFull;
    default:
      return kAccessDenied;
  }
}

// A missing file is an empty hive.
int Load(const fs::path& path, HiveFile& hive) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) return kSuccess;
  if (error) return kAccessDenied;
  if (!fs::is_regular_file(status)) return kDamaged;
  const std::uintmax_t size = fs::file_size(path, error);
  if (!error && size > kLargestFile) return kDamaged;
  try {
    std::optional<HiveFile> parsed = HiveFile::Parse(ReadWholeFile(path));
    if (!parsed) return kDamaged;
    hive = *std::move(parsed);
    return kSuccess;
  } catch (const RuntimeError& failure) {
    // Removed since it was looked at: an empty hive after all.
    const int code = StatusOf(failure);
    return code == kFileNotFound ? kSuccess : code;
  }
}

// Machine-wide settings are for every user, whatever the umask of the one who writes them first.
void LetEveryoneRead(const fs::path& path) {
  std::error_code ignored;
  fs::perms reading = fs::perms::group_read | fs::perms::others_read;
  if (fs::is_directory(path, ignored)) reading |= fs::perms::group_exec | fs::perms::others_exec;
  fs::permissions(path, reading, fs::perm_options::add, ignored);
}

class FileRegistry : public Registry {
 public:
  FileRegistry(fs::path machine_file, fs::path user_file)
      : machine_file_(std::move(machine_file)), user_file_(std::move(user_file)) {}

  int Query(Hive hive, std::string_view key, std::string_view name,
            StoredValue& value) const override {
    HiveFile contents;
    const int status = Load(FileOf(hive), contents);
    if (status != kSuccess) return status;
    const StoredValue* found = contents.Find(key, name);
    if (found == nullptr) return kFileNotFound;
    value = *found;
    return kSuccess;
  }

  int Set(Hive hive, std::string_view key, std::string_view name,
          const StoredValue& value) override {
    if (key.empty()) return kInvalidParameter;
    if (value.type == ValueType::kDword && value.bytes.size() != 4) return kInvalidParameter;
    const fs::path path = FileOf(hive);
    std::error_code error;
    const bool created = fs::create_directories(path.parent_path(), error);
    const bool shared = hive == Hive::kLocalMachine;
    if (created && shared) LetEveryoneRead(path.parent_path());
    // Looked at before the lock is taken, so that a user without rights never waits for one.
    if (::access(path.parent_path().c_str(), W_OK) != 0) return kAccessDenied;
    const HiveLock lock(path, shared);
    if (lock.status() != kSuccess) return lock.status();
    HiveFile contents;
    const int status = Load(path, contents);
    if (status != kSuccess) return status;
    contents.Set(key, name, value);
    return Replace(path, shared, contents);
  }

  fs::path FileOf(Hive hive) const override {
    return hive == Hive::kLocalMachine ? machine_file_ : user_file_;
  }

 private:
  // Replaces the file behind a link rather than the link, and keeps who may read it.
  static int Replace(const fs::path& path, bool shared, const HiveFile& contents) {
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);
    if (error) return kAccessDenied;
    const fs::file_status old = fs::status(target, error);
    try {
      WriteWholeFile(target, contents.Text());
    } catch (const RuntimeError& failure) {
      return StatusOf(failure);
    }
    if (fs::is_regular_file(old)) {
      // A file system that refuses had no permissions to keep.
      fs::permissions(target, old.permissions(), error);
    } else if (shared) {
      LetEveryoneRead(target);
    }
    return kSuccess;
  }

  fs::path machine_file_;
  fs::path user_file_;
};

}  // namespace

std::unique_ptr<Registry> Registry::Open(const fs::path& machine_folder,
                                         const fs::path& user_folder) {
  return std::make_unique<FileRegistry>(machine_folder / kMachineFile, user_folder / kUserFile);
}

std::unique_ptr<Registry> Registry::FromEnvironment() {
  const char* both = std::getenv("TENORA_SETTINGS");
  if (both != nullptr && *both != '\0') return Open(both, both);
  return Open(kMachineFolder, UserFolder("XDG_CONFIG_HOME", ".config") / "tenora");
}

}  // namespace tenora::registry
