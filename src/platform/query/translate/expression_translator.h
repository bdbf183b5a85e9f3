// Translates expressions into SQLite text of known type.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/query/sql/statement_error.h"
#include "platform/query/sql/syntax.h"
#include "platform/query/translate/fragment.h"
#include "platform/query/translate/scope.h"
#include "platform/query/translate/translator.h"

namespace tenora::query {

// The state shared by the translation of all parts of one statement.
struct TranslationState {
  std::string_view statement;
  Catalogue& catalogue;
  std::vector<Parameter> parameters = {};
  std::vector<std::string> unknown_names = {};  // names that are not columns, without duplicates
  std::size_t next_source = 0;                  // numbers the tables and selects in from clauses
  // The saved queries around what is translated now.
  std::vector<std::shared_ptr<const QueryTokens>> open_queries = {};

  [[noreturn]] void Fail(int number, std::string_view description) const {
    throw StatementError(number, description, statement);
  }
};

// Raises 3061 if names were noted beyond the first `known`.
void RequireKnownNames(const TranslationState& state, std::size_t known);

// Translates the subqueries inside expressions.
class SubselectTranslator {
 public:
  virtual ~SubselectTranslator() = default;
  // SQLite text in brackets and the type of its only column, which is converted where it is
  // compared with currency or a date.
  struct Subselect {
    std::string sql;
    Type type = Type::kNull;
  };
  virtual Subselect TranslateColumn(const Select& select, const Scope& outer,
                                    Type compared_with) = 0;
  virtual std::string TranslateExists(const Select& select, const Scope& outer) = 0;
};

// The context of an expression, which decides whether aggregates and bare columns are allowed.
enum class Place : std::uint8_t {
  kRow,    // where, on, group by: no aggregates
  kGroup,  // items, having and order of a select that groups: columns only grouped or aggregated
};

class ExpressionTranslator {
 public:
  ExpressionTranslator(TranslationState& state, SubselectTranslator& subselects, const Scope& scope,
                       Place place, const std::vector<ExpressionPtr>* group = nullptr)
      : state_(state), subselects_(subselects), scope_(scope), place_(place), group_(group) {}

  Fragment Translate(const Expression& expression);
  // As a condition: true unless 0 or null.
  Fragment TranslateCondition(const Expression& expression);

  // Makes an item known by its alias to the expressions that follow it. A column has precedence.
  void AddAlias(const std::string& name, Fragment fragment, bool aggregate);

  // Whether the expression calls an aggregate outside subqueries.
  static bool HasAggregate(const Expression& expression);

 private:
  Fragment TranslateLiteral(const Expression& expression);
  Fragment TranslateColumn(const Expression& expression);
  Fragment TranslateNegate(const Expression& expression);
  Fragment TranslateChain(const Expression& expression);
  Fragment TranslateLogical(const Expression& expression);
  Fragment TranslateConcat(const Expression& expression);
  Fragment TranslateCompare(const Expression& expression);
  Fragment TranslateBetween(const Expression& expression);
  Fragment TranslateIn(const Expression& expression);
  Fragment TranslateLike(const Expression& expression);
  Fragment TranslateIsNull(const Expression& expression);

  Fragment TranslateArithmetic(const Expression& expression);
  Fragment Add(const Expression& expression, Fragment left, Fragment right);
  Fragment Multiply(Fragment left, Fragment right);
  Fragment Operate(std::string_view function, Type operands, Type result, Fragment left,
                   Fragment right);

  Fragment TranslateCall(const Expression& expression);
  Fragment TranslateAggregate(const Expression& expression);
  Fragment TranslateSum(const Expression& expression, Fragment argument);
  Fragment TranslateChoice(const Expression& expression);
  Fragment TranslateNz(const Expression& expression);
  // "case subject when a then b … else otherwise end", the values converted to one type.
  Fragment CaseOf(std::string_view subject,
                  const std::vector<std::pair<Fragment, Fragment>>& branches, Fragment otherwise);

  Fragment ConvertTo(Fragment fragment, Type type) {
    return Convert(std::move(fragment), type, state_.parameters);
  }
  // The type in which both sides are compared; raises 3464 for text and any other type.
  Type ComparisonType(Type left, Type right) const;
  bool SameExpression(const Expression& left, const Expression& right) const;
  bool IsGroupKey(const Expression& expression) const;
  void NoteUnknownName(const Expression& column);

  struct Alias {
    std::string name;
    Fragment fragment;
    bool aggregate = false;  // contains one
  };
  const Alias* FindAlias(std::string_view name) const;

  TranslationState& state_;
  SubselectTranslator& subselects_;
  const Scope& scope_;
  Place place_;
  const std::vector<ExpressionPtr>* group_;
  std::vector<Alias> aliases_;
  bool in_aggregate_ = false;
  bool in_group_key_ = false;
};

}  // namespace tenora::query
