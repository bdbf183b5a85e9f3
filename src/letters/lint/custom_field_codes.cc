#include "letters/custom_field_codes.h"

#include "merge/custom_fields.h"
#include "platform/runtime/value.h"

namespace tenora {
namespace {

constexpr const char* kStatements[] = {
    "select type as parent, gl_code as code from glcodes where type in (201, 202, 203)",
    "select distinct parenttype as parent, fieldcode as code from custom_fields"};

constexpr const char* kUncountedBuildings =
    "select distinct parent_property as code from property where parent_property <> '' and exists "
    "(select gl_code from glcodes where gl_code = 'NxtReceipt' and type = 202) and parent_property "
    "not in (select parentcode from custom_fields where parenttype = 202 and fieldcode = "
    "'NxtReceipt')";

void Take(const query::Recordset& row, CustomFieldCodes& codes) {
  const std::string code = TextOf(row.Field("code"));
  const std::string parent = TextOf(row.Field("parent"));
  if (parent == std::to_string(kTenantParent)) codes.tenant.insert(code);
  if (parent == std::to_string(kPropertyParent)) codes.property.insert(code);
  if (parent == std::to_string(kOwnerParent)) codes.owner.insert(code);
}

}  // namespace

CustomFieldCodes ReadCustomFieldCodes(query::EngineDatabase& database) {
  CustomFieldCodes codes;
  for (const char* const sql : kStatements) {
    const auto rows = database.OpenRecordset(sql, query::kForwardOnly, query::kReadOnly);
    for (; !rows->EndOfFile(); rows->MoveNext()) Take(*rows, codes);
  }
  const auto rows =
      database.OpenRecordset(kUncountedBuildings, query::kForwardOnly, query::kReadOnly);
  for (; !rows->EndOfFile(); rows->MoveNext()) {
    codes.uncounted_buildings.insert(TextOf(rows->Field("code")));
  }
  return codes;
}

CustomFieldCodes ReadCustomFieldCodes(Database& database) {
  CustomFieldCodes codes;
  for (const char* const sql : kStatements) {
    RecordsetPtr rows;
    database.CreateSet(rows, sql, query::kForwardOnly, query::kReadOnly);
    for (; !database.DataEOF(rows); database.MoveNext(rows)) Take(*rows, codes);
    database.DataClose(rows);
  }
  RecordsetPtr rows;
  database.CreateSet(rows, kUncountedBuildings, query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) {
    codes.uncounted_buildings.insert(TextOf(rows->Field("code")));
  }
  database.DataClose(rows);
  return codes;
}

}  // namespace tenora
