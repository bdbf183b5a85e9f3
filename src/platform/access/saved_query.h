// Queries that are saved in a file under a name.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tenora::access {

enum class QueryKind : std::uint8_t {
  kSelect = 1,
  kMakeTable,
  kAppend,
  kUpdate,
  kDelete,
  kCrosstab,
  kDefinition,   // of a table or index
  kPassThrough,  // in a server's own language
  kUnion,
};

struct QuerySummary {
  std::string name;
  QueryKind kind = QueryKind::kSelect;
};

struct SavedQuery {
  std::string name;
  QueryKind kind = QueryKind::kSelect;
  std::string text;                     // in the engine's dialect; empty but for selects and unions
  std::vector<std::string> parameters;  // that it declares
};

}  // namespace tenora::access
