#include "data/settings.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

#include "platform/dialogs/guard.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using registry::Hive;
using registry::StoredValue;
using registry::ValueType;

// An empty text is stored as this marker, and the marker reads as an empty text. Deliberate: other
// programs of the package read the same values.
constexpr std::string_view kEmptyMarker = "vbNullString";
constexpr std::string_view kProductKey = "SOFTWARE\\Tenora";
constexpr std::size_t kLongestValue = 1024;  // characters
constexpr int kStampAttempts = 5;

std::string KeyOf(std::string_view section) {
  std::string key(kProductKey);
  return section.empty() ? key : key.append("\\").append(section);
}

// Deliberate: a byte below 16 gives one digit only, so 261 (bytes 05 01 00 00) reads as "21" (hex
// 0015). The package's other programs store numbers that are read this way.
std::string NumberReadBackwards(std::string_view bytes) {
  std::string digits;
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
    std::array<char, 2> hex{};
    const auto end = std::to_chars(hex.begin(), hex.end(), static_cast<unsigned char>(*byte), 16);
    digits.append(hex.data(), end.ptr);
  }
  std::uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return std::to_string(number);
}

std::string TextOfValue(StoredValue value) {
  if (value.bytes.ends_with('\0')) value.bytes.pop_back();
  return value.type == ValueType::kDword ? NumberReadBackwards(value.bytes) : value.bytes;
}

RuntimeError ErrorOfStatus(int status, const std::string& file) {
  switch (status) {
    case registry::kDamaged:
      return StandardError(error_number::kInvalidFileFormat, file);
    case registry::kDiskFull:
      return StandardError(error_number::kDiskFull, file);
    case registry::kAccessDenied:
    case registry::kSharingViolation:
      return StandardError(error_number::kPermissionDenied, file);
    case registry::kStoppedOnLink:
      return StandardError(error_number::kPathFileAccess,
                           file +
                               " or its \".lock\" is a link that is no part of your own set-up; "
                               "remove the link");
    default:
      return StandardError(error_number::kPathFileAccess, file);
  }
}

}  // namespace

std::string Settings::GetSettingText(std::string_view section, std::string_view key,
                                     std::string_view default_text) {
  std::string text;
  if (MachineWideSettings()) {
    if (!ReadRegistryValue(Hive::kLocalMachine, KeyOf(section), key, text)) text = default_text;
  } else {
    StoredValue value;
    const int status = Query(Hive::kCurrentUser, KeyOf(section), key, value);
    text = status == registry::kSuccess ? TextOfValue(std::move(value)) : default_text;
  }
  return text == kEmptyMarker ? std::string() : text;
}

std::string Settings::NameOf(std::string_view section, std::string_view key) {
  return std::string("the setting \"").append(key).append("\" of section \"").append(section) +
         "\"";
}

void Settings::SaveSettingText(std::string_view section, std::string_view key,
                               std::string_view value) {
  Guarded(platform_.dialogs, "General - SaveSettingText", [&] {
    const Hive hive = MachineWideSettings() ? Hive::kLocalMachine : Hive::kCurrentUser;
    const int status =
        WriteRegistryValue(hive, KeyOf(section), key, value.empty() ? kEmptyMarker : value);
    if (status == registry::kSuccess) return;
    throw ErrorOfStatus(status, platform_.registry.FileOf(hive).string());
  });
}

bool Settings::MachineWideSettings() {
  if (location_ == Location::kUndecided) {
    location_ = StampReadsBack() ? Location::kMachineWide : Location::kPerUser;
  }
  return location_ == Location::kMachineWide;
}

bool Settings::StampReadsBack() {
  const std::string stamp = FormatDate(platform_.clock.Now(), "dd/mm/yy hh:nn:ss");
  const std::string key = KeyOf("Test");
  // Another program's stamp may come between; so a few attempts.
  for (int attempt = 0; attempt < kStampAttempts; ++attempt) {
    std::string read_back;
    const int status = WriteRegistryValue(Hive::kLocalMachine, key, "Test", stamp);
    ReadRegistryValue(Hive::kLocalMachine, key, "Test", read_back);
    // What cannot be written may still hold the same stamp from an earlier run.
    if (status != registry::kSuccess) return false;
    if (read_back == stamp) return true;
  }
  return false;
}

bool Settings::ReadRegistryValue(Hive hive, std::string_view key, std::string_view name,
                                 std::string& value) {
  value.clear();
  StoredValue stored;
  if (Query(hive, key, name, stored) != registry::kSuccess) return false;
  if (ToUtf16(stored.bytes).size() > kLongestValue) return false;
  value = TextOfValue(std::move(stored));
  return true;
}

int Settings::WriteRegistryValue(Hive hive, std::string_view key, std::string_view name,
                                 std::string_view value) {
  return platform_.registry.Set(hive, key, name, {ValueType::kText, std::string(value)});
}

int Settings::Query(Hive hive, std::string_view key, std::string_view name, StoredValue& value) {
  const int status = platform_.registry.Query(hive, key, name, value);
  if (status == registry::kDamaged) TellOfDamage(hive);
  return status;
}

void Settings::TellOfDamage(Hive hive) {
  bool& told = damage_told_[hive == Hive::kLocalMachine ? 0 : 1];
  if (std::exchange(told, true)) return;
  platform_.dialogs.Say("The settings file " + platform_.registry.FileOf(hive).string() +
                        " is damaged.  It is left as it is and none of its settings are used.  "
                        "Correct the file or move it away.");
}

}  // namespace tenora
