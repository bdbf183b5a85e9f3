// Converts between the bytes of a field in a row and its value.
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

// "{00112233-4455-6677-8899-AABBCCDDEEFF}"; the first three groups are stored low byte first.
std::string GuidText(const std::byte* stored);

// Exact decimal text with the column's number of decimals: "-12.3400". Stored as a sign byte (0x80:
// negative) and a 128-bit integer: four words, most significant first, each little-endian.
std::string DecimalText(const std::byte* stored, std::uint8_t scale);

// The day count of an extended date. Stored as text: 19 digits of days since 1 January of year 1,
// ':', 19 digits of 100 ns ticks since midnight, ':', the number of decimals. False for any other
// text.
bool ExtendedDateSerial(const std::byte* stored, double& serial);

// Size of a fixed-length column in bytes; 0 for a boolean, which is stored in the null mask.
std::size_t FixedSize(const Column& column);

// The bytes of a column as stored in the row; no value for null. A boolean has an empty value when
// true and none when false.
using Field = std::optional<std::vector<std::byte>>;

// The bytes of `value` in `column` of Jet 4 or ACE; numbers, currency and dates are converted to
// the column's type as the engine converts them on assignment. A long value gives its entire
// content. Raises, naming the column: 3421 (incompatible value, or text that is not UTF-8), 3349
// (number out of range), 3163 (longer than the column), 3073 (column type not supported for
// writing).
Field EncodeField(const Column& column, const ColumnPlace& place, const Value& value);

}  // namespace tenora::access
