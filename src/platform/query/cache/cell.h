// A field of a row in the file, as SQLite stores it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/access/database_file.h"

namespace tenora::query {

// A boolean, integer, currency amount or date; 0 for null.
std::int64_t IntegerCell(access::RowCursor& row, std::size_t column, access::ColumnType type);
// A single or double precision number; 0 for null.
double DoubleCell(access::RowCursor& row, std::size_t column, access::ColumnType type);
// The bytes of a binary field, or the Decimal::Key of a decimal; valid until the next call.
std::string_view BytesCell(access::RowCursor& row, std::size_t column, access::ColumnType type,
                           std::string& buffer);

}  // namespace tenora::query
