#include "platform/query/translate/select_translator.h"

#include <algorithm>
#include <set>
#include <span>
#include <unordered_map>

#include "platform/query/sql/parser.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr int kCircularReference = 3102;
// Of saved queries that name one another.
constexpr std::size_t kMostQueries = 32;

// Order items are written twice, so nested selects can double in size at every level.
constexpr std::size_t kLongestText = 512 * 1024;

std::string OutputName(std::size_t position) { return "r" + std::to_string(position); }

// True sorts after false, although it is the lower number.
std::string OrderKey(const Fragment& fragment) {
  if (fragment.type == Type::kBoolean) return "- " + Bracketed(fragment, Binding::kWhole);
  return Collated(fragment);
}

std::string Listed(const std::vector<std::string>& parts) {
  std::string list;
  for (const std::string& part : parts) list += (list.empty() ? "" : ", ") + part;
  return list;
}

std::string OrderList(const auto& keys) {
  std::string list;
  for (const auto& key : keys)
    list += (list.empty() ? "" : ", ") + key.sql + (key.descending ? " desc" : "");
  return list;
}

// Why the rows of such a query cannot be read; empty for queries that can.
std::string_view RefusalOf(access::QueryKind kind) {
  switch (kind) {
    case access::QueryKind::kSelect:
    case access::QueryKind::kUnion:
      return {};
    case access::QueryKind::kMakeTable:
      return "a query that makes a table and returns no rows";
    case access::QueryKind::kAppend:
      return "a query that inserts rows and returns none";
    case access::QueryKind::kUpdate:
      return "a query that updates rows and returns none";
    case access::QueryKind::kDelete:
      return "a query that deletes rows and returns none";
    case access::QueryKind::kCrosstab:
      return "a crosstab (TRANSFORM … PIVOT), which is not supported: group by both fields";
    case access::QueryKind::kDefinition:
      return "a query that changes definitions and returns no rows";
    case access::QueryKind::kPassThrough:
      return "a pass-through query, which a server runs in its own language";
  }
  return "a query of an unknown kind";
}

// Adds the tables of this select that the expression takes fields from.
void AddShownSources(const Expression& expression, const Scope& scope,
                     std::set<const ScopeSource*>& shown) {
  if (expression.kind == ExpressionKind::kColumn) {
    const Scope::Match match = scope.Find(expression.qualifier, expression.name);
    if (match.source != nullptr && !match.outer) shown.insert(match.source);
  }
  for (const ExpressionPtr& argument : expression.arguments)
    AddShownSources(*argument, scope, shown);
}

bool HasSelect(const Expression& expression) {
  return expression.select != nullptr ||
         std::ranges::any_of(expression.arguments,
                             [](const ExpressionPtr& argument) { return HasSelect(*argument); });
}

}  // namespace

void SelectTranslator::CheckSize(const std::string& sql) const {
  if (sql.size() > kLongestText) state_.Fail(engine_error::kTooComplex, "Query is too complex.");
}

SelectTranslator::Result SelectTranslator::Translate(const Select& select, const Scope* outer) {
  return TranslateWith(select, outer, std::nullopt);
}

SelectTranslator::Result SelectTranslator::TranslateStatement(const Select& select) {
  const bool plain = select.unions.empty() && !select.distinct && !select.order.empty();
  if (!plain || !select.top || select.top->percent) return Translate(select, nullptr);
  Scope scope(nullptr);
  const Body body = TranslateBody(select, scope);
  ExpressionTranslator expressions(state_, *this, scope, body.grouped ? Place::kGroup : Place::kRow,
                                   &select.group);
  const std::vector<Key> order = TranslateOrder(select, body.items, expressions, scope, false);
  Result result;
  result.top = TopRows{.count = select.top->count, .keys = {}};
  std::vector<std::string> parts;
  for (const Item& item : body.items) {
    parts.push_back(item.fragment.sql);
    result.columns.push_back({.name = item.name, .type = item.fragment.type});
  }
  for (const Key& key : order) {
    parts.push_back(key.sql);
    result.top->keys.push_back(key.type);
  }
  result.sql = "select " + Listed(parts) + body.tail + " order by " + OrderList(order) +
               " limit ?" + std::to_string(state_.parameters.size() + 1);
  CheckSize(result.sql);
  return result;
}

SelectTranslator::Subselect SelectTranslator::TranslateColumn(const Select& select,
                                                              const Scope& outer,
                                                              Type compared_with) {
  // An integer or boolean that is compared with currency or a date is converted to it, any number
  // that is compared with a decimal likewise.
  std::optional<Type> wanted;
  if (compared_with == Type::kCurrency || compared_with == Type::kDate ||
      compared_with == Type::kDecimal)
    wanted = compared_with;
  Result result = TranslateWith(select, &outer, wanted);
  if (result.columns.size() != 1)
    state_.Fail(engine_error::kSubqueryColumns,
                "You have written a subquery that can return more than one field without using "
                "the EXISTS reserved word in the main query's FROM clause.");
  return {.sql = "(" + result.sql + ")", .type = result.columns[0].type};
}

std::string SelectTranslator::TranslateExists(const Select& select, const Scope& outer) {
  return "(" + TranslateWith(select, &outer, std::nullopt).sql + ")";
}

SelectTranslator::Result SelectTranslator::TranslateWith(const Select& select, const Scope* outer,
                                                         std::optional<Type> first_column_type) {
  if (!select.unions.empty()) return TranslateUnion(select, outer, first_column_type);
  Scope scope(outer);
  Body body = TranslateBody(select, scope);
  const auto converts = [&](Type type) {
    const bool fraction = type == Type::kDouble || type == Type::kDecimal;
    return IsNumber(type) && (!fraction || first_column_type == Type::kDecimal);
  };
  if (first_column_type && body.items.size() == 1 && converts(body.items[0].fragment.type))
    body.items[0].fragment =
        Convert(std::move(body.items[0].fragment), *first_column_type, state_.parameters);
  ExpressionTranslator expressions(state_, *this, scope, body.grouped ? Place::kGroup : Place::kRow,
                                   &select.group);
  const std::vector<Key> order =
      TranslateOrder(select, body.items, expressions, scope, select.distinct);
  Result result{.sql = Assemble(select, body.items, body.tail, order)};
  for (const Item& item : body.items)
    result.columns.push_back({.name = item.name, .type = item.fragment.type});
  CheckSize(result.sql);
  return result;
}

SelectTranslator::Result SelectTranslator::TranslateUnion(const Select& select, const Scope* outer,
                                                          std::optional<Type> first_type) {
  std::vector<const Select*> parts{&select};
  for (const Select::Union& part : select.unions) parts.push_back(part.select.get());
  std::vector<Body> bodies;
  for (const Select* part : parts) {
    Scope scope(outer);
    bodies.push_back(TranslateBody(*part, scope));
    if (bodies.back().items.size() != bodies[0].items.size())
      state_.Fail(engine_error::kUnionColumns,
                  "The number of columns in the two selected tables or queries of a union query "
                  "do not match.");
  }
  // The type of a column can hold the values of all parts.
  Result result;
  std::vector<Item> output;
  for (std::size_t i = 0; i < bodies[0].items.size(); ++i) {
    Type type = i == 0 && first_type ? *first_type : Type::kNull;
    for (const Body& body : bodies) type = CommonType(type, body.items[i].fragment.type);
    for (Body& body : bodies)
      body.items[i].fragment = Convert(std::move(body.items[i].fragment), type, state_.parameters);
    Item item = bodies[0].items[i];
    item.fragment = {.sql = OutputName(i), .type = type};
    result.columns.push_back({.name = item.name, .type = type});
    output.push_back(std::move(item));
  }
  std::string sql;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) sql += select.unions[i - 1].all ? " union all " : " union ";
    sql += "select * from (" + Assemble(*parts[i], bodies[i].items, bodies[i].tail, {}) + ")";
  }
  Scope scope(outer);
  ExpressionTranslator expressions(state_, *this, scope, Place::kRow);
  const std::vector<Key> order = TranslateOrder(select, output, expressions, scope, true);
  result.sql = "select * from (" + sql + ")";
  if (!order.empty()) result.sql += " order by " + OrderList(order);
  CheckSize(result.sql);
  return result;
}

SelectTranslator::Body SelectTranslator::TranslateBody(const Select& select, Scope& scope) {
  Body body;
  if (select.from != nullptr) body.tail = " from " + TranslateSources(*select.from, scope);
  if (select.where != nullptr) {
    ExpressionTranslator conditions(state_, *this, scope, Place::kRow);
    body.tail += " where " + conditions.TranslateCondition(*select.where).sql;
  }
  const auto aggregates = [](const ExpressionPtr& expression) {
    return expression != nullptr && ExpressionTranslator::HasAggregate(*expression);
  };
  body.grouped = !select.group.empty() || select.having != nullptr ||
                 std::any_of(select.items.begin(), select.items.end(),
                             [&](const SelectItem& item) { return aggregates(item.expression); });
  body.tail += TranslateGroup(select, scope);
  ExpressionTranslator expressions(state_, *this, scope, body.grouped ? Place::kGroup : Place::kRow,
                                   &select.group);
  if (select.having != nullptr)
    body.tail += " having " + expressions.TranslateCondition(*select.having).sql;
  AddItems(select, scope, expressions, body.items);
  // A select that groups has no rows of its tables to distinguish.
  if (select.distinct_rows && !body.grouped) body.tail += DistinctRows(select, scope);
  return body;
}

std::string SelectTranslator::DistinctRows(const Select& select, const Scope& scope) const {
  std::set<const ScopeSource*> shown, ordering;
  bool clear = true;
  for (const SelectItem& item : select.items) {
    for (const ScopeSource& source : scope.sources()) {
      const bool all = item.qualifier.empty() || EqualsNoCase(item.qualifier, source.name);
      if (item.expression == nullptr && all) shown.insert(&source);
    }
    if (item.expression == nullptr) continue;
    AddShownSources(*item.expression, scope, shown);
    clear = clear && !HasSelect(*item.expression);
  }
  if (shown.size() == scope.sources().size()) return {};
  for (const OrderItem& order : select.order) {
    AddShownSources(*order.expression, scope, ordering);
    clear = clear && !HasSelect(*order.expression);
  }
  std::vector<std::string> keys;
  for (const ScopeSource* const source : shown) keys.push_back(source->row_key);
  clear = clear && std::ranges::includes(shown, ordering) && !keys.empty() &&
          std::ranges::find(keys, "") == keys.end();
  if (!clear)
    state_.Fail(engine_error::kNotASelect,
                "Invalid SQL statement; DISTINCTROW is supported only if fields of tables are "
                "selected, and the rows sorted by no others: use DISTINCT, or IN with a select.");
  return " group by " + Listed(keys);
}

std::string SelectTranslator::TranslateGroup(const Select& select, const Scope& scope) {
  std::vector<std::string> keys;
  ExpressionTranslator expressions(state_, *this, scope, Place::kRow);
  for (const ExpressionPtr& key : select.group) {
    const Fragment fragment = AsValue(expressions.Translate(*key));
    // SQLite would interpret a bare number as a position.
    keys.push_back(fragment.parameter != 0 ? "+" + fragment.sql : Collated(fragment));
  }
  // Without keys a having clause still makes one group of all rows.
  if (keys.empty()) return select.having == nullptr ? "" : " group by null";
  return " group by " + Listed(keys);
}

void SelectTranslator::AddItems(const Select& select, const Scope& scope,
                                ExpressionTranslator& expressions, std::vector<Item>& items) {
  for (std::size_t i = 0; i < select.items.size(); ++i) {
    const SelectItem& item = select.items[i];
    if (item.expression != nullptr) {
      items.push_back(MakeItem(item, scope, expressions, i));
      if (!item.alias.empty())
        expressions.AddAlias(item.alias, items.back().fragment,
                             ExpressionTranslator::HasAggregate(*item.expression));
      continue;
    }
    if (!select.group.empty())
      state_.Fail(engine_error::kNotGrouped, "Cannot group on fields selected with '*'.");
    AddAllColumns(item.qualifier, scope, items);
  }
  if (items.empty())
    state_.Fail(engine_error::kSyntax, "Query must have at least one destination field.");
  QualifyNames(items);
}

// Columns of the same name from several tables are qualified with the table names.
void SelectTranslator::QualifyNames(std::vector<Item>& items) {
  std::unordered_map<std::string, std::set<std::string>> columns;  // SQLite text, by name
  for (const Item& item : items)
    if (!item.source.empty()) columns[ToLower(item.name)].insert(item.fragment.sql);
  for (Item& item : items)
    if (!item.source.empty() && columns[ToLower(item.name)].size() > 1)
      item.name = item.source + "." + item.name;
}

void SelectTranslator::AddAllColumns(const std::string& qualifier, const Scope& scope,
                                     std::vector<Item>& items) {
  if (!qualifier.empty() && scope.FindSource(qualifier) == nullptr)
    state_.Fail(engine_error::kNoSuchTable,
                "The database engine cannot find the "
                "input table or query '" +
                    qualifier + "'.");
  for (const ScopeSource& source : scope.sources()) {
    if (!qualifier.empty() && !EqualsNoCase(source.name, qualifier)) continue;
    for (const ScopeColumn& column : source.columns) {
      Item item;
      item.fragment = {.sql = column.sql, .type = column.type, .column = true};
      item.name = column.name;
      item.source = source.name;
      items.push_back(std::move(item));
    }
  }
}

SelectTranslator::Item SelectTranslator::MakeItem(const SelectItem& item, const Scope& scope,
                                                  ExpressionTranslator& expressions,
                                                  std::size_t position) {
  constexpr std::size_t kFirstUnnamed = 1000;
  Item result{.fragment = AsValue(expressions.Translate(*item.expression)),
              .name = item.alias,
              .alias = item.alias,
              .expression = item.expression.get()};
  if (!result.name.empty()) return result;
  result.name = "Expr" + std::to_string(kFirstUnnamed + position);
  if (item.expression->kind != ExpressionKind::kColumn) return result;
  const Scope::Match match = scope.Find(item.expression->qualifier, item.expression->name);
  if (match.column == nullptr) return result;
  result.name = match.column->name;
  if (match.source != nullptr) result.source = match.source->name;
  return result;
}

std::string SelectTranslator::TranslateSources(const Source& source, Scope& scope) {
  if (source.left != nullptr) return TranslateJoin(source, scope);
  return source.select != nullptr ? TranslateDerived(source, scope) : TranslateTable(source, scope);
}

std::string SelectTranslator::TranslateJoin(const Source& join, Scope& scope) {
  const std::string left = TranslateSources(*join.left, scope);
  const std::string right = TranslateSources(*join.right, scope);
  // A chain of joins on the left needs no brackets.
  const bool left_is_join = join.left->left != nullptr;
  const bool right_is_join = join.right->left != nullptr;
  if (join.join == JoinKind::kCross)
    return left + " join " + (right_is_join ? "(" + right + ")" : right);
  ExpressionTranslator expressions(state_, *this, scope, Place::kRow);
  const std::string on = " on " + expressions.TranslateCondition(*join.on).sql;
  if (join.join == JoinKind::kRight)
    return right + " left join " + (left_is_join ? "(" + left + ")" : left) + on;
  return left + (join.join == JoinKind::kLeft ? " left join " : " join ") +
         (right_is_join ? "(" + right + ")" : right) + on;
}

std::string SelectTranslator::TranslateTable(const Source& source, Scope& scope) {
  const Catalogue::Entry entry = state_.catalogue.FindTable(source.table);
  if (entry.query != nullptr) return TranslateQuery(entry.query, source, scope);
  if (entry.table == nullptr)
    state_.Fail(engine_error::kNoSuchTable,
                "The database engine cannot find the input table or query '" + source.table +
                    "'. Make sure it exists and that its name is spelled "
                    "correctly.");
  const std::string alias = "s" + std::to_string(state_.next_source++);
  ScopeSource added{.name = source.alias.empty() ? entry.table->name() : source.alias,
                    .row_key = alias + ".rowid"};
  for (std::size_t i = 0; i < entry.table->columns().size(); ++i) {
    const SourceColumn& column = entry.table->columns()[i];
    added.columns.push_back(
        {.name = column.name, .type = column.type, .sql = alias + ".c" + std::to_string(i)});
  }
  const std::span<const std::string> withheld = entry.table->withheld();
  added.withheld.assign(withheld.begin(), withheld.end());
  if (scope.FindSource(added.name) != nullptr)
    state_.Fail(engine_error::kSyntax,
                "Duplicate table name '" + added.name + "' in the FROM clause.");
  scope.Add(std::move(added));
  return "t" + std::to_string(entry.number) + " as " + alias;
}

std::string SelectTranslator::TranslateDerived(const Source& source, Scope& scope) {
  // A subquery in the from clause cannot see the enclosing select.
  const Result result = Translate(*source.select, nullptr);
  return AddDerived(result, source.alias, scope);
}

std::string SelectTranslator::AddDerived(const Result& result, const std::string& name,
                                         Scope& scope) {
  const std::string alias = "s" + std::to_string(state_.next_source++);
  ScopeSource added{.name = name};
  for (std::size_t i = 0; i < result.columns.size(); ++i)
    added.columns.push_back({.name = result.columns[i].name,
                             .type = result.columns[i].type,
                             .sql = alias + ".r" + std::to_string(i)});
  scope.Add(std::move(added));
  return "(" + result.sql + ") as " + alias;
}

void SelectTranslator::RequireReadable(const access::SavedQuery& query) const {
  const std::string_view refusal = RefusalOf(query.kind);
  if (!refusal.empty())
    state_.Fail(engine_error::kNotASelect,
                "Invalid SQL statement; '" + query.name + "' is " + std::string(refusal) + ".");
  if (!query.parameters.empty())
    state_.Fail(engine_error::kTooFewParameters,
                "Too few parameters. Expected " + std::to_string(query.parameters.size()) +
                    ". Query '" + query.name + "' asks for " + Listed(query.parameters) +
                    ": run its statement with values in their place.");
  const auto same = [&](const auto& open) { return EqualsNoCase(open->query->name, query.name); };
  if (std::ranges::any_of(state_.open_queries, same))
    state_.Fail(kCircularReference, "Circular reference caused by '" + query.name + "'.");
  if (state_.open_queries.size() == kMostQueries)
    state_.Fail(engine_error::kTooComplex, "Query is too complex.");
}

std::string SelectTranslator::TranslateQuery(const std::shared_ptr<const access::SavedQuery>& query,
                                             const Source& source, Scope& scope) {
  RequireReadable(*query);
  const std::string_view outer = state_.statement;
  const std::size_t outer_unknown = state_.unknown_names.size();
  state_.statement = query->text;
  try {
    const auto opened =
        std::make_shared<const QueryTokens>(QueryTokens{query, ReadTokens(query->text)});
    state_.open_queries.push_back(opened);
    const Result result = Translate(*ParseSelect(query->text, opened->tokens), nullptr);
    RequireKnownNames(state_, outer_unknown);
    state_.open_queries.pop_back();
    state_.statement = outer;
    return AddDerived(result, source.alias.empty() ? query->name : source.alias, scope);
  } catch (const RuntimeError& error) {
    throw RuntimeError(error.number(),
                       "Query '" + query->name + "': " + std::string(error.description()),
                       error.source());
  }
}

std::vector<SelectTranslator::Key> SelectTranslator::TranslateOrder(
    const Select& select, const std::vector<Item>& items, ExpressionTranslator& expressions,
    const Scope& scope, bool by_output) {
  std::vector<Key> keys;
  for (const OrderItem& order : select.order) {
    const Expression& expression = *order.expression;
    const bool column = expression.kind == ExpressionKind::kColumn;
    const bool position = expression.kind == ExpressionKind::kLiteral &&
                          std::holds_alternative<std::int64_t>(expression.value);
    Fragment fragment;
    if (by_output || position ||
        (column && scope.Find(expression.qualifier, expression.name).column == nullptr)) {
      const std::optional<std::size_t> item = FindItem(expression, items);
      if (item) {
        fragment = items[*item].fragment;
        if (by_output) fragment = {.sql = OutputName(*item), .type = fragment.type};
      } else if (column && !by_output) {
        fragment = expressions.Translate(expression);  // notes the unknown name
      } else {
        state_.Fail(engine_error::kOrderConflict, "ORDER BY clause (" +
                                                      std::string(expression.source) +
                                                      ") conflicts with the selected fields.");
      }
    } else {
      fragment = AsValue(expressions.Translate(expression));
    }
    keys.push_back(
        {.sql = OrderKey(fragment), .type = fragment.type, .descending = order.descending});
  }
  return keys;
}

std::optional<std::size_t> SelectTranslator::FindItem(const Expression& expression,
                                                      const std::vector<Item>& items) {
  if (expression.kind == ExpressionKind::kLiteral) {
    const auto* const position = std::get_if<std::int64_t>(&expression.value);
    if (position == nullptr || *position < 1 || *position > static_cast<std::int64_t>(items.size()))
      return std::nullopt;
    return static_cast<std::size_t>(*position - 1);
  }
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Item& item = items[i];
    const bool named = expression.kind == ExpressionKind::kColumn &&
                       EqualsNoCase(expression.name, item.alias.empty() ? item.name : item.alias);
    const bool same = item.expression != nullptr && !item.expression->source.empty() &&
                      EqualsNoCase(item.expression->source, expression.source);
    if (named || same) return i;
  }
  return std::nullopt;
}

std::string SelectTranslator::Assemble(const Select& select, const std::vector<Item>& items,
                                       const std::string& tail, const std::vector<Key>& order) {
  std::vector<std::string> parts;
  for (std::size_t i = 0; i < items.size(); ++i)
    parts.push_back(Collated(items[i].fragment) + " as " + OutputName(i));
  const std::string list = Listed(parts);
  const std::string ordered = order.empty() ? "" : " order by " + OrderList(order);
  if (!select.distinct)
    return select.top ? AssembleTop(*select.top, list, items.size(), tail, order)
                      : "select " + list + tail + ordered;
  const std::string distinct = "select distinct " + list + tail;
  if (!select.top) return distinct + ordered;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < items.size(); ++i) names.push_back(OutputName(i));
  return AssembleTop(*select.top, Listed(names), items.size(), " from (" + distinct + ")", order);
}

// With an order, rows that tie with the last requested one are included: the rank of a row is one
// more than the number of rows that sort before it.
std::string SelectTranslator::AssembleTop(const Top& top, const std::string& items,
                                          std::size_t count, const std::string& tail,
                                          const std::vector<Key>& order) {
  const std::string wanted = std::to_string(top.count);
  if (order.empty() && !top.percent) return "select " + items + tail + " limit " + wanted;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) names.push_back(OutputName(i));
  const std::string rank =
      order.empty() ? "row_number() over ()" : "rank() over (order by " + OrderList(order) + ")";
  std::string sql =
      "select " + Listed(names) + " from (select " + items + ", " + rank + " as rank_of_row";
  if (top.percent) sql += ", count(*) over () as row_total";
  sql += tail + ") where ";
  // A percentage of the rows is rounded up.
  sql +=
      top.percent ? "(rank_of_row - 1) * 100 < row_total * " + wanted : "rank_of_row <= " + wanted;
  return sql + " order by rank_of_row";
}

}  // namespace tenora::query
