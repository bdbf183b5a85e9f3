// The merge fields of word processors, which this program does not fill.
#pragma once

#include <string>
#include <string_view>

#include "platform/richtext/document.h"

namespace tenora {

bool IsMergeField(const richtext::Field& field);

// The name in a field's instruction, as `Tenant_Name` in `MERGEFIELD Tenant_Name \* MERGEFORMAT`;
// empty where it names none or is another kind of field.
std::string MergeFieldName(std::string_view instruction);

}  // namespace tenora
