#include "platform/access/write/write_context.h"

namespace tenora::access {

std::shared_ptr<const TableData> WriteContext::Load(std::string_view name) {
  const CatalogueEntry* const entry = catalogue_.Find(name);
  if (entry == nullptr) return nullptr;
  std::shared_ptr<const TableData>& table = loaded_[entry->definition_page];
  if (table == nullptr) {
    table = NamingCorruption(pages_->path(), entry->name, [&] { return catalogue_.Read(*entry); });
  }
  return table;
}

bool WriteContext::IsSystemTable(std::string_view name) const {
  const CatalogueEntry* const entry = catalogue_.Find(name);
  return entry != nullptr && entry->system;
}

TableProperties WriteContext::Properties(const TableData& table) const {
  return NamingCorruption(pages_->path(), table.name, [&] {
    const CatalogueEntry* const entry = catalogue_.Find(table.name);
    return ReadTableProperties(
        entry == nullptr ? std::vector<std::byte>() : catalogue_.StoredProperties(*entry), codec_,
        table.definition);
  });
}

const std::vector<Relationship>& WriteContext::relationships() {
  if (!relationships_) {
    const auto table = Load("MSysRelationships");
    relationships_.emplace();
    if (table != nullptr) {
      relationships_ =
          NamingCorruption(pages_->path(), table->name, [&] { return ReadRelationships(table); });
    }
  }
  return *relationships_;
}

RuntimeError NotUpdatable(std::string_view table, std::string_view why, std::string_view index) {
  std::string text = "Operation must use an updateable query. Table '" + std::string(table) + "'";
  if (!index.empty()) text.append(", index '").append(index).append("'");
  return RuntimeError(engine_error::kNotUpdatable, text.append(": ").append(why).append("."),
                      "DAO.Recordset");
}

}  // namespace tenora::access
