#include "platform/query/transaction.h"

#include <optional>
#include <utility>

#include "platform/query/errors.h"
#include "platform/query/parser.h"
#include "platform/query/recordset.h"
#include "platform/query/row_list.h"
#include "platform/query/scope.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

using access::Column;
using access::ColumnType;

bool FitsColumn(const Value& value, ColumnType type) {
  const bool number = std::holds_alternative<std::int64_t>(value) ||
                      std::holds_alternative<double>(value) ||
                      std::holds_alternative<Currency>(value);
  switch (type) {
    case ColumnType::kText:
    case ColumnType::kMemo:
      return std::holds_alternative<std::string>(value);
    case ColumnType::kDateTime:
      return std::holds_alternative<Date>(value);
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kCurrency:
    case ColumnType::kSingle:
    case ColumnType::kDouble:
      return number;
    default:
      return false;
  }
}

std::optional<std::size_t> FindColumn(const std::vector<Column>& columns, std::string_view name) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (EqualsNoCase(columns[i].name, name)) return i;
  }
  return std::nullopt;
}

// The literal, constant or negative number that an expression is.
std::optional<Value> PlainValue(const Expression& expression, const std::vector<Token>& tokens) {
  switch (expression.kind) {
    case ExpressionKind::kLiteral:
      return tokens.at(expression.token).value;
    case ExpressionKind::kConstant:
      return expression.value;
    default:
      return std::nullopt;
  }
}

std::string Bracketed(std::string_view name) { return "[" + std::string(name) + "]"; }

}  // namespace

Transaction::Transaction(const std::filesystem::path& path,
                         std::function<std::shared_ptr<Mirror>()> mirror)
    : mirror_(std::move(mirror)), transaction_(access::WriteTransaction::Begin(path)) {}

std::int64_t Transaction::Execute(std::string_view statement) {
  const std::vector<Token> tokens = ReadTokens(statement);
  const Action action = ParseAction(statement, tokens);
  if (action.kind == ActionKind::kInsert) return Insert(action, statement, tokens);
  const std::vector<Change> changes = FindChanges(action, statement, tokens);
  access::WritableTable& table = transaction_->Table(action.table);
  for (const Change& change : changes) {
    // From here on the mirror is behind.
    changed_ = true;
    if (action.kind == ActionKind::kDelete) {
      table.Delete(change.row);
    } else {
      table.Update(change.row, change.values);
    }
  }
  return static_cast<std::int64_t>(changes.size());
}

std::int64_t Transaction::Insert(const Action& action, std::string_view statement,
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
    values.push_back({names[i], Evaluate(*action.values[i], tokens)});
  }
  changed_ = true;
  table.Insert(values);
  return 1;
}

Value Transaction::Evaluate(const Expression& expression, const std::vector<Token>& tokens) {
  if (std::optional<Value> plain = PlainValue(expression, tokens)) return *std::move(plain);
  return MirrorRecordset(mirror_(), "select " + std::string(expression.source)).Field(0);
}

bool Transaction::FillTests(const std::vector<PlainTest>& tests, const access::WritableTable& table,
                            const std::vector<Token>& tokens, Values& equal) {
  for (const PlainTest& test : tests) {
    const std::optional<std::size_t> column = FindColumn(table.columns(), test.column);
    const Value& value = tokens.at(test.token).value;
    if (!column || !FitsColumn(value, table.columns()[*column].type)) return false;
    equal.push_back({test.column, value});
  }
  return true;
}

std::vector<Transaction::Change> Transaction::FindChanges(const Action& action,
                                                          std::string_view statement,
                                                          const std::vector<Token>& tokens) {
  access::WritableTable& table = transaction_->Table(action.table);
  std::vector<PlainTest> tests;
  Values equal;
  const bool plain_where =
      action.where == nullptr || (ReadPlainTests(*action.where, action.table, tests) &&
                                  FillTests(tests, table, tokens, equal));
  Values values;
  for (std::size_t i = 0; plain_where && i < action.values.size(); ++i) {
    std::optional<Value> value = PlainValue(*action.values[i], tokens);
    if (!value) return FindByMirror(action, statement);
    values.push_back({action.columns[i], *std::move(value)});
  }
  if (!plain_where) return FindByMirror(action, statement);
  std::vector<Change> changes;
  for (const access::RowId row : equal.empty() ? table.All() : table.Find(equal)) {
    changes.push_back({row, values});
  }
  return changes;
}

std::vector<Transaction::Change> Transaction::FindByMirror(const Action& action,
                                                           std::string_view statement) {
  if (changed_) {
    throw StatementError(engine_error::kInvalidOperation,
                         "Invalid operation. Behind another change of the same transaction only "
                         "conditions of the form column = literal are run.",
                         statement);
  }
  std::string select = "select " + Bracketed(kRowNumberName);
  for (const ExpressionPtr& value : action.values) select += ", " + std::string(value->source);
  select += " from " + Bracketed(action.table);
  if (action.where != nullptr) select += " where " + std::string(action.where->source);
  // Both the mirror and All() give the rows in the file's order.
  const std::vector<access::RowId> rows = transaction_->Table(action.table).All();
  std::vector<Change> changes;
  for (MirrorRecordset found(mirror_(), select); !found.EndOfFile(); found.MoveNext()) {
    Change change{rows.at(static_cast<std::size_t>(ToDouble(found.Field(0)))), {}};
    for (std::size_t i = 0; i < action.values.size(); ++i) {
      change.values.push_back({action.columns[i], found.Field(i + 1)});
    }
    changes.push_back(std::move(change));
  }
  return changes;
}

std::unique_ptr<Recordset> Transaction::TrySelect(std::string_view statement) {
  const std::vector<Token> tokens = ReadTokens(statement);
  const std::unique_ptr<Select> select = ParseStatement(statement, tokens);
  const bool plain = select->from != nullptr && !select->from->table.empty() &&
                     select->where != nullptr && !select->distinct && !select->top &&
                     select->group.empty() && select->having == nullptr && select->unions.empty() &&
                     select->order.empty();
  if (!plain) return nullptr;
  access::WritableTable& table = transaction_->Table(select->from->table);
  std::vector<PlainTest> tests;
  Values equal;
  if (!ReadPlainTests(*select->where, select->from->table, tests) ||
      !FillTests(tests, table, tokens, equal)) {
    return nullptr;
  }
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
