#include "platform/access/check.h"

#include <algorithm>
#include <map>

#include "platform/access/check/relationship_check.h"
#include "platform/access/check/table_check.h"
#include "platform/access/database_writer.h"
#include "platform/access/file_state.h"
#include "platform/access/format/table_properties.h"
#include "platform/access/read/system_catalogue.h"
#include "platform/access/storage/lock_file.h"

namespace tenora::access {
namespace {

constexpr int kMostAttempts = 3;

void CheckProperties(const CheckContext& context, const SystemCatalogue& catalogue,
                     const CatalogueEntry& entry, const TableDefinition& table) {
  const auto fault = [&](const std::exception& error) {
    context.report.Fault(
        {entry.name, {}}, entry.row,
        std::string("the field LvProp of the table's row in MSysObjects: ") + error.what(),
        Remedy::kRestore);
  };
  try {
    ReadTableProperties(catalogue.StoredProperties(entry), context.codec, table);
  } catch (const Corruption& corruption) {
    fault(corruption);
  } catch (const RuntimeError& error) {
    fault(error);
  }
}

// The tables whose definitions can be read and share no page with another; those of linked tables
// too, which have indexes without entries.
std::vector<std::shared_ptr<const TableData>> ReadTables(
    const CheckContext& context, const std::shared_ptr<const PageFile>& file) {
  const SystemCatalogue catalogue(file);
  std::vector<std::shared_ptr<const TableData>> tables;
  const auto read = [&](const CatalogueEntry& entry) {
    const FindingPlace place{entry.name, {}};
    const auto user = context.ledger.AddUser("the definition of table '" + entry.name + "'");
    if (!context.ledger.Claim(entry.definition_page, user, place)) return;
    try {
      auto table = catalogue.Read(entry);
      bool all_own = true;
      for (const std::uint32_t page : table->definition.further_pages) {
        all_own = context.ledger.Claim(page, user, place) && all_own;
      }
      CheckProperties(context, catalogue, entry, table->definition);
      if (all_own) tables.push_back(std::move(table));
    } catch (const Corruption& corruption) {
      context.report.Fault(place, corruption, Remedy::kRestore);
    }
  };
  std::ranges::for_each(catalogue.tables(), read);
  std::ranges::for_each(catalogue.copied_definitions(), read);
  return tables;
}

std::vector<Finding> CheckPages(const std::shared_ptr<const PageFile>& file,
                                const CheckMemory& memory) {
  CheckReport report;
  PageLedger ledger(*file, report);
  const TextCodec codec(file->header());
  const CheckContext context{*file,
                             codec,
                             report,
                             ledger,
                             memory.pages_with_keys,
                             std::max<std::uint64_t>(memory.rows_of_part, 1),
                             memory.related_keys};
  try {
    const std::vector<std::shared_ptr<const TableData>> tables = ReadTables(context, file);
    RelationshipCheck relationships(context, tables);
    std::map<const TableData*, std::unique_ptr<TableCheck>> related;
    for (const auto& table : tables) {
      const std::vector<KeyList*> wanted = relationships.WantedOf(*table);
      auto check = std::make_unique<TableCheck>(context, table->name, table->definition, wanted);
      check->Run();
      if (!wanted.empty()) related[table.get()] = std::move(check);
    }
    relationships.Run(
        [&](const TableData& table, KeyList& keys) { related.at(&table)->ReadAgain(keys); });
    ledger.CheckAllClaimed();
  } catch (const RuntimeError& corrupt_catalogue) {
    report.Fault({}, {}, {},
                 std::string("The catalogue cannot be read, so that no table was checked: ") +
                     corrupt_catalogue.what(),
                 Remedy::kRestore);
  }
  return report.Take();
}

std::vector<Finding> CheckFile(const std::shared_ptr<const PageFile>& file,
                               const CheckMemory& memory) {
  try {
    return CheckPages(file, memory);
  } catch (const std::invalid_argument& unknown_code_page) {
    throw UnrecognizedFormat(file->path(), unknown_code_page.what());
  }
}

}  // namespace

std::string Finding::Text() const {
  std::string place;
  const auto add = [&](std::string_view name, const std::string& value) {
    if (!place.empty()) place += ", ";
    place.append(name).append(value);
  };
  if (!table.empty()) add("table ", "'" + table + "'");
  if (!index.empty()) add("index ", "'" + index + "'");
  if (page) add("page ", std::to_string(*page));
  if (row) add("row ", std::to_string(*row));
  std::string text = place.empty() ? what : place.append(": ").append(what);
  if (kind == Kind::kNotChecked) text.insert(0, "not checked: ");
  if (kind == Kind::kNote) text.insert(0, "note: ");
  if (!text.ends_with('.')) text += '.';
  if (!remedy.empty()) text.append(" ").append(remedy);
  return text;
}

std::vector<Finding> CheckDatabase(const std::filesystem::path& path,
                                   std::chrono::milliseconds wait_for_writers) {
  const std::unique_ptr<ReadLock> lock = ReadLock::TakeWherePossible(path, wait_for_writers);
  DiskStorage disk;
  const std::unique_ptr<LockFile> announced = LockFile::JoinOthers(disk, path);
  for (int attempt = 1;; ++attempt) {
    const FileState before = ReadFileState(path);
    std::vector<Finding> findings = CheckFile(PageFile::Open(path), {});
    if (ReadFileState(path) == before) return findings;
    if (attempt < kMostAttempts) continue;
    Finding& changing = findings.emplace_back();
    changing.kind = Finding::Kind::kNotChecked;
    changing.what =
        "another program changed the file while it was read; what is said above may not be so";
    return findings;
  }
}

std::vector<Finding> CheckDatabase(std::vector<std::byte> bytes, const std::filesystem::path& name,
                                   const CheckMemory& memory) {
  return CheckFile(PageFile::OfBytes(std::move(bytes), name), memory);
}

}  // namespace tenora::access
