// The letters and templates that the user opened or saved last, kept with the user's own settings.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/registry/registry.h"

namespace tenora {

// A letter as it is opened again.
struct RecentLetter {
  std::filesystem::path path;
  std::string kind;  // one of the letter kinds

  bool operator==(const RecentLetter&) const = default;
};

class RecentLetters {
 public:
  static constexpr std::size_t kMost = 10;

  explicit RecentLetters(registry::Registry& registry) : registry_(registry) {}

  // Newest first; whether the files are still there is not looked at.
  std::vector<RecentLetter> List() const;
  // Puts a letter first. One that cannot be stored is left out without a message.
  void Add(const RecentLetter& letter);
  void Clear();

 private:
  void Store(const std::vector<RecentLetter>& letters);

  registry::Registry& registry_;
};

}  // namespace tenora
