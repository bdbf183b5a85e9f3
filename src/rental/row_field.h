// A field of a row as the type the program wants; what cannot be converted is named.
#pragma once

#include <string>
#include <string_view>

#include "platform/query/engine.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"

namespace tenora {

// The column through a conversion (ToDate, ToBool, …), whose error names the column.
template <typename Convert>
auto FieldAs(const Convert& convert, const query::Recordset& row, std::string_view column) {
  const Value value = row.Field(column);
  return About([&] { return std::string("column \"").append(column).append("\""); },
               [&] { return convert(value); });
}

// A missing amount counts as 0.
inline Currency AmountOf(const query::Recordset& row, std::string_view column) {
  return FieldAs([](const Value& value) { return ToCurrency(NullTo(value, Value(Currency()))); },
                 row, column);
}

}  // namespace tenora
