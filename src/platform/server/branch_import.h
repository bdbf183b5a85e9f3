// Brings the rows of a branch's database file to the server: one way, the file stays the master.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/server/import_transaction.h"
#include "platform/server/server_connection.h"

namespace tenora::server {

enum class LayoutChange {
  kRefuse,  // a file whose tables or columns are not those of the last time is not brought
  kTake,    // its rows are brought anew
};

// A row that breaks a rule of the data; it is brought all the same.
struct ImportFinding {
  std::string table;     // as the file spells it
  std::int64_t row = 0;  // page * 256 + place
  std::string what;
};

struct ImportReport {
  std::int64_t generation = 0;
  std::int64_t rows = 0;                         // of the branch now
  std::int64_t pages = 0, pages_changed = 0;     // with rows, of the file
  std::int64_t pages_gone = 0;                   // with rows before, and none now
  std::int64_t rows_sent = 0, rows_removed = 0;  // a changed row counts in both
  bool layout_changed = false;                   // of a table; so for a new branch
  std::string file_before;                       // where the rows were of another file until now
  std::vector<std::string> tables_left_out;      // of the file, which the server has no place for
  std::vector<ImportFinding> findings;
  bool Changed() const { return pages_changed > 0 || pages_gone > 0 || layout_changed; }
};

// In one transaction, so that readers see the rows of before or those of now; of two imports of one
// branch the second waits so long for the first. Only the rows of pages in which something has
// changed are sent. A branch that is not there yet is added for kTake, if the login may. Raises
// what opening and reading the file raises, ServerError, and 3190 for a layout that has changed or
// a file with none of the server's tables.
ImportReport ImportBranch(Connection& connection, const std::string& branch,
                          const std::filesystem::path& file, LayoutChange layout,
                          std::chrono::milliseconds wait = kWaitForImport);

}  // namespace tenora::server
