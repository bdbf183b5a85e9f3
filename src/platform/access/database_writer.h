// Changes to the rows of an Access-format file, made in the file itself beside programs that have
// it open, whole or not at all: docs/writing-safely.md. Jet 4 and ACE; Jet 3 files are only read.
//
//   auto transaction = WriteTransaction::Begin(path);
//   WritableTable& counters = transaction->Table("counters");
//   for (const RowId row : counters.Find({{"name", std::string("receipt")}})) {
//     counters.Update(row, {{"value", Next(counters.Read(row)[1])}});
//   }
//   transaction->Commit();
//
// What cannot be kept exact (an index in a sort order or of a type whose keys are not known, a text
// without a key there, a column type that is not written) is refused with 3073, naming table, index
// and reason. No call changes the file before Commit.
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

// A row's place, valid until the transaction ends or the row is deleted.
struct RowId {
  std::uint32_t page = 0;
  std::uint8_t slot = 0;
  bool operator==(const RowId&) const = default;
};

struct ColumnValue {
  std::string column;  // letter case ignored
  Value value;
};

// A table within a transaction. Rows are read with the transaction's own changes. Besides what each
// call names, all raise 3127 (no such column), 3049 and 3043 as a RowCursor.
class WritableTable {
 public:
  virtual ~WritableTable() = default;
  virtual const std::string& name() const = 0;
  virtual const std::vector<Column>& columns() const = 0;
  virtual const std::vector<Index>& indexes() const = 0;
  // The expression, in the engine's own language, for a column that an insert does not name; empty
  // for none. To work it out is the caller's.
  virtual std::string DefaultValue(std::size_t column) const = 0;

  // The rows whose columns are all equal to the values as the engine compares them: letter case of
  // text does not count, null equals null. Through an index that starts with one or more of the
  // columns, in a time that does not depend on how many rows the table has; else by reading all.
  virtual std::vector<RowId> Find(const std::vector<ColumnValue>& equal) = 0;
  virtual std::vector<RowId> All() = 0;
  // Walks the rows in the order of All(). The cursor is of no use after a change of the table.
  virtual std::unique_ptr<RowCursor> Rows() const = 0;
  // Every field of a row, by position in columns(). 3167 when the row is gone.
  virtual std::vector<Value> Read(RowId row) = 0;

  // Columns not named are null, false, or the next automatic number. These three raise 3022 (a
  // unique index has the key already), 3058 (null in a primary key), 3163 (longer than the column),
  // 3201 (the row it refers to is missing), 3200 (rows refer to it), 3314 (a required column is
  // null), 3315 (an empty text where none is allowed), 3421 and 3349 (a value that the column
  // cannot hold), 3047 (more than fits on a page), 3073; the transaction is then as before the
  // call. Any other error spoils the transaction.
  virtual RowId Insert(const std::vector<ColumnValue>& values) = 0;
  virtual void Update(RowId row, const std::vector<ColumnValue>& values) = 0;
  virtual void Delete(RowId row) = 0;
};

// One change. From Begin to its end no other transaction has the file, so that what is read here is
// still true when it is written. Ending without Commit changes nothing.
class WriteTransaction {
 public:
  struct Options {
    std::chrono::milliseconds wait_for_lock{10000};
    Storage* storage = nullptr;  // the disks of this machine when null
  };

  // Raises what DatabaseFile::Open raises, and 3027 (file or folder is read-only, or a format that
  // is only read), 3218 (another program holds the file), 3050 (no locks there).
  static std::unique_ptr<WriteTransaction> Begin(const std::filesystem::path& path,
                                                 const Options& options);
  static std::unique_ptr<WriteTransaction> Begin(const std::filesystem::path& path) {
    return Begin(path, Options());
  }
  virtual ~WriteTransaction() = default;

  // A user's table by name, letter case ignored. 3078 when there is none, 3073 when it cannot be
  // written. It lives as long as the transaction.
  virtual WritableTable& Table(std::string_view name) = 0;
  // When it returns, the change would survive a power cut. After an error the file is as before,
  // or will be when it is next opened: 3026 (disk full), 3197 (another program has changed the
  // same pages), 3027, 3043. Call it once.
  virtual CommitStates Commit() = 0;
};

// Keeps transactions out while it lives, so that what is read is of one moment. In a process that
// holds one, Begin on the same file would wait in vain.
class ReadLock {
 public:
  virtual ~ReadLock() = default;
  // Raises 3024, 3051, 3218, 3050.
  static std::unique_ptr<ReadLock> Take(const std::filesystem::path& path,
                                        std::chrono::milliseconds wait);
};

// Takes back a change that a crash interrupted. DatabaseFile::Open does so by itself.
void RecoverDatabase(const std::filesystem::path& path);

}  // namespace tenora::access
