#include "platform/query/execute/statement_recordset.h"

#include <algorithm>

#include "platform/query/sql/statement_error.h"
#include "platform/query/values/collation.h"
#include "platform/runtime/text.h"

namespace tenora::query {

RuntimeError RecordsetError(int number, std::string_view description) {
  return RuntimeError(number, std::string(description), "DAO.Recordset");
}

StatementRecordset::StatementRecordset(const std::shared_ptr<SqliteConnection>& connection,
                                       std::string_view statement)
    : StatementRecordset(connection, connection->Prepare(statement), statement) {}

StatementRecordset::StatementRecordset(const std::shared_ptr<SqliteConnection>& connection,
                                       const Select& select, std::string_view statement,
                                       const std::vector<Token>& tokens)
    : StatementRecordset(connection, connection->Prepare(select, statement, tokens), statement) {}

StatementRecordset::StatementRecordset(std::shared_ptr<SqliteConnection> connection,
                                       SqliteConnection::Ready ready, std::string_view statement)
    : connection_(std::move(connection)), text_(statement), ready_(std::move(ready)) {
  for (const OutputColumn& column : ready_.plan->plan.columns) names_.push_back(column.name);
  Advance();
  empty_ = at_end_;
}

StatementRecordset::~StatementRecordset() { Close(); }

void StatementRecordset::Close() {
  if (ready_.statement != nullptr) connection_->GiveBack(std::move(ready_));
  ready_ = {};
}

void StatementRecordset::CheckOpen() const {
  if (ready_.plan == nullptr)
    throw RecordsetError(engine_error::kObjectClosed, "Object invalid or no longer set.");
}

void StatementRecordset::Advance() {
  const std::optional<TopRows>& top = ready_.plan->plan.top;
  at_end_ = !connection_->Step(ready_.statement.get(), text_) || (top && !IsWithinTop(*top));
}

bool StatementRecordset::IsWithinTop(const TopRows& top) {
  ++row_;
  if (row_ == top.count) last_keys_ = ReadKeys(top);
  if (row_ <= top.count) return true;
  const std::vector<Value> keys = ReadKeys(top);
  const auto ties = [this](const Value& left, const Value& right) {
    const auto* const a = std::get_if<std::string>(&left);
    const auto* const b = std::get_if<std::string>(&right);
    return a != nullptr && b != nullptr ? connection_->collation().Compare(*a, *b) == 0
                                        : left == right;
  };
  if (!std::equal(keys.begin(), keys.end(), last_keys_.begin(), last_keys_.end(), ties))
    return false;
  if (unlimited_) return true;
  // More rows may tie than the limit allows. The order of the rows is the same without it: equal
  // ones come in table order.
  unlimited_ = true;
  connection_->RestartUnlimited(ready_);
  for (std::int64_t i = 0; i < row_; ++i) connection_->Step(ready_.statement.get(), text_);
  return true;
}

std::vector<Value> StatementRecordset::ReadKeys(const TopRows& top) const {
  std::vector<Value> keys;
  for (std::size_t i = 0; i < top.keys.size(); ++i) {
    const auto column = static_cast<int>(names_.size() + i);
    keys.push_back(ReadValue(sqlite3_column_value(ready_.statement.get(), column), top.keys[i]));
  }
  return keys;
}

bool StatementRecordset::EndOfFile() const {
  CheckOpen();
  return at_end_;
}

bool StatementRecordset::BeginningOfFile() const {
  CheckOpen();
  return empty_;
}

void StatementRecordset::MoveNext() {
  CheckOpen();
  if (at_end_) throw RecordsetError(engine_error::kNoCurrentRecord, "No current record.");
  Advance();
}

Value StatementRecordset::Field(std::string_view name) const {
  CheckOpen();
  for (std::size_t i = 0; i < names_.size(); ++i)
    if (EqualsNoCase(names_[i], name)) return Field(i);
  throw RecordsetError(engine_error::kItemNotFound,
                       "Item not found in this collection: '" + std::string(name) + "'.");
}

Value StatementRecordset::Field(std::size_t position) const {
  CheckOpen();
  if (position >= names_.size())
    throw RecordsetError(engine_error::kItemNotFound, "Item not found in this collection: number " +
                                                          std::to_string(position) + ".");
  if (at_end_) throw RecordsetError(engine_error::kNoCurrentRecord, "No current record.");
  // Only one thread uses the connection, so an unprotected value is safe to read.
  sqlite3_value* const value =
      sqlite3_column_value(ready_.statement.get(), static_cast<int>(position));
  return ReadValue(value, ready_.plan->plan.columns[position].type);
}

}  // namespace tenora::query
