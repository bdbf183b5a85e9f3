// The fields of the office's own of many tenancies, properties or owners.
#pragma once

#include <cstdint>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/database.h"

namespace tenora {

class CustomFieldTable {
 public:
  // Of the parents with these codes, which are distinct as the engine compares texts. Raises what
  // TablePass::Each raises.
  CustomFieldTable(Database& database, std::int16_t parent_type,
                   std::span<const std::string> parents, const std::stop_token& stop);

  // As LookUpCustomField of that parent; empty for none.
  std::string Get(std::size_t parent, std::string_view code) const;

 private:
  using Field = std::pair<std::string, Value>;
  query::TextMatch equal_;
  std::vector<std::vector<Field>> fields_;  // by parent
};

// The first value of this code, by a query; empty for none.
std::string LookUpCustomField(Database& database, std::int16_t parent_type, std::string_view parent,
                              std::string_view code);

}  // namespace tenora
