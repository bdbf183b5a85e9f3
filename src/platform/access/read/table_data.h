// What reading and writing the rows of a table requires: its file, name and definition.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

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

// The position of a column of one of the engine's own tables, ignoring case.
std::optional<std::size_t> FindColumn(const TableDefinition& table, std::string_view name);
// The same for a column that must be there and be of this type. Raises Corruption.
std::size_t RequireColumn(const TableDefinition& table, std::string_view name, ColumnType type);

}  // namespace tenora::access
