// The parts of a parsed statement.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/query/sql/lexer.h"

namespace tenora::query {

struct Select;

enum class ExpressionKind : std::uint8_t {
  kLiteral,     // token
  kConstant,    // true, false, null: value
  kColumn,      // qualifier (may be empty), name
  kCall,        // name, arguments; count(*) has the flag `star`
  kNegate,      // -a
  kNot,         // not a
  kAnd,         // a and b and …
  kOr,          // a or b or …
  kConcat,      // a & b & …
  kArithmetic,  // a operator b: + - * / \ ^ and mod
  kLogical,     // a operator b: xor, eqv, imp
  kCompare,     // a operator b: = <> < > <= >=
  kBetween,     // a between b and c
  kIn,          // a in (b, c, …) or a in (select)
  kLike,        // a like b
  kIsNull,      // a is null
  kExists,      // exists (select)
  kSubquery,    // (select)
  kRowKey,      // the RowKey of the row in the table `qualifier`; has no syntax
};

struct Expression {
  ExpressionKind kind = ExpressionKind::kLiteral;
  std::string_view source;  // the text in the statement
  std::vector<std::unique_ptr<Expression>> arguments;
  std::string qualifier, name;
  std::string operation;  // lower case
  bool negated = false;   // not between, not in, not like, is not null
  bool star = false;
  std::size_t token = 0;  // of a literal: its index among the tokens
  Value value;
  std::unique_ptr<Select> select;
};

using ExpressionPtr = std::unique_ptr<Expression>;

struct SelectItem {
  ExpressionPtr expression;  // null for * and table.*
  std::string qualifier;     // of table.*
  std::string alias;         // empty when none is given
};

struct OrderItem {
  ExpressionPtr expression;
  bool descending = false;
};

enum class JoinKind : std::uint8_t { kCross, kInner, kLeft, kRight };

// A table, a subquery or a join of two sources.
struct Source {
  std::string table, alias;
  std::unique_ptr<Select> select;
  JoinKind join = JoinKind::kCross;
  std::unique_ptr<Source> left, right;  // both set for a join
  ExpressionPtr on;
};

struct Top {
  std::int64_t count = 0;
  bool percent = false;
};

struct Select {
  bool distinct = false;
  bool distinct_rows = false;  // distinctrow
  std::optional<Top> top;
  std::vector<SelectItem> items;
  std::unique_ptr<Source> from;
  ExpressionPtr where;
  std::vector<ExpressionPtr> group;
  ExpressionPtr having;
  // The further selects of a union; `order` then sorts the combined rows.
  struct Union {
    bool all = false;
    std::unique_ptr<Select> select;
  };
  std::vector<Union> unions;
  std::vector<OrderItem> order;
};

// A statement that changes rows.
enum class ActionKind : std::uint8_t { kInsert, kUpdate, kDelete };

struct Action {
  ActionKind kind = ActionKind::kInsert;
  // Of an insert; of a delete from joined tables the one named before "from", else empty.
  std::string table;
  std::unique_ptr<Source> from;         // of an update or delete
  std::vector<std::string> columns;     // of an insert; empty: all, in the table's order
  std::vector<std::string> qualifiers;  // of an update's columns; may be empty texts
  std::vector<ExpressionPtr> values;    // of an insert or update, one a column
  std::unique_ptr<Select> select;       // of an insert, in place of values
  ExpressionPtr where;                  // null: every row
};

}  // namespace tenora::query
