// The names that an expression can use: the columns of the tables of its select, and of the
// enclosing selects.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/query/values/sqlite_value.h"

namespace tenora::query {

struct ScopeColumn {
  std::string name;
  Type type = Type::kNull;
  std::string sql = {};
};

struct ScopeSource {
  std::string name;  // the alias, or else the table name
  std::vector<ScopeColumn> columns = {};
  std::string row_key = {};                // SQL; empty if the source is a subquery
  std::vector<std::string> withheld = {};  // columns of the table that may not be read
};

class Scope {
 public:
  explicit Scope(const Scope* outer) : outer_(outer) {}

  void Add(ScopeSource source) { sources_.push_back(std::move(source)); }
  const std::vector<ScopeSource>& sources() const { return sources_; }
  const ScopeSource* FindSource(std::string_view name) const;

  struct Match {
    const ScopeColumn* column = nullptr;
    const ScopeSource* source = nullptr;
    bool ambiguous = false;
    bool outer = false;         // found in an enclosing select
    std::string withheld = {};  // without a column: "Table.Column" of one that may not be read
  };
  // Case-insensitive; `qualifier` may be empty.
  Match Find(std::string_view qualifier, std::string_view name) const;

 private:
  const Scope* outer_;
  std::vector<ScopeSource> sources_;
};

}  // namespace tenora::query
