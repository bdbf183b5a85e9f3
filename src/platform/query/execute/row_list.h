// A record set over rows in memory.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/query/engine.h"

namespace tenora::query {

class RowList : public Recordset {
 public:
  RowList(std::vector<std::string> names, std::vector<std::vector<Value>> rows)
      : names_(std::move(names)), rows_(std::move(rows)) {}

  bool EndOfFile() const override { return row_ >= rows_.size(); }
  bool BeginningOfFile() const override { return rows_.empty(); }
  void MoveNext() override;
  Value Field(std::string_view name) const override;
  Value Field(std::size_t position) const override;
  const std::vector<std::string>& FieldNames() const override { return names_; }
  void Close() override { rows_.clear(); }

 private:
  std::vector<std::string> names_;
  std::vector<std::vector<Value>> rows_;
  std::size_t row_ = 0;
};

}  // namespace tenora::query
