// The files that a database's linked tables are in. What a link says may be hostile: only regular
// files that open as databases are read, and none is written.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/access/database_file.h"
#include "platform/access/file_state.h"
#include "platform/query/cache/file_reader.h"
#include "platform/query/cache/file_table.h"

namespace tenora::query {

// The file of a table that is linked in `database`; none if it is not there, or is no Access file.
// A relative path starts in the folder of `database`. One with a drive or a computer in front is of
// another machine: a file of that name beside `database` stands for it.
std::optional<std::filesystem::path> FindLinkedFile(const access::LinkedTable& link,
                                                    const std::filesystem::path& database);

// "linked to table 'tenant' of 'C:\data\rents.mdb', read from '/data/rents.mdb'": without the last
// part where it is that path, "which is not there" where there is none. Passwords are left out.
std::string DescribeLink(const access::LinkedTable& link, const std::filesystem::path& database);

class LinkedFiles {
 public:
  explicit LinkedFiles(const std::filesystem::path& database);

  // The table that a link in the database leads to, under the link's name. Raises 3024 (no such
  // file), 3078 (no such table in it), 3170 (no Access file), 3102 (the links lead back), and what
  // reading the file raises.
  std::shared_ptr<FileTable> Open(const access::LinkedTable& link);
  // Whether all files are as they were when they were first read.
  bool Unchanged() const;
  // As FileReader::EndStep.
  void EndStep();

 private:
  struct File {
    std::shared_ptr<FileReader> reader;
    access::FileState state;
    bool settled = false;  // no other change of the file can show the same state
  };

  FileReader& ReaderOf(const std::filesystem::path& path);
  std::shared_ptr<FileTable> Follow(const access::LinkedTable& link, const std::string& name);

  std::filesystem::path database_;
  std::map<std::filesystem::path, File> files_;
  std::unordered_map<std::string, std::shared_ptr<FileTable>> tables_;  // by name in lower case
};

}  // namespace tenora::query
