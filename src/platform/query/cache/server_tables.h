// The tables of a branch on a server, of one state of its file. Small ones are read whole. Of the
// others rows are found by their codes: those of the codes that are expected next come in the same
// round trip, for all such tables.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/query/cache/table_source.h"
#include "platform/server/branch.h"

namespace tenora::query {

class ServerTable;

class ServerTables : public TableStore, public std::enable_shared_from_this<ServerTables> {
 public:
  // `expected` are the codes of the last Expect over an earlier state.
  explicit ServerTables(std::shared_ptr<server::Branch> branch,
                        std::vector<std::string> expected = {});

  // Raises ServerError.
  std::shared_ptr<TableSource> Find(std::string_view name) override;
  void EndStep() override {}

  // The codes whose rows will be asked for next; those that are not there are fetched now, from the
  // tables that were asked for any of the codes before. Raises ServerError, and 3197 where a sync
  // has brought another state.
  void Expect(std::vector<std::string> codes);
  const std::vector<std::string>& expected() const { return expected_; }

  // The branch, for reading from it in the state that the tables are of. Raises 3197 where it is in
  // another one by now.
  server::Branch& branch() const;

 private:
  friend class ServerTable;

  // Fetches the rows of these values in a column of a table, and with them those of the expected
  // codes in every table.
  void Fetch(const ServerTable* asking, std::size_t column, const std::vector<std::string>& values);

  std::shared_ptr<server::Branch> branch_;
  const std::int64_t generation_;
  std::vector<std::string> expected_;
  std::unordered_map<std::string, std::shared_ptr<ServerTable>> tables_;  // by name in lower case
};

}  // namespace tenora::query
