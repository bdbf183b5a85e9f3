#include "platform/access/write_context.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>

namespace tenora::access {
namespace {

bool SameName(std::string_view left, std::string_view right) {
  const auto unicode = [](std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
  };
  return unicode(left).caseCompare(unicode(right), U_FOLD_CASE_DEFAULT) == 0;
}

}  // namespace

const CatalogueEntry* WriteContext::Find(std::string_view name) const {
  const auto found = std::ranges::find_if(
      catalogue_, [&](const CatalogueEntry& entry) { return SameName(entry.name, name); });
  return found == catalogue_.end() ? nullptr : &*found;
}

std::shared_ptr<const TableData> WriteContext::Load(std::string_view name) const {
  const CatalogueEntry* entry = Find(name);
  if (entry == nullptr) return nullptr;
  return NamingDamage(pages_->path(), entry->name, [&] {
    return std::make_shared<const TableData>(TableData{
        pages_, entry->name, ReadTableDefinition(*pages_, codec_, entry->definition_page)});
  });
}

bool WriteContext::IsSystemTable(std::string_view name) const {
  const CatalogueEntry* entry = Find(name);
  return entry != nullptr && entry->system;
}

TableProperties WriteContext::Properties(const TableData& table) const {
  return NamingDamage(pages_->path(), table.name, [&] {
    const CatalogueEntry* const entry = Find(table.name);
    return ReadTableProperties(
        entry == nullptr ? std::vector<std::byte>() : ReadStoredProperties(pages_, *entry), codec_,
        table.definition);
  });
}

const std::vector<Relationship>& WriteContext::relationships() {
  if (!relationships_) {
    const auto table = Load("MSysRelationships");
    relationships_.emplace();
    if (table != nullptr) {
      relationships_ =
          NamingDamage(pages_->path(), table->name, [&] { return ReadRelationships(table); });
    }
  }
  return *relationships_;
}

}  // namespace tenora::access
