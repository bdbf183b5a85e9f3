#include "platform/query/execute/plan_cache.h"

#include <algorithm>

#include "platform/query/values/sqlite_value.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr std::size_t kMostPlans = 256;

bool IsLiteral(const Token& token) {
  return token.kind == TokenKind::kText || token.kind == TokenKind::kInteger ||
         token.kind == TokenKind::kDecimal || token.kind == TokenKind::kDate;
}

bool IsComparison(const Token& token) {
  if (token.kind == TokenKind::kName) return EqualsNoCase(token.source, "like");
  return token.kind == TokenKind::kSymbol && token.source.find_first_of("=<>") == 0;
}

// With a group by clause, expressions are compared with its keys including their literals.
bool ComparesExpressions(const std::vector<Token>& tokens) {
  return std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
    return token.kind == TokenKind::kName && EqualsNoCase(token.source, "group");
  });
}

// Statements with the same fingerprint have the same plan, each with its own literals bound. Only
// literals in comparisons are left out of the fingerprint: others can be a position or a count.
std::string FingerprintOf(const std::vector<Token>& tokens) {
  constexpr char kSeparator = '\x1f';
  std::string fingerprint;
  const bool whole = ComparesExpressions(tokens);
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (!whole && i > 0 && IsLiteral(tokens[i]) && IsComparison(tokens[i - 1])) {
      fingerprint.push_back('?');
      fingerprint.push_back(TypeLetter(TypeOf(tokens[i].value)));
    } else {
      fingerprint += tokens[i].source;
    }
    fingerprint.push_back(kSeparator);
  }
  return fingerprint;
}

}  // namespace

std::shared_ptr<CachedPlan> PlanCache::Get(const std::vector<Token>& tokens,
                                           const std::function<Plan()>& translate) {
  std::string fingerprint = FingerprintOf(tokens);
  if (const auto known = plans_.find(fingerprint); known != plans_.end()) return known->second;
  auto plan = std::make_shared<CachedPlan>();
  plan->plan = translate();
  if (plans_.size() >= kMostPlans) plans_.clear();
  plans_.emplace(std::move(fingerprint), plan);
  return plan;
}

}  // namespace tenora::query
