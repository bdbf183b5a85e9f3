// A statement that changes rows: insert, update, delete.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/query/syntax.h"

namespace tenora::query {

enum class ActionKind : std::uint8_t { kInsert, kUpdate, kDelete };

struct Action {
  ActionKind kind = ActionKind::kInsert;
  std::string table;
  std::vector<std::string> columns;   // of an insert; empty: all, in the table's order
  std::vector<ExpressionPtr> values;  // of an insert or update, one a column
  ExpressionPtr where;                // null: every row
};

// `tokens` come from ReadTokens(statement). Raises 3075 (syntax), 3063 (a column
// twice), 3360 (nested too deep) and 3219
// for forms that are not run (insert … select, changes of several tables).
Action ParseAction(std::string_view statement, const std::vector<Token>& tokens);

// What a condition asks of plain columns, where it is nothing but "column = literal" joined by
// "and"; false for every other condition.
struct PlainTest {
  std::string column;
  std::size_t token = 0;  // of the literal
};
bool ReadPlainTests(const Expression& condition, std::string_view table,
                    std::vector<PlainTest>& tests);

}  // namespace tenora::query
