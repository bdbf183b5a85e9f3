// What is wrong in a file, said where it is found. The readers of single structures know a page and
// a fault but neither file nor table; they raise Damage, and whoever does know them turns it into
// the RuntimeError that callers of this room see.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/runtime/error.h"

namespace tenora::access {

// The engine's error numbers.
namespace engine_error {
inline constexpr int kFileNotFound = 3024;
inline constexpr int kNotAValidPassword = 3031;
inline constexpr int kDiskOrNetworkError = 3043;
inline constexpr int kDuplicateKey = 3022;
inline constexpr int kDiskFull = 3026;
inline constexpr int kReadOnly = 3027;
inline constexpr int kRecordTooLarge = 3047;
inline constexpr int kCorruptFile = 3049;
inline constexpr int kNullInKey = 3058;
inline constexpr int kCannotLock = 3050;
inline constexpr int kNoSuchTable = 3078;
inline constexpr int kNoSuchColumn = 3127;
inline constexpr int kFieldTooSmall = 3163;
inline constexpr int kRecordDeleted = 3167;

inline constexpr int kNotUpdatable = 3073;
inline constexpr int kChangedByAnother = 3197;
inline constexpr int kRelatedRecordsExist = 3200;
inline constexpr int kRelatedRecordRequired = 3201;
inline constexpr int kCurrentlyLocked = 3218;
inline constexpr int kValueRequired = 3314;
inline constexpr int kZeroLength = 3315;
inline constexpr int kNumericOverflow = 3349;
inline constexpr int kTypeConversion = 3421;
inline constexpr int kCannotOpenFile = 3051;
inline constexpr int kUnrecognizedFormat = 3343;
}  // namespace engine_error

class Damage : public std::runtime_error {
 public:
  Damage(std::uint32_t page, const std::string& what, int number = engine_error::kCorruptFile)
      : std::runtime_error(what), page_(page), number_(number) {}
  std::uint32_t page() const { return page_; }
  int number() const { return number_; }

 private:
  std::uint32_t page_;
  int number_;
};

// The error for damage met in `table` of the file; an empty name leaves the table out.
RuntimeError DamageError(const Damage& damage, const std::filesystem::path& file,
                         std::string_view table);

// "Unrecognized database format '…/x.mdb'." with the reason behind it.
RuntimeError UnrecognizedFormat(const std::filesystem::path& file, std::string_view reason);

// Runs `step` and names file and table in whatever damage it meets.
template <typename Step>
auto NamingDamage(const std::filesystem::path& file, std::string_view table, Step step) {
  try {
    return step();
  } catch (const Damage& damage) {
    throw DamageError(damage, file, table);
  }
}

}  // namespace tenora::access
