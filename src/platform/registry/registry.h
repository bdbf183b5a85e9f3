// Two hives of keys with typed values, kept in files: the machine-wide one and the per-user one;
// docs/settings.md describes places and format. Several processes may read and write at once; every
// read sees the file as it is on disk, and parses it only when it has changed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace tenora::registry {

enum class Hive { kLocalMachine, kCurrentUser };

enum class ValueType : std::uint32_t { kText = 1, kDword = 4 };

// Status codes of the operating system that these calls return.
inline constexpr int kSuccess = 0;
inline constexpr int kFileNotFound = 2;
inline constexpr int kAccessDenied = 5;
inline constexpr int kSharingViolation = 32;  // another program holds the hive for too long
inline constexpr int kInvalidParameter = 87;
inline constexpr int kDiskFull = 112;
// The hive's file or its lock is a link that may lead to somebody else's file.
inline constexpr int kStoppedOnLink = 681;
inline constexpr int kDamaged = 1015;

struct StoredValue {
  ValueType type = ValueType::kText;
  // kText: UTF-8, perhaps with a closing zero as other programs store it; kDword: 4 bytes, lowest
  // first.
  std::string bytes;
};

class Registry {
 public:
  virtual ~Registry() = default;
  // Folders of the two hives' files.
  static std::unique_ptr<Registry> Open(const std::filesystem::path& machine_folder,
                                        const std::filesystem::path& user_folder);
  // From TENORA_SETTINGS, which holds both, else the system's and the user's configuration folders.
  static std::unique_ptr<Registry> FromEnvironment();

  // Key paths are written with backslashes ("SOFTWARE\Tenora\Mail"); keys and value names ignore
  // letter case. Never raise; a damaged file gives kDamaged and is never overwritten.
  virtual int Query(Hive hive, std::string_view key, std::string_view name,
                    StoredValue& value) const = 0;
  virtual int Set(Hive hive, std::string_view key, std::string_view name,
                  const StoredValue& value) = 0;
  virtual std::filesystem::path FileOf(Hive hive) const = 0;
};

}  // namespace tenora::registry
