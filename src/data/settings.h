// The program's own settings: text values by section and key under SOFTWARE\Tenora, machine-wide
// where the machine-wide hive can be written, else per user. docs/settings.md lists the keys.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "data/program.h"
#include "platform/registry/registry.h"
#include "platform/runtime/error.h"

namespace tenora {

class Settings {
 public:
  explicit Settings(const Platform& platform) : platform_(platform) {}

  // A damaged hive reads as empty; the user is told once a run which file it is.
  std::string GetSettingText(std::string_view section, std::string_view key,
                             std::string_view default_text);
  // The same through one of the conversions; an error names the setting.
  template <typename Convert>
  auto GetSettingAs(const Convert& convert, std::string_view section, std::string_view key,
                    std::string_view default_text) {
    const std::string text = GetSettingText(section, key, default_text);
    return About([&] { return NameOf(section, key); }, [&] { return convert(text); });
  }
  // A setting that cannot be saved is shown to the user.
  void SaveSettingText(std::string_view section, std::string_view key, std::string_view value);

  // Decided once a run by writing and reading back a stamp, which stays in place.
  bool MachineWideSettings();

  // False, and an empty value, when the value cannot be read or has more than 1024 characters. A
  // number reads as docs/settings.md says.
  bool ReadRegistryValue(registry::Hive hive, std::string_view key, std::string_view name,
                         std::string& value);
  // Stores text; returns the registry's status code.
  int WriteRegistryValue(registry::Hive hive, std::string_view key, std::string_view name,
                         std::string_view value);

 private:
  static std::string NameOf(std::string_view section, std::string_view key);
  enum class Location { kUndecided = 0, kMachineWide = 1, kPerUser = 2 };

  bool StampReadsBack();
  int Query(registry::Hive hive, std::string_view key, std::string_view name,
            registry::StoredValue& value);
  void TellOfDamage(registry::Hive hive);

  Platform platform_;
  Location location_ = Location::kUndecided;
  std::array<bool, 2> damage_told_{};  // by hive
};

}  // namespace tenora
