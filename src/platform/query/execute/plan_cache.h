// A cache of translated statements, reused for statements that differ only in their literals.
#pragma once

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/query/sql/lexer.h"
#include "platform/query/translate/translator.h"

namespace tenora::query {

struct StatementDeleter {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementPtr = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

// A translated statement and its compiled forms that are not running.
struct CachedPlan {
  Plan plan;
  std::vector<StatementPtr> idle;
};

class PlanCache {
 public:
  // The plan of the statement with these tokens; `translate` makes it if there is none yet.
  std::shared_ptr<CachedPlan> Get(const std::vector<Token>& tokens,
                                  const std::function<Plan()>& translate);
  void Clear() { plans_.clear(); }

 private:
  std::unordered_map<std::string, std::shared_ptr<CachedPlan>> plans_;  // by fingerprint
};

}  // namespace tenora::query
