// Rows that a server has given, read as those of a file.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/server/server_connection.h"

namespace tenora::server {

// How the value of a column of the file's type stands in a row of a server: what to select for a
// column of the table `stored`, or (where it is empty) for the column of this name among the extra
// ones.
std::string SelectedExpression(const std::string& stored, const access::Column& column);

// The text form in which a field of the current row is sent to the server; none is null. A text's
// NUL characters, which the server does not take, are left out.
std::optional<std::string> SentField(access::RowCursor& row, std::size_t column,
                                     access::ColumnType type);

// The rows of results whose first column is _row, the others those of the file's table.
class ResultRows : public access::RowCursor {
 public:
  // Gives the next result, null after the last one; it is told the _row of the last row seen.
  using NextResult = std::function<ResultPtr(std::int64_t last_row)>;

  ResultRows(std::vector<access::Column> columns, NextResult next)
      : columns_(std::move(columns)), next_(std::move(next)) {}

  bool Next() override;
  access::RowId Id() const override;
  bool IsNull(std::size_t column) const override;
  bool Boolean(std::size_t column) const override;
  std::int64_t Integer(std::size_t column) const override;
  std::int64_t TenThousandths(std::size_t column) const override;
  double Double(std::size_t column) const override;
  std::string_view Text(std::size_t column) override;
  std::span<const std::byte> Bytes(std::size_t column) override;

 protected:
  const std::vector<access::Column>& Columns() const override { return columns_; }

 private:
  std::string_view Field(std::size_t column) const;

  std::vector<access::Column> columns_;
  NextResult next_;
  ResultPtr result_;
  int row_ = 0;
  std::int64_t last_row_ = -1;
  std::vector<std::byte> bytes_;
};

}  // namespace tenora::server
