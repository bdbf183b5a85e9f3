// A branch on a server: its tables, and their rows as cursors, all of one state of its file.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/server/branch_location.h"
#include "platform/server/running_numbers.h"
#include "platform/server/server_connection.h"

namespace tenora::server {

// What the sync has brought last.
struct BranchState {
  std::int64_t generation = 0;     // another one whenever a row has changed
  std::chrono::sys_seconds taken;  // when the file was read
  std::string file_name;
  std::int64_t rows = 0, findings = 0;
};

struct BranchTable {
  std::string name;                      // as the file spells it
  std::string stored;                    // the server's name
  std::vector<access::Column> columns;   // as in the file
  std::vector<std::string> expressions;  // of each column on the server
  std::vector<std::string> withheld;     // the names of columns that this login may not read
  std::int64_t rows = 0;
  // The columns by whose values rows are found on the server. None: the table is read whole.
  std::vector<std::size_t> found_by;
};

// Rows to be found by the values of one column, one of BranchTable::found_by: texts as UTF-8,
// numbers in digits.
struct RowRequest {
  const BranchTable* table = nullptr;
  std::size_t column = 0;
  std::vector<std::string> values;
};

// Not thread-safe. All functions raise ServerError, and 3197 where a sync has brought another state
// of the branch since Refresh.
class Branch : public std::enable_shared_from_this<Branch> {
 public:
  static std::shared_ptr<Branch> Open(const BranchLocation& location, const Waiting& waiting = {});

  const BranchState& state() const { return state_; }
  std::uint32_t sort_order() const { return sort_order_; }
  const std::vector<BranchTable>& tables() const { return tables_; }
  // Ignoring case; null for none.
  const BranchTable* FindTable(std::string_view name) const;
  Connection& connection() { return *connection_; }
  RunningNumbers numbers() { return {*connection_, id_}; }

  // Whether a reading has found another state on the server than this one.
  bool outdated() const { return outdated_; }
  // Raises 3197.
  [[noreturn]] void ThrowChanged() const;

  // Takes the branch's present state; false where it is the one that was known already, and the
  // tables are as they were. One round trip, two for another state.
  bool Refresh();

  // All rows in the file's order, some thousand of them in memory at a time.
  std::unique_ptr<access::RowCursor> Rows(const BranchTable& table);
  // The rows with one of the values, in the file's order, for each request; equal texts are those
  // that the engine takes for equal. One round trip. The cursors need the branch no more.
  std::vector<std::unique_ptr<access::RowCursor>> Find(std::span<const RowRequest> requests);

 private:
  Branch(BranchLocation location, std::unique_ptr<Connection> connection);

  void LoadTables();
  // Runs queries in one snapshot of the branch's present state.
  std::vector<ResultPtr> RunInState(std::vector<Query> queries);
  Query RowQuery(const RowRequest& request) const;

  BranchLocation location_;
  std::unique_ptr<Connection> connection_;
  std::int64_t id_ = 0;
  BranchState state_;
  bool outdated_ = false;
  std::uint32_t sort_order_ = 0;
  std::vector<BranchTable> tables_;
};

}  // namespace tenora::server
