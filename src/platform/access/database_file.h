// An Access-format file: Jet 3 (.mdb of Access 97), Jet 4 (.mdb of 2000 to 2003) or ACE (.accdb of
// 2007 to 2019), opened for reading. docs/access-format.md describes the bytes.
//
// A cursor holds one page at a time, read when the scan reaches it, so memory does not grow with
// the file. The file is deliberately not memory-mapped: if another program truncates a mapped file,
// or its server goes away, touching the lost part kills the process with SIGBUS. Here both raise a
// RuntimeError. Reading a whole file of 43 MB this way takes 40 ms.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/saved_query.h"
#include "platform/access/schema.h"
#include "platform/runtime/value.h"

namespace tenora::access {

// The location of a row, valid until the row is deleted.
struct RowId {
  std::uint32_t page = 0;
  std::uint8_t slot = 0;
  bool operator==(const RowId&) const = default;
};

// Scans the rows of a table in the order in which the file stores them. Deleted rows are skipped,
// overflow pointers are followed. A corrupt page or row raises a RuntimeError that names file,
// table and page: 3049, or 3043 when the page cannot be read. Next() can then be called again and
// goes on after the corrupt row or page. A cursor may outlive its table and database. Columns are
// positions in Table::columns().
class RowCursor {
 public:
  virtual ~RowCursor() = default;
  // Moves to the next row; false after the last one.
  virtual bool Next() = 0;
  // Where a scan finds the current row, even if the row has moved to another page since.
  virtual RowId Id() const = 0;
  // Fields of the current row, by position in Table::columns(). The typed readers do not convert:
  // call the one that matches the column's type. A null reads as 0, "" or empty.
  virtual bool IsNull(std::size_t column) const = 0;  // never for a boolean
  virtual bool Boolean(std::size_t column) const = 0;
  virtual std::int64_t Integer(std::size_t column) const = 0;  // kByte to kLong, kBigInt, kComplex
  virtual std::int64_t TenThousandths(std::size_t column) const = 0;  // kCurrency
  // kSingle, kDouble; kDateTime and kDateTimeExtended as day count.
  virtual double Double(std::size_t column) const = 0;
  // kText, kMemo as UTF-8; kGuid as "{…}"; kDecimal as exact decimal text. The view is valid until
  // the next call on this cursor.
  virtual std::string_view Text(std::size_t column) = 0;
  virtual std::span<const std::byte> Bytes(std::size_t column) = 0;  // kBinary, kOle
  // A field of any type as a Value: GUIDs as text, kDateTimeExtended as Date, decimals as double,
  // or as text where a double does not show all their digits.
  Value Field(std::size_t column);

 protected:
  virtual const std::vector<Column>& Columns() const = 0;
};

// A way to find rows: an index, by the values of its leading columns.
struct IndexPath {
  std::size_t number = 0;            // among the table's physical indexes
  std::string name;                  // "PrimaryKey"
  std::vector<std::size_t> columns;  // the leading ones, as positions in Table::columns()
  double rows_per_key = 1;           // rows of equal values, estimated from a sample
};

// The values from one to another, both included; null is no bound.
struct KeyRange {
  Value from, to;
};

class Table {
 public:
  virtual ~Table() = default;
  virtual const std::string& name() const = 0;
  virtual const std::vector<Column>& columns() const = 0;  // in the order of the definition
  virtual const std::vector<Index>& indexes() const = 0;
  virtual std::int64_t row_count() const = 0;  // as recorded in the definition
  virtual std::unique_ptr<RowCursor> Rows() const = 0;
  // The pages that hold its rows and their long values.
  virtual std::uint32_t page_count() const = 0;

  // The index that finds the fewest rows by equality in these columns or some of them. None if no
  // index starts with one of them, or if the keys of such columns are not known, as in Jet 3; nor
  // where the index is corrupt.
  virtual std::optional<IndexPath> FindIndex(std::span<const std::size_t> columns) const = 0;
  // The rows with these values, none of them null, in the columns of the path, in the order of
  // Rows(). The caller compares what it finds: a few others may be among them. Null when there are
  // more than `most`, or when the key of a value is not known. Raises like RowCursor.
  virtual std::unique_ptr<RowCursor> FindRows(const IndexPath& path, std::span<const Value> values,
                                              std::size_t most) const = 0;

  // An index that starts with the column and sorts as its values do. None as in FindIndex.
  virtual std::optional<IndexPath> FindRangeIndex(std::size_t column) const = 0;
  // The rows with values of the range, none of them null, in the column of the path, which
  // FindRangeIndex gave; otherwise as FindRows. The bounds are values of the column's own type.
  virtual std::unique_ptr<RowCursor> FindRange(const IndexPath& path, const KeyRange& range,
                                               std::size_t most) const = 0;
};

// Not thread-safe.
class DatabaseFile {
 public:
  // Rolls back an interrupted change first. Raises RuntimeErrors that name the file: 3024 (no such
  // file), 3051 (no permission), 3343 (not a database, empty, a folder, truncated), 3031 (protected
  // by a password or encrypted), 3049 and 3043 like RowCursor for the system catalogue.
  static std::shared_ptr<DatabaseFile> Open(const std::filesystem::path& path);

  // The same for a file whose bytes are in memory; `name` is used as its path in messages.
  static std::shared_ptr<DatabaseFile> OpenBytes(std::vector<std::byte> bytes,
                                                 const std::filesystem::path& name);
  virtual ~DatabaseFile() = default;

  virtual const std::filesystem::path& path() const = 0;
  virtual Format format() const = 0;
  // The number of the order in which the engine sorts its texts: see sort_order.h.
  virtual std::uint32_t sort_order() const = 0;
  // The user's tables in catalogue order, without system and temporary tables.
  virtual std::vector<std::string> TableNames() const = 0;
  // The tables linked from other files and servers, and the saved queries, without those of forms
  // and reports and temporary ones.
  virtual std::vector<LinkedTable> LinkedTables() const = 0;
  virtual std::vector<QuerySummary> Queries() const = 0;
  // Any table by name, ignoring case; null when the file has no such table. Tables linked from
  // other files are not found. Raises like RowCursor when the definition is corrupt.
  virtual const Table* FindTable(std::string_view name) const = 0;
  // A linked table by name, ignoring case.
  virtual std::optional<LinkedTable> FindLink(std::string_view name) const = 0;
  // Any saved query by name, ignoring case. Raises like RowCursor when its definition is corrupt.
  virtual std::optional<SavedQuery> FindQuery(std::string_view name) const = 0;
};

}  // namespace tenora::access
