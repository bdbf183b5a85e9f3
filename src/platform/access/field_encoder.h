// Values as a row of Jet 4 or ACE keeps them.
#pragma once

#include "platform/access/stored_row.h"
#include "platform/runtime/value.h"

namespace tenora::access {

// The bytes of `value` in `column`; numbers, money and dates become the column's own type as they
// do when the engine assigns them. A long value is its whole content. Raises, naming the column:
// 3421 (a value of another kind, or text that is no UTF-8), 3349 (a number out of range), 3163
// (longer than the column), 3073 (a column type that is not written).
Field EncodeField(const Column& column, const ColumnPlace& place, const Value& value);

}  // namespace tenora::access
