// The tables of one state of a database file, each read into memory when a statement first names
// it.
#pragma once

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/access/database_file.h"
#include "platform/access/file_state.h"
#include "platform/query/cache/cached_table.h"
#include "platform/runtime/text.h"

namespace tenora::query {

// By table name in lower case.
using CachedTables = std::unordered_map<std::string, std::shared_ptr<CachedTable>>;

enum class ReadLocking : std::uint8_t {
  kLock,  // lock out other programs' transactions while a table is read
  kNone,  // this process has locked them out already
};

class TableCache {
 public:
  // `tables` were read from an earlier state of the file and have not changed since.
  TableCache(std::filesystem::path path, const access::FileState& state, ReadLocking locking,
             CachedTables tables = {});

  // Opens the file on the first call. Raises the errors of access::DatabaseFile::Open.
  const access::DatabaseFile& File() { return *OpenFile(); }
  // Gives the cache a table that the caller has read from the file in this state.
  void Add(std::string_view name, std::shared_ptr<CachedTable> table);
  bool Holds(std::string_view name) const { return tables_.contains(ToLower(name)); }
  // The table of this name, read on the first call; null if the file has none. Raises what
  // reading the file raises.
  std::shared_ptr<CachedTable> Find(std::string_view name);
  // The tables read so far except those named (as the file spells them).
  CachedTables TablesExcept(const std::set<std::string>& names) const;

 private:
  const std::shared_ptr<access::DatabaseFile>& OpenFile();

  std::filesystem::path path_;
  access::FileState state_;
  ReadLocking locking_;
  std::shared_ptr<access::DatabaseFile> file_;
  CachedTables tables_;
};

}  // namespace tenora::query
