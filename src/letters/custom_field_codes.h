// The codes of the custom fields that a database knows.
#pragma once

#include <set>
#include <string>

#include "data/database.h"
#include "platform/query/engine.h"

namespace tenora {

// The field codes that the database knows, for each kind of record that has custom fields.
struct CustomFieldCodes {
  std::set<std::string> tenant, property, owner;
  // Buildings without a counter of receipt numbers, where one is declared already: it is not made
  // for them any more.
  std::set<std::string> uncounted_buildings;
};

// The field codes are those declared among the account codes and those that a record has a value
// for. Raises the errors of the query.
CustomFieldCodes ReadCustomFieldCodes(query::EngineDatabase& database);
// The same over the session's open database: a failed query is shown and gives no codes.
CustomFieldCodes ReadCustomFieldCodes(Database& database);

}  // namespace tenora
