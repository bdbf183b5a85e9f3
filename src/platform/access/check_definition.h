// Whether a table's definition is possible.
#pragma once

#include "platform/access/check_context.h"
#include "platform/access/table_definition.h"

namespace tenora::access {

void CheckDefinition(const CheckContext& context, const FindingPlace& place,
                     const TableDefinition& table);

// The name of the first logical index that uses the physical one, or its number.
std::string IndexName(const TableDefinition& table, std::size_t physical);

}  // namespace tenora::access
