// Reads statements of the engine's dialect.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "platform/query/sql/syntax.h"

namespace tenora::query {

// `tokens` come from ReadTokens(statement). A statement that is only a table name selects all of
// it. Raises 3075 (syntax), 3129 (not a statement), 3219 (a statement that returns no rows) and
// 3360 (nested too deeply).
std::unique_ptr<Select> ParseSelect(std::string_view statement, const std::vector<Token>& tokens);

// An expression by itself. Raises 3075 and 3360.
ExpressionPtr ParseExpression(std::string_view expression, const std::vector<Token>& tokens);

// An insert, update or delete statement. Raises 3075 (syntax), 3063 (a column named twice), 3346
// (not as many values as columns), 3360 (nested too deeply) and 3219 for other statements.
Action ParseAction(std::string_view statement, const std::vector<Token>& tokens);

}  // namespace tenora::query
