// A field of a row in the file, as SQLite stores it.
#pragma once

#include <cstdint>

#include "platform/access/database_file.h"

namespace tenora::query {

// A boolean, integer, currency amount or date; 0 for null.
std::int64_t IntegerCell(access::RowCursor& row, std::size_t column, access::ColumnType type);
// A single or double precision number or a decimal; 0 for null.
double DoubleCell(access::RowCursor& row, std::size_t column, access::ColumnType type);

}  // namespace tenora::query
