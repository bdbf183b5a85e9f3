// The tables of one state of a database file that statements have named.
#pragma once

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/access/file_state.h"
#include "platform/query/cache/file_reader.h"
#include "platform/query/cache/file_table.h"
#include "platform/query/cache/linked_files.h"

namespace tenora::query {

// By table name in lower case.
using TableSources = std::unordered_map<std::string, std::shared_ptr<FileTable>>;

class TableCache : public TableStore {
 public:
  // `tables` and `linked` were read from earlier states of the files and have not changed since;
  // `linked` may be null.
  TableCache(const std::filesystem::path& path, const access::FileState& state, ReadLocking locking,
             const TableSources& tables = {}, std::shared_ptr<LinkedFiles> linked = nullptr);

  // Opens the file on the first call. Raises the errors of access::DatabaseFile::Open.
  const access::DatabaseFile& File() { return reader_->File(); }
  // Gives the cache a table that the caller has read from the file in this state.
  void Hold(const std::vector<access::Column>& columns, const std::shared_ptr<CachedTable>& table);
  // Whether the table is in memory.
  bool Holds(std::string_view name) const;
  // The table of this name, in the file or linked; null if there is none. Raises what reading the
  // file and LinkedFiles::Open raise.
  std::shared_ptr<TableSource> Find(std::string_view name) override;
  std::shared_ptr<const access::SavedQuery> FindQuery(std::string_view name) override;
  void EndStep() override;
  // Null if a file of a linked table has changed since it was read.
  std::shared_ptr<LinkedFiles> UnchangedLinks() const;
  // The tables named so far except these (as the file spells them).
  TableSources TablesExcept(const std::set<std::string>& names) const;

 private:
  std::shared_ptr<FileReader> reader_;
  TableSources tables_;
  std::shared_ptr<LinkedFiles> linked_;
  // By name in lower case.
  std::unordered_map<std::string, std::shared_ptr<const access::SavedQuery>> queries_;
};

}  // namespace tenora::query
