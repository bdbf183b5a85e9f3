// Translates whole selects into SQLite text: sources, items, groups, unions, order and top.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/query/translate/expression_translator.h"

namespace tenora::query {

class SelectTranslator : public SubselectTranslator {
 public:
  explicit SelectTranslator(TranslationState& state) : state_(state) {}

  // The whole statement; the columns are named r0, r1, … in SQLite.
  struct Result {
    std::string sql;
    std::vector<OutputColumn> columns = {};
    std::optional<TopRows> top = {};
  };
  Result Translate(const Select& select, const Scope* outer);
  // The same for a top-level statement. Handling ties after "top n" is left to the caller: SQLite
  // then keeps only the first rows, in a fifth of the time that ranking all of them takes.
  Result TranslateStatement(const Select& select);

  Subselect TranslateColumn(const Select& select, const Scope& outer, Type compared_with) override;
  std::string TranslateExists(const Select& select, const Scope& outer) override;

 private:
  struct Item {
    Fragment fragment;
    std::string name;
    std::string alias = {};                  // as given in the statement
    std::string source = {};                 // the table of a column without alias
    const Expression* expression = nullptr;  // null for the columns of *
  };
  // A select without order, its items not yet written.
  struct Body {
    std::vector<Item> items;
    std::string tail;  // from the from clause on
    bool grouped = false;
  };
  struct Key {
    std::string sql;
    Type type = Type::kNull;
    bool descending = false;
  };

  Result TranslateWith(const Select& select, const Scope* outer,
                       std::optional<Type> first_column_type);
  Result TranslateUnion(const Select& select, const Scope* outer, std::optional<Type> first_type);
  Body TranslateBody(const Select& select, Scope& scope);
  // The clause that leaves one row for each combination of rows of the tables that have a field
  // among the items; empty where all tables have. Refuses what it cannot decide.
  std::string DistinctRows(const Select& select, const Scope& scope) const;
  std::string TranslateGroup(const Select& select, const Scope& scope);
  void AddItems(const Select& select, const Scope& scope, ExpressionTranslator& expressions,
                std::vector<Item>& items);
  static void QualifyNames(std::vector<Item>& items);
  void AddAllColumns(const std::string& qualifier, const Scope& scope, std::vector<Item>& items);
  Item MakeItem(const SelectItem& item, const Scope& scope, ExpressionTranslator& expressions,
                std::size_t position);

  std::string TranslateSources(const Source& source, Scope& scope);
  std::string TranslateJoin(const Source& join, Scope& scope);
  std::string TranslateTable(const Source& source, Scope& scope);
  std::string TranslateDerived(const Source& source, Scope& scope);
  // The select of a saved query in place of its name.
  std::string TranslateQuery(const std::shared_ptr<const access::SavedQuery>& query,
                             const Source& source, Scope& scope);
  // Raises what is wrong with a query that cannot be read, or not here.
  void RequireReadable(const access::SavedQuery& query) const;
  std::string AddDerived(const Result& result, const std::string& name, Scope& scope);

  std::vector<Key> TranslateOrder(const Select& select, const std::vector<Item>& items,
                                  ExpressionTranslator& expressions, const Scope& scope,
                                  bool by_output);
  // The index of an order item among the items, found by position, name or expression.
  std::optional<std::size_t> FindItem(const Expression& expression, const std::vector<Item>& items);
  std::string Assemble(const Select& select, const std::vector<Item>& items,
                       const std::string& tail, const std::vector<Key>& order);
  std::string AssembleTop(const Top& top, const std::string& items, std::size_t count,
                          const std::string& tail, const std::vector<Key>& order);
  void CheckSize(const std::string& sql) const;

  TranslationState& state_;
};

}  // namespace tenora::query
