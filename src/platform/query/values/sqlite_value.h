// The types of values in statements, and how SQLite stores each of them.
#pragma once

#include <sqlite3.h>

#include <cstdint>

#include "platform/access/database_file.h"
#include "platform/query/values/decimal.h"
#include "platform/runtime/value.h"

namespace tenora::query {

enum class Type : std::uint8_t {
  kNull,      // always null
  kBoolean,   // INTEGER, -1 or 0
  kInteger,   // INTEGER
  kDouble,    // REAL (or the INTEGER result of an expression)
  kCurrency,  // INTEGER, ten-thousandths
  kDecimal,   // BLOB, Decimal::Key
  kDate,      // INTEGER, seconds since 30 December 1899 00:00, so that dates sort by time
  kText,      // TEXT
  kBinary,    // BLOB
};

inline bool IsNumber(Type type) { return type >= Type::kBoolean && type <= Type::kDecimal; }
// Whether SQLite stores the values as a BLOB.
inline bool IsStoredAsBytes(Type type) { return type == Type::kDecimal || type == Type::kBinary; }

Type TypeOf(const Value& value);
Type TypeOf(access::ColumnType type);

std::int64_t DateToSeconds(Date date);
Date DateFromSeconds(std::int64_t seconds);

// The letter for a type in the signature argument of our SQLite functions.
char TypeLetter(Type type);
Type TypeOfLetter(char letter);

// The value of an expression of static type `type`: of a decimal, a double or, where that does not
// show all its digits, a text. Raises 6 (Overflow) for a currency amount or
// date out of range.
Value ReadValue(sqlite3_value* value, Type type);

// `type` is that of the function; the value is converted only to a decimal.
void SetResult(sqlite3_context* context, const Value& value, Type type);
// Parameters of a statement count from 1. Text is copied.
void BindValue(sqlite3_stmt* statement, int parameter, const Value& value);
void BindDecimal(sqlite3_stmt* statement, int parameter, const Decimal& number);

// A text without the commas between the digits before its point, "1,000"; other values as they are.
Value WithoutGrouping(const Value& value);

// The value converted to the type; null stays null. Raises 13 (Type mismatch) and 6.
Value ConvertTo(const Value& value, Type type);

// Raises 3035 unless the status is SQLITE_OK; calls that are checked with it fail only when out of
// memory.
void RequireDone(int sqlite_status);

}  // namespace tenora::query
