// An Access-format file: Jet 3 (.mdb of 97), Jet 4 (.mdb of 2000 to 2003) or ACE (.accdb of 2007 to
// 2019), opened for reading. docs/access-format.md describes the bytes.
//
// A cursor holds a page at a time, read from the file when the walk comes to it: memory does not
// grow with the file. The file is deliberately not mapped. Another program may cut a mapped file
// short, or the server it lies on may drop out, and touching the lost part of a mapping ends the
// process (SIGBUS); here both are a RuntimeError. Reading all of a 43 MB file this way takes 40 ms.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/schema.h"
#include "platform/runtime/value.h"

namespace tenora::access {

// Walks the rows of a table in the file's order. Deleted rows are passed over, overflow rows are
// followed. A damaged page or row raises a RuntimeError that names file, table and page; 3049, or
// 3043 when the system cannot read the page. After it, Next() goes on behind what is damaged. A
// cursor may outlive its table and database. Columns must be positions in Table::columns().
class RowCursor {
 public:
  virtual ~RowCursor() = default;
  // Moves to the next row, false behind the last one.
  virtual bool Next() = 0;
  // Fields of the current row, by position in Table::columns(). The typed readers convert nothing:
  // call the one that fits the column's type. A null reads as 0, "" or empty.
  virtual bool IsNull(std::size_t column) const = 0;  // never for a boolean
  virtual bool Boolean(std::size_t column) const = 0;
  virtual std::int64_t Integer(std::size_t column) const = 0;  // kByte to kLong, kBigInt, kComplex
  virtual std::int64_t TenThousandths(std::size_t column) const = 0;  // kCurrency
  // kSingle, kDouble; kDateTime and kDateTimeExtended as day count.
  virtual double Double(std::size_t column) const = 0;
  // kText, kMemo as UTF-8; kGuid as "{…}"; kDecimal as exact decimal text. The view lives until the
  // next call on this cursor.
  virtual std::string_view Text(std::size_t column) = 0;
  virtual std::span<const std::byte> Bytes(std::size_t column) = 0;  // kBinary, kOle
  // Any field as a Value: decimals as double, GUIDs as text, kDateTimeExtended as Date.
  Value Field(std::size_t column);

 protected:
  virtual const std::vector<Column>& Columns() const = 0;
};

class Table {
 public:
  virtual ~Table() = default;
  virtual const std::string& name() const = 0;
  virtual const std::vector<Column>& columns() const = 0;  // in the order of the definition
  virtual const std::vector<Index>& indexes() const = 0;
  virtual std::int64_t row_count() const = 0;  // as the definition page says
  virtual std::unique_ptr<RowCursor> Rows() const = 0;
};

// For one thread at a time.
class DatabaseFile {
 public:
  // Raises, with the engine's numbers and the file's name in the description: 3024 (no such file),
  // 3051 (no permission), 3343 (not a database, zero bytes, a folder, truncated), 3031 (a password
  // or an encoding that we do not read), 3049 and 3043 as a RowCursor for the catalogue.
  static std::shared_ptr<DatabaseFile> Open(const std::filesystem::path& path);

  // The same for a file whose bytes are in memory; `name` stands for its path in messages.
  static std::shared_ptr<DatabaseFile> OpenBytes(std::vector<std::byte> bytes,
                                                 const std::filesystem::path& name);
  virtual ~DatabaseFile() = default;

  virtual const std::filesystem::path& path() const = 0;
  virtual Format format() const = 0;
  // The user's tables, in the order of the catalogue; system and temporary ones are left out.
  virtual std::vector<std::string> TableNames() const = 0;
  // Any table by name, letter case ignored; null when there is none, as for one that is linked from
  // another file. Raises as a RowCursor when its definition is damaged.
  virtual const Table* FindTable(std::string_view name) const = 0;
};

}  // namespace tenora::access
