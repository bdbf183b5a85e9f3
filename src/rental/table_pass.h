// Statements over a whole table whose rows belong to codes: of tenancies, owners or properties.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>

#include "data/database.h"
#include "platform/query/text_match.h"

namespace tenora {

class TablePass {
 public:
  // The codes are distinct as the engine compares texts, and outlive this, as the database does.
  TablePass(Database& database, std::span<const std::string> codes, std::stop_token stop);

  using UseRow = std::function<void(std::size_t number, const query::Recordset& row)>;
  // Calls `use` for each row whose first column is one of the codes, with the code's number, in the
  // statement's order, until a stop is asked for. Raises 91 when the statement fails, which has
  // been shown, and what `use` raises.
  void Each(const std::string& sql, const UseRow& use);

  bool Stopped() const { return stop_.stop_requested(); }

 private:
  Database& database_;
  const std::stop_token stop_;
  query::TextMap<std::size_t> numbers_;
};

}  // namespace tenora
