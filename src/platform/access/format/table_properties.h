// Properties of a table and its columns that are not in the definition, from the field LvProp of
// the table's row in MSysObjects: "MR2\0" (Jet 3: "KKD\0"), then chunks of
//
//   length (4, including this head), type (2), and
//   type 0x80       the names of properties: length in bytes (2), text
//   types 0, 1, 2   the properties of the table (0) or of one column: length (4, including
//                   itself) of the owner's name: length in bytes (2), text; then for each property
//                   length (2, including itself), flag (1), type (1), number of its name (2),
//                   length in bytes (2), value
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/access/format/table_definition.h"

namespace tenora::access {

// Expressions are in the engine's language; empty for none.
struct ColumnProperties {
  bool required = false;
  bool allow_zero_length = true;
  std::string default_value, validation_rule;
  std::optional<ColumnType> result_type;  // of a calculated column
};

struct TableProperties {
  std::string validation_rule;            // for whole rows
  std::vector<ColumnProperties> columns;  // by position in the definition
};

// `stored` is the content of LvProp, empty for a table without it. Raises Corruption.
TableProperties ReadTableProperties(Bytes stored, const TextCodec& codec,
                                    const TableDefinition& table);

}  // namespace tenora::access
