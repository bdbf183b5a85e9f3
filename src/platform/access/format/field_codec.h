// The bytes of a column's field in a row, and the values they stand for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/access/format/table_definition.h"
#include "platform/runtime/value.h"

namespace tenora::access {

inline constexpr std::size_t kGuidSize = 16;
inline constexpr std::size_t kDecimalSize = 17;
inline constexpr std::size_t kExtendedDateSize = 42;

// "{00112233-4455-6677-8899-AABBCCDDEEFF}"; the first three groups are kept low byte first.
std::string GuidText(const std::byte* stored);

// Exact decimal text, with as many decimals as the column has: "-12.3400". Kept as a sign byte
// (0x80 for negative) and a whole number of 128 bits: four words, the highest first, each low byte
// first.
std::string DecimalText(const std::byte* stored, std::uint8_t scale);

// The day count of an extended date. Kept as text: 19 digits of days since 1 January of the year 1,
// ':', 19 digits of ticks of 100 nanoseconds since midnight, ':', the number of decimals. False for
// other text.
bool ExtendedDateSerial(const std::byte* stored, double& serial);

// Bytes a fixed column takes in the row; 0 for a boolean, which lives in the null mask.
std::size_t FixedSize(const Column& column);

// A column's bytes as the row keeps them, none for null. A boolean that is true has some, of no
// bytes.
using Field = std::optional<std::vector<std::byte>>;

// The bytes of `value` in `column`; numbers, money and dates become the column's own type as they
// do when the engine assigns them. A long value is its whole content. Raises, naming the column:
// 3421 (a value of another kind, or text that is no UTF-8), 3349 (a number out of range), 3163
// (longer than the column), 3073 (a column type that is not written).
Field EncodeField(const Column& column, const ColumnPlace& place, const Value& value);

}  // namespace tenora::access
