#include "letters/custom_field_codes.h"

#include "merge/custom_fields.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/value.h"

namespace tenora {

CustomFieldCodes ReadCustomFieldCodes(query::Database& database) {
  CustomFieldCodes codes;
  for (const char* const sql :
       {"select type as parent, gl_code as code from glcodes where type in (201, 202, 203)",
        "select distinct parenttype as parent, fieldcode as code from custom_fields"}) {
    const auto rows = database.OpenRecordset(sql, query::kForwardOnly, query::kReadOnly);
    for (; !rows->EndOfFile(); rows->MoveNext()) {
      const std::string code = TextOf(rows->Field("code"));
      const std::string parent = TextOf(rows->Field("parent"));
      if (parent == std::to_string(kTenantParent)) codes.tenant.insert(code);
      if (parent == std::to_string(kPropertyParent)) codes.property.insert(code);
      if (parent == std::to_string(kOwnerParent)) codes.owner.insert(code);
    }
  }
  return codes;
}

}  // namespace tenora
