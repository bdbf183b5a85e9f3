// The system catalogue: the table MSysObjects, whose definition is always on page 2. It has a row
// for each table, query, form and so on; the row of a table has the type 1 and, as its Id, the page
// of the table's definition. One that is linked from a server has a definition here too, a copy
// without rows.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/access/read/table_data.h"
#include "platform/access/saved_query.h"

namespace tenora::access {

struct CatalogueEntry {
  std::string name;
  std::uint32_t definition_page = 0;
  bool system = false;  // the engine's own, or temporary
  RowPointer row;       // in the catalogue
};

struct QueryEntry {
  std::string name;
  std::int32_t id = 0;  // in the table of definitions
  QueryKind kind = QueryKind::kSelect;
  bool system = false;  // of a form or report, or temporary
};

class SystemCatalogue {
 public:
  // Raises RuntimeError for a corrupt catalogue.
  explicit SystemCatalogue(const std::shared_ptr<const PageFile>& file);

  // The tables of this file in the order of the catalogue's rows, without those linked from other
  // files.
  const std::vector<CatalogueEntry>& tables() const { return tables_; }
  const std::vector<LinkedTable>& linked_tables() const { return linked_tables_; }
  // The definitions of tables linked from servers.
  const std::vector<CatalogueEntry>& copied_definitions() const { return copied_definitions_; }
  const std::vector<QueryEntry>& queries() const { return queries_; }

  // The table of that name, ignoring case in any alphabet; null when there is none.
  const CatalogueEntry* Find(std::string_view name) const;

  // The same for a query and for a linked table.
  const QueryEntry* FindQuery(std::string_view name) const;
  const LinkedTable* FindLink(std::string_view name) const;

  // The table of an entry. Raises Corruption for an invalid definition, and what StoredProperties
  // and ReadTableProperties raise where the table has calculated columns: the types of their
  // results are among the properties only.
  std::shared_ptr<const TableData> Read(const CatalogueEntry& entry) const;

  // The field LvProp of the entry's row, empty where it is null or the catalogue has no such
  // column: see table_properties.h. Raises Corruption or RuntimeError.
  std::vector<std::byte> StoredProperties(const CatalogueEntry& entry) const;

 private:
  std::shared_ptr<const TableData> table_;
  std::vector<CatalogueEntry> tables_, copied_definitions_;
  std::vector<LinkedTable> linked_tables_;
  std::vector<QueryEntry> queries_;
  std::unordered_map<std::string, std::size_t> by_folded_name_;  // positions in tables_
};

}  // namespace tenora::access
