#include "rental/custom_field_table.h"

#include <algorithm>

#include "data/sql_text.h"
#include "rental/table_pass.h"

namespace tenora {
namespace {

std::string OfType(std::int16_t parent_type) {
  return " where parenttype = " + std::to_string(parent_type);
}

}  // namespace

CustomFieldTable::CustomFieldTable(Database& database, std::int16_t parent_type,
                                   std::span<const std::string> parents,
                                   const std::stop_token& stop)
    : equal_(database.Texts()), fields_(parents.size()) {
  TablePass(database, parents, stop)
      .Each("select parentcode, fieldcode, value from custom_fields" + OfType(parent_type),
            [&](std::size_t parent, const query::Recordset& row) {
              const Value code = row.Field(1);
              const auto* const text = std::get_if<std::string>(&code);
              if (text != nullptr) fields_[parent].emplace_back(*text, row.Field(2));
            });
}

std::string CustomFieldTable::Get(std::size_t parent, std::string_view code) const {
  const std::vector<Field>& fields = fields_[parent];
  const auto found =
      std::ranges::find_if(fields, [&](const Field& field) { return equal_(field.first, code); });
  return found == fields.end() ? "" : ToText(NullTo(found->second, std::string()));
}

std::string LookUpCustomField(Database& database, std::int16_t parent_type, std::string_view parent,
                              std::string_view code) {
  return database.LookupText("value", "custom_fields",
                             OfType(parent_type) + " and parentcode = " + SQLText(parent) +
                                 " and fieldcode = " + SQLText(code),
                             "");
}

}  // namespace tenora
