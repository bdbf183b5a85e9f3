// One field of a database row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "platform/runtime/currency.h"
#include "platform/runtime/date.h"

namespace tenora {

struct Null {
  bool operator==(const Null&) const = default;
};

// Booleans keep their own type; as numbers they are -1 and 0. Byte, 16- and 32-bit numbers are
// std::int64_t, single and double precision are double, text is UTF-8.
using Value = std::variant<Null, bool, std::int64_t, double, Currency, Date, std::string,
                           std::vector<std::byte>>;

bool IsNull(const Value& value);

// The value, or `replacement` when it is null.
Value NullTo(Value value, Value replacement);

// The value joined to an empty text: null gives "", a number its plain text ("12.5"), a boolean
// "True" or "False", a date "2026-11-21" with " 14:30:00" behind it when it has a time of day.
std::string TextOf(const Value& value);

}  // namespace tenora
