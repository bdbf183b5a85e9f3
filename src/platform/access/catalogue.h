// The catalogue: the table MSysObjects, whose definition is always on page 2. A row for each table,
// query, form and so on; that of a table has the type 1 and, as its Id, the page of its definition.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/access/page.h"
#include "platform/access/page_file.h"

namespace tenora::access {

struct CatalogueEntry {
  std::string name;
  std::uint32_t definition_page = 0;
  bool system = false;  // the engine's own, or temporary
  RowPointer row;       // in the catalogue
};

// The tables kept in this file, in the order of the catalogue's rows; tables linked from elsewhere
// are not among them. Raises RuntimeError for a damaged catalogue.
std::vector<CatalogueEntry> ReadCatalogue(const std::shared_ptr<const PageFile>& file);

// The field LvProp of the entry's row, empty where it is null or the catalogue has no such column:
// see column_properties.h. Raises Damage.
std::vector<std::byte> ReadStoredProperties(const std::shared_ptr<const PageFile>& file,
                                            const CatalogueEntry& entry);

}  // namespace tenora::access
