#include "platform/access/check.h"

#include "platform/access/catalogue.h"
#include "platform/access/check_relationships.h"
#include "platform/access/check_table.h"
#include "platform/access/column_properties.h"
#include "platform/access/memory_file.h"

namespace tenora::access {
namespace {

constexpr std::size_t kDataFreeBytes = 2;

}  // namespace

void CheckFreeBytes(const CheckContext& context, const FindingPlace& place, const PageBuffer& page,
                    const DataPage& data) {
  std::size_t lowest = page.size;
  for (std::size_t row = 0; row < data.row_count(); ++row) {
    lowest -= data.Row(row).bytes.size();
  }
  const std::size_t offsets = context.file.layout().data_row_offsets + 2 * data.row_count();
  const std::size_t free = Load16(&page.bytes[kDataFreeBytes]);
  if (free == lowest - offsets) return;
  context.report.Fault(place, page.number, {},
                       "the page says that " + std::to_string(free) +
                           " bytes are free, but there are " + std::to_string(lowest - offsets),
                       Remedy::kRestore);
}

namespace {

void CheckProperties(const CheckContext& context, const std::shared_ptr<const PageFile>& file,
                     const CatalogueEntry& entry, const TableDefinition& table) {
  const auto fault = [&](const std::exception& damage) {
    context.report.Fault(
        {entry.name, {}}, entry.row,
        std::string("the field LvProp of the table's row in MSysObjects: ") + damage.what(),
        Remedy::kRestore);
  };
  try {
    ReadTableProperties(ReadStoredProperties(file, entry), context.codec, table);
  } catch (const Damage& damage) {
    fault(damage);
  } catch (const RuntimeError& damage) {
    fault(damage);
  }
}

// The definitions that can be read, each of a table of its own.
std::vector<DefinedTable> ReadDefinitions(const CheckContext& context,
                                          const std::shared_ptr<const PageFile>& file) {
  std::vector<DefinedTable> tables;
  for (const CatalogueEntry& entry : ReadCatalogue(file)) {
    const FindingPlace place{entry.name, {}};
    const auto user = context.ledger.AddUser("the definition of table '" + entry.name + "'");
    if (!context.ledger.Claim(entry.definition_page, user, place)) continue;
    try {
      DefinedTable table{entry.name,
                         ReadTableDefinition(*file, context.codec, entry.definition_page)};
      bool all_own = true;
      for (const std::uint32_t page : table.definition.further_pages) {
        all_own = context.ledger.Claim(page, user, place) && all_own;
      }
      CheckProperties(context, file, entry, table.definition);
      if (all_own) tables.push_back(std::move(table));
    } catch (const Damage& damage) {
      context.report.Fault(place, damage, Remedy::kRestore);
    }
  }
  return tables;
}

std::vector<Finding> CheckPages(const std::shared_ptr<const PageFile>& file) {
  CheckReport report;
  PageLedger ledger(*file, report);
  const TextCodec codec(file->header());
  const CheckContext context{*file, codec, report, ledger};
  try {
    const std::vector<DefinedTable> tables = ReadDefinitions(context, file);
    RelationshipCheck relationships(context, file, tables);
    for (const DefinedTable& table : tables) {
      TableCheck(context, table.name, table.definition, relationships.WantedOf(table)).Run();
    }
    relationships.Run();
    ledger.CheckAllClaimed();
  } catch (const RuntimeError& damaged_catalogue) {
    report.Fault({}, {}, {},
                 std::string("The catalogue cannot be read, so that no table was checked: ") +
                     damaged_catalogue.what(),
                 Remedy::kRestore);
  }
  return report.Take();
}

std::vector<Finding> CheckFile(const std::shared_ptr<const PageFile>& file) {
  try {
    return CheckPages(file);
  } catch (const std::invalid_argument& unknown_code_page) {
    throw UnrecognizedFormat(file->path(), unknown_code_page.what());
  }
}

}  // namespace

std::vector<Finding> CheckDatabase(const std::filesystem::path& path) {
  return CheckFile(PageFile::Open(path));
}

std::vector<Finding> CheckBytes(std::vector<std::byte> bytes, const std::filesystem::path& name) {
  return CheckFile(PageFile::OfBytes(std::move(bytes), name));
}

}  // namespace tenora::access
