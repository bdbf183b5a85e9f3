// The database engine: opens Access-format files and their rows on a server, runs statements of the
// engine's SQL dialect over them and returns record sets. A few look-ups by indexed columns read
// the pages that they need; after more of them a table is read into memory, and kept while the file
// on disk is unchanged.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/query/text_match.h"
#include "platform/runtime/value.h"

namespace tenora::query {

// Record-set types and options, with the engine's numbers.
inline constexpr int kForwardOnly = 8;
inline constexpr int kReadOnly = 4;

inline constexpr std::chrono::seconds kTimeLimit{60};

// Errors carry the engine's numbers, a source of "DAO.Database", "DAO.Workspace" or
// "DAO.Recordset", and a description that contains the statement or name concerned.
class Recordset {
 public:
  virtual ~Recordset() = default;
  virtual bool EndOfFile() const = 0;
  virtual bool BeginningOfFile() const = 0;  // together with EndOfFile: the set is empty
  // Raises 3021 (No current record) past the end.
  virtual void MoveNext() = 0;
  // A field of the current row by name, case-insensitive, the first match; raises 3265
  // (Item not found in this collection) and 3021.
  virtual Value Field(std::string_view name) const = 0;
  virtual Value Field(std::size_t position) const = 0;
  virtual const std::vector<std::string>& FieldNames() const = 0;
  virtual void Close() = 0;
};

struct TableSummary {
  std::string name;
  std::int64_t rows = 0;
  // What a name stands for that is no table of this file: "query", "update query", "linked to table
  // 'tenant' of 'C:\\data\\rents.mdb', read from '/data/rents.mdb'", "linked to table 'dbo.tenant'
  // of a server"; empty for its tables.
  std::string kind = {};
};

// Where the rows of a branch come from.
struct BranchOrigin {
  std::string server;              // its host or socket's folder, with the port
  std::string branch;              // by name
  std::chrono::sys_seconds taken;  // when the branch's file was read for it
  int round_trips = 0;             // how often the connection has waited for the server
};

// Running numbers that a server issues for a branch, a series for each name. Raises ServerError.
class NumberServer {
 public:
  virtual ~NumberServer() = default;
  // Whether it does, rather than the branch's file; and whether this login may take them.
  virtual bool Issues() = 0;
  virtual bool MayTake() = 0;
  // The number issued last; none for a series that has not begun.
  virtual std::optional<std::int64_t> Last(std::string_view series) = 0;
  // The next number, which nobody gets again. Raises 70 where it does not issue them.
  virtual std::int64_t Issue(std::string_view series) = 0;
};

class EngineDatabase {
 public:
  virtual ~EngineDatabase() = default;
  // The file's full path, or the branch's location.
  virtual const std::string& Name() const = 0;
  // None for a file.
  virtual std::optional<BranchOrigin> Origin() const { return std::nullopt; }
  // Raises 3061 (an unknown column name), 3078 (no such table), 3075 (syntax) or what reading the
  // file raises. All sets are forward-only and read-only, whatever type is asked for.
  // "explain select …" gives a row for each table that the select would read: the table, how it
  // would be read now, by which columns, and the expected number of rows.
  virtual std::unique_ptr<Recordset> OpenRecordset(std::string_view sql, int type, int options) = 0;
  // Compares texts as statements over this database do.
  virtual TextMatch Texts() const = 0;
  // The tables, then linked tables and saved queries.
  virtual std::vector<TableSummary> Tables() const = 0;

  // Runs an insert, update or delete statement and returns the number of rows changed. Outside a
  // transaction it runs in its own, and its change survives a power cut once it returns. Raises
  // 3075, 3219 and what access::WritableTable and WriteTransaction raise; in that case nothing has
  // changed.
  virtual std::int64_t Execute(std::string_view sql) = 0;

  // From BeginTrans to CommitTrans or Rollback the file is locked against other programs'
  // transactions, so rows read by equality are still current when they are written. All other
  // selects see the file as it was at BeginTrans. Raise 3034 (no transaction is open, or one is
  // already) and what WriteTransaction raises.
  virtual void BeginTrans() = 0;
  virtual void CommitTrans() = 0;
  virtual void Rollback() = 0;

  // Null for a file, whose numbers are in its tables.
  virtual NumberServer* Numbers() { return nullptr; }
};

// The engine's default workspace. It keeps the table caches of the files it has opened, so that
// opening the same unchanged file again costs microseconds.
class Workspace {
 public:
  virtual ~Workspace() = default;
  // `now` supplies the functions now(), date() and time(); the default is the system clock. A
  // statement that takes longer than `time_limit` for one row is cancelled with 3059. `short_date`
  // is how days are joined to texts and formatted as a short date; the default is dd/mm/yyyy.
  static std::unique_ptr<Workspace> Create(std::function<Date()> now = {},
                                           std::chrono::milliseconds time_limit = kTimeLimit,
                                           std::function<std::string(Date)> short_date = {});
  // A file, or a branch on a server by its location ("service=NAME branch=NAME"). Raises the errors
  // of access::DatabaseFile::Open, or server::ServerError.
  virtual std::unique_ptr<EngineDatabase> OpenDatabase(const std::filesystem::path& path) = 0;
  // Rows of these codes (of tenancies, properties, owners …) will be asked for next: those of a
  // branch on a server are fetched in one round trip. Nothing is done for a file. Raises like
  // OpenDatabase.
  virtual void Expect(const std::filesystem::path& path, std::vector<std::string> codes) = 0;
  // Called about ten times a second while a server is waited for; true ends the wait soon, with
  // 32755 (Cancel was selected). Empty, as at first: waits end with the server's time only.
  virtual void OnWaiting(std::function<bool()> stop_asked) = 0;
};

// While it lives, a workspace waits for a server only until a stop is asked for.
class StoppableWaiting {
 public:
  StoppableWaiting(Workspace& workspace, std::function<bool()> stop_asked) : workspace_(workspace) {
    workspace_.OnWaiting(std::move(stop_asked));
  }
  ~StoppableWaiting() { workspace_.OnWaiting({}); }
  StoppableWaiting(const StoppableWaiting&) = delete;
  StoppableWaiting& operator=(const StoppableWaiting&) = delete;

 private:
  Workspace& workspace_;
};

// Writes the record set from its current row to its end, one row a line after a header line,
// fields separated by tabs: booleans as -1 and 0, null as nothing, dates as "2026-11-21 14:30:00"
// (without the time at midnight), bytes in hexadecimal. A tab, line end or backslash inside a field
// is written \t, \n, \r or \\.
void PrintTabSeparated(Recordset& rows, std::ostream& out);

}  // namespace tenora::query
