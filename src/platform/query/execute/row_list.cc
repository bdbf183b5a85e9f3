#include "platform/query/execute/row_list.h"

#include "platform/access/engine_error.h"
#include "platform/query/execute/statement_recordset.h"
#include "platform/runtime/text.h"

namespace tenora::query {

void RowList::MoveNext() {
  if (EndOfFile()) throw RecordsetError(engine_error::kNoCurrentRecord, "No current record.");
  ++row_;
}

Value RowList::Field(std::string_view name) const {
  for (std::size_t i = 0; i < names_.size(); ++i) {
    if (EqualsNoCase(names_[i], name)) return Field(i);
  }
  throw RecordsetError(engine_error::kItemNotFound,
                       "Item not found in this collection: '" + std::string(name) + "'.");
}

Value RowList::Field(std::size_t position) const {
  if (EndOfFile()) throw RecordsetError(engine_error::kNoCurrentRecord, "No current record.");
  if (position >= names_.size()) {
    throw RecordsetError(engine_error::kItemNotFound, "Item not found in this collection.");
  }
  return rows_[row_][position];
}

}  // namespace tenora::query
