// The codes of the custom fields that a database knows.
#pragma once

#include "data/database.h"
#include "letters/template_lint.h"
#include "platform/query/engine.h"

namespace tenora {

// Those declared among the account codes and those that a record has a value for. Raises the errors
// of the query.
CustomFieldCodes ReadCustomFieldCodes(query::Database& database);
// The same over the session's open database: a failed query is shown and gives no codes.
CustomFieldCodes ReadCustomFieldCodes(Database& database);

}  // namespace tenora
