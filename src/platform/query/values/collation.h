// How the engine compares texts: case-insensitive, accent-sensitive; hyphens and apostrophes count
// only between texts that are otherwise equal, trailing blanks never.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string_view>

namespace tenora::query {

// Negative, 0 or positive as `left` sorts before, equal to or after `right`. Texts are UTF-8.
int CompareText(std::string_view left, std::string_view right);

// The name of this collation in a connection.
inline constexpr char kCollationName[] = "engine";
void RegisterCollation(sqlite3* connection);

// Equal texts have equal hashes.
std::uint64_t HashText(std::string_view text);

}  // namespace tenora::query
