#include "platform/query/shape.h"

#include <algorithm>

#include "platform/query/storage.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

bool IsLiteral(const Token& token) {
  return token.kind == TokenKind::kText || token.kind == TokenKind::kInteger ||
         token.kind == TokenKind::kDecimal || token.kind == TokenKind::kDate;
}

bool IsComparison(const Token& token) {
  if (token.kind == TokenKind::kName) return EqualsNoCase(token.source, "like");
  return token.kind == TokenKind::kSymbol && token.source.find_first_of("=<>") == 0;
}

// Whether an expression may have to equal one of a group by clause, literals and all.
bool ComparesExpressions(const std::vector<Token>& tokens) {
  return std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
    return token.kind == TokenKind::kName && EqualsNoCase(token.source, "group");
  });
}

}  // namespace

std::string ShapeOf(const std::vector<Token>& tokens) {
  constexpr char kSeparator = '\x1f';
  std::string shape;
  const bool whole = ComparesExpressions(tokens);
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (!whole && i > 0 && IsLiteral(tokens[i]) && IsComparison(tokens[i - 1])) {
      shape.push_back('?');
      shape.push_back(TypeLetter(TypeOf(tokens[i].value)));
    } else {
      shape += tokens[i].source;
    }
    shape.push_back(kSeparator);
  }
  return shape;
}

}  // namespace tenora::query
