// Transactions that change the rows of an Access-format file in place, atomically, while other
// programs may have it open: docs/writing-safely.md. Jet 4 and ACE only; Jet 3 files are read-only.
//
//   auto transaction = WriteTransaction::Begin(path);
//   WritableTable& counters = transaction->Table("counters");
//   for (const RowId row : counters.Find({{"name", std::string("receipt")}})) {
//     counters.Update(row, {{"value", Next(counters.Read(row)[1])}});
//   }
//   transaction->Commit();
//
// A change that cannot be made exactly (an index whose key format is not known, a text that has no
// known key, a column type that is not supported) is refused with 3073, naming table, index and
// reason. The file does not change before Commit.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/access/file_state.h"

namespace tenora::access {

class Storage;

struct ColumnValue {
  std::string column;  // case-insensitive
  Value value;
};

// A table within a transaction; reads see the transaction's own changes. Besides what each function
// lists, all raise 3127 (no such column), and 3049 and 3043 like RowCursor.
class WritableTable {
 public:
  virtual ~WritableTable() = default;
  virtual const std::string& name() const = 0;
  virtual const std::vector<Column>& columns() const = 0;
  virtual const std::vector<Index>& indexes() const = 0;
  // The default-value expression, in the engine's language, for a column that an insert does not
  // name; empty for none. The caller evaluates it.
  virtual std::string DefaultValue(std::size_t column) const = 0;

  // The rows whose columns all equal the values, compared as the engine does: text without case,
  // null equal to null. Uses an index that starts with one or more of the columns, in time
  // independent of the table's size; without one, scans the table.
  virtual std::vector<RowId> Find(const std::vector<ColumnValue>& equal) = 0;
  virtual std::vector<RowId> All() = 0;
  // Scans the rows in the order of All(). The cursor is invalid after a change to the table.
  virtual std::unique_ptr<RowCursor> Rows() const = 0;
  // All fields of a row, by position in columns(). Raises 3167 when the row is gone.
  virtual std::vector<Value> Read(RowId row) = 0;

  // Columns not named become null, false or the next AutoNumber value. All three raise 3022
  // (duplicate key in a unique index), 3058 (null in a primary key), 3163 (longer than the column),
  // 3201 (the related row is missing), 3200 (related rows exist), 3314 (null in a required column),
  // 3315 (empty text where it is not allowed), 3421 and 3349 (a value that the column cannot hold),
  // 3047 (the row does not fit on a page) and 3073; the transaction is then as before the call.
  // After any other error the transaction cannot be committed.
  virtual RowId Insert(const std::vector<ColumnValue>& values) = 0;
  virtual void Update(RowId row, const std::vector<ColumnValue>& values) = 0;
  virtual void Delete(RowId row) = 0;
};

// Has the file to itself among transactions from Begin until it is destroyed, so that what it reads
// is still current when it commits. Destroying it without Commit rolls back.
class WriteTransaction {
 public:
  struct Options {
    std::chrono::milliseconds wait_for_lock{10000};
    Storage* storage = nullptr;  // null: the local file system
  };

  // Raises what DatabaseFile::Open raises, and 3027 (read-only file, folder or format), 3218
  // (locked by another program), 3050 (the file system does not support locks).
  static std::unique_ptr<WriteTransaction> Begin(const std::filesystem::path& path,
                                                 const Options& options);
  static std::unique_ptr<WriteTransaction> Begin(const std::filesystem::path& path) {
    return Begin(path, Options());
  }
  virtual ~WriteTransaction() = default;

  // Whether the file itself has a table of this name that is not the engine's own.
  virtual bool HasTable(std::string_view name) const = 0;
  // A user's table by name, ignoring case; valid as long as the transaction. Raises 3078 when there
  // is none, 3073 when it cannot be written, as linked tables and saved queries cannot.
  virtual WritableTable& Table(std::string_view name) = 0;
  // Once it has returned, the change survives a power cut. Raises 3026 (disk full), 3197 (another
  // program has changed the same pages), 3260, 3261 or 3218 (one has locked them), 3027 and 3043;
  // the file is then unchanged, or is rolled back when it is next opened. Call it at most once.
  virtual CommitStates Commit() = 0;
};

// Keeps transactions out while it exists, so that everything read belongs to one state of the file.
// Begin on the same file in the same process would wait in vain.
class ReadLock {
 public:
  virtual ~ReadLock() = default;
  // Raises 3024, 3051, 3218, 3050.
  static std::unique_ptr<ReadLock> Take(const std::filesystem::path& path,
                                        std::chrono::milliseconds wait);
  // Null where the file system does not support locks: the file is then read without one.
  static std::unique_ptr<ReadLock> TakeWherePossible(const std::filesystem::path& path,
                                                     std::chrono::milliseconds wait);
};

// Rolls back a change that a crash interrupted. DatabaseFile::Open does so itself.
void RecoverDatabase(const std::filesystem::path& path);

}  // namespace tenora::access
