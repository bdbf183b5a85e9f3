// What reading and writing the rows of a table requires: its file, name and definition.
#pragma once

#include <memory>
#include <string>

#include "platform/access/format/table_definition.h"
#include "platform/access/storage/page_file.h"

namespace tenora::access {

// Shared by the cursors of a table, so that they may outlive it.
struct TableData {
  std::shared_ptr<const PageFile> file;
  std::string name;
  TableDefinition definition;
};

// The table whose definition starts on `definition_page`. Raises Corruption for an invalid
// definition.
std::shared_ptr<const TableData> ReadTable(std::shared_ptr<const PageFile> file, std::string name,
                                           std::uint32_t definition_page);

}  // namespace tenora::access
