// The part of TableEditor that keeps what the table's designer asked of its columns.
#include "platform/access/table_editor.h"

namespace tenora::access {

void TableEditor::RequireAllowed(const Plan& plan) const {
  for (std::size_t i = 0; i < columns().size(); ++i) {
    if (!plan.changed[i]) continue;
    const ColumnType type = columns()[i].type;
    const ColumnProperties& properties = properties_.columns[i];
    const std::string field = name() + "." + columns()[i].name;
    const bool nullable = (table_->definition.places[i].flags & kColumnNullable) != 0;
    if (type != ColumnType::kBoolean && !plan.row->fields[i] &&
        (!nullable || properties.required)) {
      throw Error(engine_error::kValueRequired,
                  "You must enter a value in the '" + field + "' field.");
    }
    const bool text = type == ColumnType::kText || type == ColumnType::kMemo;
    if (text && !properties.allow_zero_length && plan.row->fields[i] &&
        plan.row->fields[i]->empty()) {
      throw Error(engine_error::kZeroLength,
                  "Field '" + field + "' cannot be a zero-length string.");
    }
    if (!properties.validation_rule.empty()) {
      Refuse("column '" + columns()[i].name + "' has the validation rule " +
             properties.validation_rule + ", which is not worked out here");
    }
  }
  if (!properties_.validation_rule.empty()) {
    Refuse("its rows have the validation rule " + properties_.validation_rule +
           ", which is not worked out here");
  }
}

std::string TableEditor::DefaultValue(std::size_t column) const {
  return properties_.columns.at(column).default_value;
}

}  // namespace tenora::access
