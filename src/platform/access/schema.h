// The schema of a table as callers see it: columns with their types, and indexes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tenora::access {

enum class Format { kJet3, kJet4, kAce };

enum class ColumnType : std::uint8_t {
  kBoolean = 1,
  kByte = 2,
  kInteger = 3,  // 16 bits
  kLong = 4,     // 32 bits
  kCurrency = 5,
  kSingle = 6,
  kDouble = 7,
  kDateTime = 8,
  kBinary = 9,
  kText = 10,
  kOle = 11,
  kMemo = 12,
  kGuid = 15,
  kDecimal = 16,
  kComplex = 18,
  kBigInt = 19,
  kDateTimeExtended = 20,
};

struct Column {
  std::string name;
  ColumnType type = ColumnType::kText;
  std::uint16_t number = 0;  // its bit in the null mask
  bool fixed_length = false;
  bool auto_number = false;
  bool calculated = false;                // by an expression, whose result's type `type` is
  std::uint16_t length = 0;               // bytes
  std::uint8_t precision = 0, scale = 0;  // of decimals
  // Of text, Jet 4 and ACE: language in the low 16 bits, version in the top 8.
  std::uint32_t sort_order = 0;
};

struct IndexColumn {
  std::size_t column = 0;  // position in Table::columns()
  bool descending = false;
};

struct Index {
  std::string name;
  std::vector<IndexColumn> columns;
  bool unique = false;
  bool primary = false;
};

// A table that is elsewhere, under a name of its own here.
struct LinkedTable {
  std::string name;
  std::string source;    // its name there
  std::string database;  // the path as the engine keeps it; empty for other than Access files
  std::string connect;  // how the engine connects to others, as "ODBC;DSN=…"; it may hold passwords
};

}  // namespace tenora::access
