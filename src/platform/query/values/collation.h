// How the engine compares the texts of a database: case-insensitive, accent-sensitive; hyphens and
// apostrophes count only between texts that are otherwise equal, trailing blanks never. The order
// is that of the keys of its text indexes.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/access/sort_order.h"

namespace tenora::query {

// Its functions can be called by several threads at once.
class Collation {
 public:
  // Of a database or column with this sort order (access::DatabaseFile::sort_order()).
  static const Collation& Of(std::uint32_t sort_order);

  // Negative, 0 or positive as `left` sorts before, equal to or after `right`. Texts are UTF-8.
  int Compare(std::string_view left, std::string_view right) const;
  // Equal texts have equal hashes.
  std::uint64_t Hash(std::string_view text) const;

 private:
  static constexpr std::size_t kAsciiSize = 128;

  explicit Collation(const access::SortOrder& order);
  // The one or two bytes that an ASCII character weighs, 0 for one that needs the whole key.
  std::uint16_t AsciiWeight(char c) const;

  const access::SortOrder& order_;
  std::array<std::uint16_t, kAsciiSize> ascii_{};
};

// The name of a database's collation in a connection to it.
inline constexpr char kCollationName[] = "engine";
void RegisterCollation(sqlite3* connection, const Collation& collation);

}  // namespace tenora::query
