// The value of a calculated column (ACE of 2010 and later), which the engine keeps in the row
// though an expression gives it:
//
//   0   16 bytes, zero in all files seen
//   16  length of the value (4)
//   20  the value, stored as in an ordinary column of the result's type, but a boolean as a byte
//       and a decimal as below
//       a few bytes that readers ignore
//
// A memo has all this as the content of its long value. The column is always a variable one, and
// the type in its record may be another than the result's, which the property "ResultType" names.
#pragma once

#include <string>

#include "platform/access/format/bytes.h"

namespace tenora::access {

// Whether a field that is there has a value of no bytes, as the engine stores a null.
bool IsCalculatedNull(Bytes stored);

// The value without what is around it; empty for an empty field. Raises Corruption, naming `page`,
// when it extends beyond `stored`.
Bytes CalculatedContent(Bytes stored, std::uint32_t page);

// The exact text of a calculated decimal: two bytes that readers ignore, scale (1), sign (1; 0x80:
// negative), then the high, low and middle 32 bits of the number. Raises Corruption for a shorter
// value.
std::string CalculatedDecimalText(Bytes value, std::uint32_t page);

}  // namespace tenora::access
