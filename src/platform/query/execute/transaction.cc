#include "platform/query/execute/transaction.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
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
bool ReadEqualities(const Expression& condition, const access::WritableTable& table,
                    const std::vector<Token>& tokens, std::vector<access::ColumnValue>& equal) {
  if (condition.kind == ExpressionKind::kAnd) {
    return std::ranges::all_of(condition.arguments, [&](const ExpressionPtr& part) {
      return ReadEqualities(*part, table, tokens, equal);
    });
  }
  if (condition.kind != ExpressionKind::kCompare || condition.operation != "=") return false;
  const Expression& name = *condition.arguments.at(0);
  const Expression& literal = *condition.arguments.at(1);
  if (name.kind != ExpressionKind::kColumn || literal.kind != ExpressionKind::kLiteral) {
    return false;
  }
  if (!name.qualifier.empty() && !EqualsNoCase(name.qualifier, table.name())) return false;
  const std::optional<std::size_t> column = FindColumn(table.columns(), name.name);
  const Value& value = tokens.at(literal.token).value;
  if (!column || !FitsColumn(value, table.columns()[*column])) return false;
  equal.push_back({name.name, value});
  return true;
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
  access::WritableTable& table = transaction_->Table(action.table);
  const std::vector<Change> changes = FindChanges(std::move(action), table, statement, tokens);
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

std::int64_t Transaction::Insert(Action action, std::string_view statement,
                                 const std::vector<Token>& tokens) {
  access::WritableTable& table = transaction_->Table(action.table);
  std::vector<std::string> names = action.columns;
  if (names.empty()) {
    for (const Column& column : table.columns()) names.push_back(column.name);
    if (names.size() != action.values.size()) {
      throw StatementError(3346, "Number of query values and destination fields are not the same.",
                           statement);
    }
  }
  Values values;
  for (std::size_t i = 0; i < names.size(); ++i) {
    values.push_back({names[i], Evaluate(std::move(action.values[i]), statement, tokens)});
  }
  AddDefaults(table, values);
  changed_tables_.insert(table.name());
  table.Insert(values);
  return 1;
}

void Transaction::AddDefaults(const access::WritableTable& table, Values& values) {
  const std::vector<Column>& columns = table.columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const auto named = [&](const auto& value) {
      return EqualsNoCase(value.column, columns[i].name);
    };
    if (columns[i].auto_number || std::ranges::any_of(values, named)) continue;
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
  Select select;
  AddItem(select, std::move(expression));
  return StatementRecordset(connect_().connection, select, statement, tokens).Field(0);
}

std::vector<Transaction::Change> Transaction::FindChanges(Action action,
                                                          access::WritableTable& table,
                                                          std::string_view statement,
                                                          const std::vector<Token>& tokens) {
  Values equal;
  if (action.where != nullptr && !ReadEqualities(*action.where, table, tokens, equal)) {
    return FindBySelect(std::move(action), table, statement, tokens);
  }
  const std::optional<Values> values = PlainValues(action, tokens);
  if (!values) return FindBySelect(std::move(action), table, statement, tokens);
  std::vector<Change> changes;
  for (const access::RowId row : equal.empty() ? table.All() : table.Find(equal)) {
    changes.push_back({row, *values});
  }
  return changes;
}

std::vector<Transaction::Change> Transaction::FindBySelect(Action action,
                                                           access::WritableTable& table,
                                                           std::string_view statement,
                                                           const std::vector<Token>& tokens) {
  if (changed()) {
    throw StatementError(engine_error::kInvalidOperation,
                         "Invalid operation. After an earlier change in this transaction, only "
                         "conditions of the form column = literal are supported.",
                         statement);
  }
  Select select;
  auto row_key = std::make_unique<Expression>();
  row_key->kind = ExpressionKind::kRowKey;
  AddItem(select, std::move(row_key));
  for (ExpressionPtr& value : action.values) AddItem(select, std::move(value));
  select.from = std::make_unique<Source>();
  select.from->table = action.table;
  select.where = std::move(action.where);
  const auto [connection, tables] = connect_();
  // The transaction has already read the table's definition and opened the file: neither is done a
  // second time.
  if (!tables->Holds(action.table)) {
    tables->Hold(table.columns(), std::make_shared<CachedTable>(table.name(), table.columns(),
                                                                kUnknownRowCount, *table.Rows()));
  }
  std::vector<Change> changes;
  for (StatementRecordset found(connection, select, statement, tokens); !found.EndOfFile();
       found.MoveNext()) {
    Change change{RowOfKey(static_cast<std::uint32_t>(ToDouble(found.Field(0)))), {}};
    for (std::size_t i = 0; i < action.columns.size(); ++i) {
      change.values.push_back({action.columns[i], found.Field(i + 1)});
    }
    changes.push_back(std::move(change));
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
  if (!plain) return nullptr;
  access::WritableTable& table = transaction_->Table(select->from->table);
  Values equal;
  if (!ReadEqualities(*select->where, table, tokens, equal)) return nullptr;
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
