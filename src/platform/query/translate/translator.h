// Translates a parsed statement of the engine's dialect into one that SQLite runs over the
// tables.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/saved_query.h"
#include "platform/query/cache/table_source.h"
#include "platform/query/sql/syntax.h"

namespace tenora::query {

struct OutputColumn {
  std::string name;
  Type type = Type::kNull;
};

// A saved query as it is put into a statement: the tokens point into its text.
struct QueryTokens {
  std::shared_ptr<const access::SavedQuery> query;
  std::vector<Token> tokens;
};

// A literal, passed to SQLite as the parameter at the same position.
struct Parameter {
  std::size_t token = 0;  // the literal's index among the statement's tokens
  Type type = Type::kNull;
  bool negated = false;  // there is a minus sign in front of it
  // Where it is one of a saved query, whose tokens are meant.
  std::shared_ptr<const QueryTokens> query = {};
};

// A "select top n … order by": the sort keys are returned after the columns, and the limit is the
// last parameter. Rows that tie with the last one belong to the result too; whoever steps the
// statement handles that.
struct TopRows {
  std::int64_t count = 0;
  std::vector<Type> keys;
};

struct Plan {
  std::string sql;
  std::vector<OutputColumn> columns;
  std::vector<Parameter> parameters;
  std::optional<TopRows> top;
};

// The tables and saved queries that statements can name.
class Catalogue {
 public:
  virtual ~Catalogue() = default;
  struct Entry {
    std::size_t number = 0;  // the table is t<number> in SQLite
    const TableSource* table = nullptr;
    std::shared_ptr<const access::SavedQuery> query = {};
  };
  // Both are null if the file has neither a table nor a query of this name.
  virtual Entry FindTable(std::string_view name) = 0;
};

// Raises 3061 (unknown names), 3078 (no such table), 3079 (ambiguous name), 3085 (unknown
// function), 3122 and 3096 (misplaced aggregates), 3464 (types that cannot be compared), 3075 and
// 3360.
Plan Translate(const Select& select, std::string_view statement, Catalogue& catalogue);

}  // namespace tenora::query
