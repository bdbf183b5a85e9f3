// The program's own settings: text values by section and key under SOFTWARE\Tenora, machine-wide
// where the machine-wide hive can be written, else per user.
#pragma once

#include <string>
#include <string_view>

#include "data/program.h"
#include "platform/registry/registry.h"

namespace tenora {

class Settings {
 public:
  explicit Settings(const Platform& platform) : platform_(platform) {}

  std::string GetSettingText(std::string_view section, std::string_view key,
                             std::string_view default_text);
  void SaveSettingText(std::string_view section, std::string_view key, std::string_view value);

  // Decided once a run by writing and reading back a stamp, which stays in place.
  bool MachineWideSettings();

  bool ReadRegistryValue(registry::Hive hive, std::string_view key, std::string_view name,
                         std::string& value) const;
  int WriteRegistryValue(registry::Hive hive, std::string_view key, std::string_view name,
                         std::string_view value);

 private:
  enum class Location { kUndecided = 0, kMachineWide = 1, kPerUser = 2 };

  Platform platform_;
  Location location_ = Location::kUndecided;
};

}  // namespace tenora
