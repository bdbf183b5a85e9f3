// A record set over a running statement.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/query/engine.h"
#include "platform/query/execute/sqlite_connection.h"

namespace tenora::query {

// An error of a record set.
RuntimeError RecordsetError(int number, std::string_view description);

class StatementRecordset : public Recordset {
 public:
  // Moves to the first row.
  StatementRecordset(const std::shared_ptr<SqliteConnection>& connection,
                     std::string_view statement);
  // The rows of a select that is parsed already, as SqliteConnection::Prepare takes it.
  StatementRecordset(const std::shared_ptr<SqliteConnection>& connection, const Select& select,
                     std::string_view statement, const std::vector<Token>& tokens);
  ~StatementRecordset() override;
  StatementRecordset(const StatementRecordset&) = delete;
  StatementRecordset& operator=(const StatementRecordset&) = delete;

  bool EndOfFile() const override;
  bool BeginningOfFile() const override;
  void MoveNext() override;
  Value Field(std::string_view name) const override;
  Value Field(std::size_t position) const override;
  const std::vector<std::string>& FieldNames() const override { return names_; }
  void Close() override;

 private:
  StatementRecordset(std::shared_ptr<SqliteConnection> connection, SqliteConnection::Ready ready,
                     std::string_view statement);
  void CheckOpen() const;
  void Advance();
  // Whether the current row is one of the top rows or ties with the last of them.
  bool IsWithinTop(const TopRows& top);
  std::vector<Value> ReadKeys(const TopRows& top) const;

  std::shared_ptr<SqliteConnection> connection_;  // owns the rows that a statement points to
  std::string text_;
  SqliteConnection::Ready ready_;
  std::vector<std::string> names_;
  std::int64_t row_ = 0;          // counted from 1, if the plan has a top
  std::vector<Value> last_keys_;  // of the last of the top rows
  bool unlimited_ = false;
  bool empty_ = false;
  bool at_end_ = false;
};

}  // namespace tenora::query
