#include "platform/query/execute/transaction.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>

#include "platform/query/execute/row_list.h"
#include "platform/query/execute/statement_recordset.h"
#include "platform/query/sql/parser.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

using access::Column;
using access::ColumnType;

constexpr std::int64_t kUnknownRowCount = 0;
constexpr int kDuplicateDestination = 3063, kNoTableToDelete = 3128, kDifferentCounts = 3346;

template <typename T>
bool IsInRange(std::int64_t number) {
  return number >= std::numeric_limits<T>::min() && number <= std::numeric_limits<T>::max();
}

bool IsExact(std::int64_t number, ColumnType type) {
  constexpr std::int64_t kExactInSingle = 1 << 24, kExactInDouble = std::int64_t{1} << 53;
  switch (type) {
    case ColumnType::kByte:
      return IsInRange<std::uint8_t>(number);
    case ColumnType::kInteger:
      return IsInRange<std::int16_t>(number);
    case ColumnType::kLong:
    case ColumnType::kCurrency:
      return IsInRange<std::int32_t>(number);
    case ColumnType::kSingle:
      return std::abs(number) <= kExactInSingle;
    case ColumnType::kDouble:
      return std::abs(number) <= kExactInDouble;
    default:
      return false;
  }
}

// Whether a look-up by this value finds the same rows as a comparison with it: the column can store
// it exactly. All others are left to a select, which handles rounding, times of day and wrong
// types.
bool FitsColumn(const Value& value, const Column& column) {
  if (const auto* whole = std::get_if<std::int64_t>(&value)) return IsExact(*whole, column.type);
  if (std::holds_alternative<double>(value)) return column.type == ColumnType::kDouble;
  if (std::holds_alternative<Currency>(value)) return column.type == ColumnType::kCurrency;
  if (const auto* date = std::get_if<Date>(&value)) {
    return column.type == ColumnType::kDateTime && std::trunc(date->serial()) == date->serial();
  }
  const auto* text = std::get_if<std::string>(&value);
  // A text has no more UTF-16 units than UTF-8 bytes.
  return text != nullptr && column.type == ColumnType::kText && text->size() * 2 <= column.length;
}

std::optional<std::size_t> FindColumn(const std::vector<Column>& columns, std::string_view name) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (EqualsNoCase(columns[i].name, name)) return i;
  }
  return std::nullopt;
}

// The value of an expression that is a literal, a constant or a negative number.
std::optional<Value> PlainValue(const Expression& expression, const std::vector<Token>& tokens) {
  switch (expression.kind) {
    case ExpressionKind::kLiteral:
      return tokens.at(expression.token).value;
    case ExpressionKind::kConstant:
      return expression.value;
    case ExpressionKind::kNegate: {
      const Expression& operand = *expression.arguments.at(0);
      if (operand.kind != ExpressionKind::kLiteral) return std::nullopt;
      const Value& number = tokens.at(operand.token).value;
      if (const auto* whole = std::get_if<std::int64_t>(&number)) return -*whole;
      if (const auto* fraction = std::get_if<double>(&number)) return -*fraction;
      return std::nullopt;
    }
    default:
      return std::nullopt;
  }
}

// The values of an action if all of them are plain.
std::optional<std::vector<access::ColumnValue>> PlainValues(const Action& action,
                                                            const std::vector<Token>& tokens) {
  std::vector<access::ColumnValue> values;
  for (std::size_t i = 0; i < action.values.size(); ++i) {
    std::optional<Value> value = PlainValue(*action.values[i], tokens);
    if (!value) return std::nullopt;
    values.push_back({action.columns[i], *std::move(value)});
  }
  return values;
}

void AddItem(Select& select, ExpressionPtr expression) {
  select.items.emplace_back();
  select.items.back().expression = std::move(expression);
}

// Adds to `equal` the columns and values of a condition that consists of "column = literal" joined
// by "and", each literal one that its column can store exactly; false for every other condition.
bool ReadEqualities(const Expression& condition, std::string_view table_name,
                    const access::WritableTable& table, const std::vector<Token>& tokens,
                    std::vector<access::ColumnValue>& equal) {
  if (condition.kind == ExpressionKind::kAnd) {
    return std::ranges::all_of(condition.arguments, [&](const ExpressionPtr& part) {
      return ReadEqualities(*part, table_name, table, tokens, equal);
    });
  }
  if (condition.kind != ExpressionKind::kCompare || condition.operation != "=") return false;
  const Expression& name = *condition.arguments.at(0);
  const Expression& literal = *condition.arguments.at(1);
  if (name.kind != ExpressionKind::kColumn || literal.kind != ExpressionKind::kLiteral) {
    return false;
  }
  if (!name.qualifier.empty() && !EqualsNoCase(name.qualifier, table_name)) return false;
  const std::optional<std::size_t> column = FindColumn(table.columns(), name.name);
  const Value& value = tokens.at(literal.token).value;
  if (!column || !FitsColumn(value, table.columns()[*column])) return false;
  equal.push_back({name.name, value});
  return true;
}

// Adds the tables and subqueries of a from clause.
void AddLeaves(const Source& source, std::vector<const Source*>& leaves) {
  if (source.left == nullptr) {
    leaves.push_back(&source);
    return;
  }
  AddLeaves(*source.left, leaves);
  AddLeaves(*source.right, leaves);
}

const std::string& NameOf(const Source& leaf) {
  return leaf.alias.empty() ? leaf.table : leaf.alias;
}

bool HasSelect(const Expression& expression) {
  return expression.select != nullptr ||
         std::ranges::any_of(expression.arguments,
                             [](const ExpressionPtr& argument) { return HasSelect(*argument); });
}

}  // namespace

Transaction::Transaction(const std::filesystem::path& path, std::function<FileConnection()> connect)
    : connect_(std::move(connect)), transaction_(access::WriteTransaction::Begin(path)) {}

std::int64_t Transaction::Execute(std::string_view statement) {
  RequireWhole();
  const std::vector<Token> tokens = ReadTokens(statement);
  Action action = ParseAction(statement, tokens);
  if (action.kind == ActionKind::kInsert) return Insert(std::move(action), statement, tokens);
  const bool deletes = action.kind == ActionKind::kDelete;
  const Target target = FindTarget(action, statement);
  access::WritableTable& table = *target.table;
  const std::vector<Change> changes = FindChanges(std::move(action), target, statement, tokens);
  for (const Change& change : changes) {
    // An error after the first row leaves this set.
    half_done_ = &change != &changes.front();
    // From here on the table cache is out of date.
    changed_tables_.insert(table.name());
    if (deletes) {
      table.Delete(change.row);
    } else {
      table.Update(change.row, change.values);
    }
  }
  half_done_ = false;
  return static_cast<std::int64_t>(changes.size());
}

void Transaction::RequireWhole() const {
  if (!half_done_) return;
  throw RuntimeError(engine_error::kInvalidOperation,
                     "Invalid operation. A statement of this transaction failed with some of its "
                     "rows changed: it can only be rolled back.",
                     "DAO.Database");
}

access::CommitStates Transaction::Commit() {
  RequireWhole();
  return transaction_->Commit();
}

void Transaction::RequireUnchanged(std::string_view statement) const {
  if (!changed()) return;
  throw StatementError(engine_error::kInvalidOperation,
                       "Invalid operation. After an earlier change in this transaction, only "
                       "conditions of the form column = literal are supported.",
                       statement);
}

std::int64_t Transaction::Insert(Action action, std::string_view statement,
                                 const std::vector<Token>& tokens) {
  access::WritableTable& table = transaction_->Table(action.table);
  const std::vector<Values> rows = InsertedValues(action, table, statement, tokens);
  if (rows.empty()) return 0;
  const Values defaults = Defaults(table, rows.front());
  for (const Values& row : rows) {
    // An error after the first row leaves this set.
    half_done_ = &row != &rows.front();
    changed_tables_.insert(table.name());
    Values values = row;
    values.insert(values.end(), defaults.begin(), defaults.end());
    table.Insert(values);
  }
  half_done_ = false;
  return static_cast<std::int64_t>(rows.size());
}

std::vector<Transaction::Values> Transaction::InsertedValues(Action& action,
                                                             const access::WritableTable& table,
                                                             std::string_view statement,
                                                             const std::vector<Token>& tokens) {
  std::vector<std::string>& names = action.columns;
  const auto require_count = [&](std::size_t values) {
    if (names.size() == values) return;
    throw StatementError(kDifferentCounts,
                         "Number of query values and destination fields are not the same.",
                         statement);
  };
  std::vector<Values> rows;
  if (action.select == nullptr) {
    if (names.empty())
      for (const Column& column : table.columns()) names.push_back(column.name);
    require_count(action.values.size());
    Values& values = rows.emplace_back();
    for (std::size_t i = 0; i < names.size(); ++i)
      values.push_back({names[i], Evaluate(std::move(action.values[i]), statement, tokens)});
    return rows;
  }
  RequireUnchanged(statement);
  StatementRecordset found(connect_().connection, *action.select, statement, tokens);
  // Without names the fields go to the columns of their own names.
  if (names.empty()) names = found.FieldNames();
  require_count(found.FieldNames().size());
  for (auto name = names.begin(); name != names.end(); ++name) {
    if (std::any_of(names.begin(), name,
                    [&](const std::string& other) { return EqualsNoCase(other, *name); }))
      throw StatementError(kDuplicateDestination, "Duplicate output destination '" + *name + "'.",
                           statement);
  }
  for (; !found.EndOfFile(); found.MoveNext()) {
    Values& values = rows.emplace_back();
    for (std::size_t i = 0; i < names.size(); ++i) values.push_back({names[i], found.Field(i)});
  }
  return rows;
}

Transaction::Values Transaction::Defaults(const access::WritableTable& table, const Values& named) {
  Values values;
  const std::vector<Column>& columns = table.columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const auto names_it = [&](const auto& value) {
      return EqualsNoCase(value.column, columns[i].name);
    };
    if (columns[i].auto_number || std::ranges::any_of(named, names_it)) continue;
    const std::string stored = table.DefaultValue(i);
    std::string_view expression = TrimBlanks(stored);
    if (expression.starts_with('=')) expression.remove_prefix(1);
    if (expression.empty()) continue;
    try {
      values.push_back({columns[i].name, EvaluateDefault(expression)});
    } catch (const RuntimeError& why) {
      throw RuntimeError(access::engine_error::kNotUpdatable,
                         "Operation must use an updateable query. Table '" + table.name() +
                             "': the default value of column '" + columns[i].name +
                             "' cannot be evaluated: " + std::string(why.description()),
                         "DAO.Database");
    }
  }
  return values;
}

Value Transaction::EvaluateDefault(std::string_view expression) {
  // Words that the engine accepts in default values, but not in statements.
  for (const std::string_view yes : {"yes", "on"}) {
    if (EqualsNoCase(expression, yes)) return true;
  }
  for (const std::string_view no : {"no", "off"}) {
    if (EqualsNoCase(expression, no)) return false;
  }
  const std::vector<Token> tokens = ReadTokens(expression);
  return Evaluate(ParseExpression(expression, tokens), expression, tokens);
}

Value Transaction::Evaluate(ExpressionPtr expression, std::string_view statement,
                            const std::vector<Token>& tokens) {
  if (std::optional<Value> plain = PlainValue(*expression, tokens)) return *std::move(plain);
  if (HasSelect(*expression)) RequireUnchanged(statement);
  Select select;
  AddItem(select, std::move(expression));
  return StatementRecordset(connect_().connection, select, statement, tokens).Field(0);
}

Transaction::Target Transaction::FindTarget(const Action& action, std::string_view statement) {
  std::vector<const Source*> leaves;
  AddLeaves(*action.from, leaves);
  const auto named = [&](std::string_view name) {
    const auto found = std::ranges::find_if(
        leaves, [&](const Source* leaf) { return EqualsNoCase(NameOf(*leaf), name); });
    if (found == leaves.end())
      throw StatementError(engine_error::kNoSuchTable,
                           "The database engine cannot find the input table or query '" +
                               std::string(name) + "' among those of the statement.",
                           statement);
    return *found;
  };
  // The table that has a column of an update.
  const auto having = [&](std::size_t column) -> const Source* {
    if (!action.qualifiers[column].empty()) return named(action.qualifiers[column]);
    if (leaves.size() == 1) return leaves.front();
    const Source* owner = nullptr;
    for (const Source* const leaf : leaves) {
      if (leaf->select != nullptr) continue;
      if (!FindColumn(transaction_->Table(leaf->table).columns(), action.columns[column])) continue;
      if (owner != nullptr)
        throw StatementError(engine_error::kAmbiguousName,
                             "The specified field '" + action.columns[column] +
                                 "' could refer to more than one table of the update.",
                             statement);
      owner = leaf;
    }
    return owner == nullptr ? leaves.front() : owner;
  };
  const Source* changed = leaves.front();
  if (action.kind == ActionKind::kDelete) {
    if (!action.table.empty()) {
      changed = named(action.table);
    } else if (leaves.size() > 1) {
      throw StatementError(kNoTableToDelete,
                           "Specify the table containing the records you want to delete.",
                           statement);
    }
  } else {
    changed = having(0);
    for (std::size_t i = 1; i < action.columns.size(); ++i) {
      if (having(i) != changed)
        throw StatementError(engine_error::kInvalidOperation,
                             "Invalid operation. An update of columns of several tables is not "
                             "supported: update one table after the other.",
                             statement);
    }
  }
  if (changed->select != nullptr)
    throw StatementError(engine_error::kNotUpdatable,
                         "Operation must use an updateable query. The rows of a select cannot be "
                         "changed.",
                         statement);
  const Target target{.name = NameOf(*changed), .table = &transaction_->Table(changed->table)};
  if (action.kind != ActionKind::kUpdate) return target;
  std::vector<std::string> unknown;
  std::ranges::copy_if(action.columns, std::back_inserter(unknown), [&](const std::string& column) {
    return !FindColumn(target.table->columns(), column);
  });
  if (unknown.empty()) return target;
  throw StatementError(engine_error::kTooFewParameters, TooFewParameters(unknown), statement);
}

std::vector<Transaction::Change> Transaction::FindChanges(Action action, const Target& target,
                                                          std::string_view statement,
                                                          const std::vector<Token>& tokens) {
  Values equal;
  const bool joined = action.from->left != nullptr;
  if (joined || (action.where != nullptr &&
                 !ReadEqualities(*action.where, target.name, *target.table, tokens, equal))) {
    return FindBySelect(std::move(action), target, statement, tokens);
  }
  const std::optional<Values> values = PlainValues(action, tokens);
  if (!values) return FindBySelect(std::move(action), target, statement, tokens);
  std::vector<Change> changes;
  for (const access::RowId row : equal.empty() ? target.table->All() : target.table->Find(equal)) {
    changes.push_back({row, *values});
  }
  return changes;
}

std::vector<Transaction::Change> Transaction::FindBySelect(Action action, const Target& target,
                                                           std::string_view statement,
                                                           const std::vector<Token>& tokens) {
  RequireUnchanged(statement);
  access::WritableTable& table = *target.table;
  Select select;
  auto row_key = std::make_unique<Expression>();
  row_key->kind = ExpressionKind::kRowKey;
  row_key->qualifier = target.name;
  AddItem(select, std::move(row_key));
  for (ExpressionPtr& value : action.values) AddItem(select, std::move(value));
  select.from = std::move(action.from);
  select.where = std::move(action.where);
  const auto [connection, tables] = connect_();
  // The transaction has already read the table's definition and opened the file: neither is done a
  // second time.
  if (!tables->Holds(table.name())) {
    tables->Hold(table.columns(), std::make_shared<CachedTable>(table.name(), table.columns(),
                                                                kUnknownRowCount, *table.Rows()));
  }
  std::vector<Change> changes;
  std::unordered_map<std::uint32_t, std::size_t> places;  // of rows among the changes
  for (StatementRecordset found(connection, select, statement, tokens); !found.EndOfFile();
       found.MoveNext()) {
    if (IsNull(found.Field(0))) {  // of an outer join
      if (action.kind == ActionKind::kDelete) continue;
      throw StatementError(engine_error::kInvalidOperation,
                           "Invalid operation. An update that would add rows to table '" +
                               table.name() + "' is not supported: use INSERT … SELECT.",
                           statement);
    }
    const auto key = static_cast<std::uint32_t>(ToDouble(found.Field(0)));
    Change change{RowOfKey(key), {}};
    for (std::size_t i = 0; i < action.columns.size(); ++i) {
      change.values.push_back({action.columns[i], found.Field(i + 1)});
    }
    const auto [known, added] = places.emplace(key, changes.size());
    if (added) {
      changes.push_back(std::move(change));
    } else if (!std::ranges::equal(changes[known->second].values, change.values, {},
                                   &access::ColumnValue::value, &access::ColumnValue::value)) {
      throw StatementError(engine_error::kInvalidOperation,
                           "Invalid operation. A row of table '" + table.name() +
                               "' would get different values from several rows joined to it.",
                           statement);
    }
  }
  return changes;
}

std::unique_ptr<Recordset> Transaction::TrySelect(std::string_view statement) {
  const std::vector<Token> tokens = ReadTokens(statement);
  const std::unique_ptr<Select> select = ParseSelect(statement, tokens);
  const bool plain = select->from != nullptr && !select->from->table.empty() &&
                     select->where != nullptr && !select->distinct && !select->top &&
                     select->group.empty() && select->having == nullptr && select->unions.empty() &&
                     select->order.empty();
  if (!plain || !transaction_->HasTable(select->from->table)) return nullptr;
  access::WritableTable& table = transaction_->Table(select->from->table);
  Values equal;
  const std::string& name = select->from->alias.empty() ? table.name() : select->from->alias;
  if (!ReadEqualities(*select->where, name, table, tokens, equal)) return nullptr;
  std::vector<std::string> names;
  std::vector<std::size_t> columns;
  for (const SelectItem& item : select->items) {
    if (item.expression == nullptr) {
      for (std::size_t i = 0; i < table.columns().size(); ++i) {
        columns.push_back(i);
        names.push_back(table.columns()[i].name);
      }
      continue;
    }
    if (item.expression->kind != ExpressionKind::kColumn) return nullptr;
    const std::optional<std::size_t> column = FindColumn(table.columns(), item.expression->name);
    if (!column) return nullptr;
    columns.push_back(*column);
    names.push_back(item.alias.empty() ? table.columns()[*column].name : item.alias);
  }
  std::vector<std::vector<Value>> rows;
  for (const access::RowId row : table.Find(equal)) {
    std::vector<Value> all = table.Read(row);
    std::vector<Value>& wanted = rows.emplace_back();
    for (const std::size_t column : columns) wanted.push_back(all.at(column));
  }
  return std::make_unique<RowList>(std::move(names), std::move(rows));
}

}  // namespace tenora::query
