// The column types that are kept in a form of their own, as text or number.
#pragma once

#include <string>

#include "platform/access/bytes.h"

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

}  // namespace tenora::access
