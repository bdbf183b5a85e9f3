#include "letters/recipients.h"

#include "letters/template_library.h"
#include "platform/runtime/search_text.h"

namespace tenora {
namespace {

constexpr std::string_view kClosedMark = "(Closed) ";
constexpr std::string_view kPropertyStart = " (";

// A row of a cache as the list needs it.
struct Candidate {
  const std::string& name;
  const std::string& key;       // as RecipientRow's
  const std::string& code;      // of the tenancy
  const std::string& property;  // shown in brackets, unless empty
  const std::string& email;
  bool closed;
};

// Calls `use` for each row of the cache that the list is made of, in cache order.
template <typename Use>
void ForEachCandidate(const Caches& caches, std::string_view kind, bool by_property, Use&& use) {
  static const std::string kNone;
  if (kind == kTemplates) {
    for (const TenantRecord& tenant : caches.Tenants) {
      use(Candidate{tenant.KeyName, tenant.Reference, tenant.Reference, tenant.PropertyCode,
                    tenant.Email, tenant.Closed},
          true);
    }
  } else if (kind == kOwnerTemplates && by_property) {
    for (const PropertyRecord& property : caches.Properties) {
      use(Candidate{property.OwnerName, property.Code, kNone, property.Code, property.Email,
                    property.ClosedStatus},
          true);
    }
  } else if (kind == kOwnerTemplates) {
    for (const OwnerRecord& owner : caches.Owners) {
      use(Candidate{owner.Name, owner.Code, kNone, kNone, owner.Email, owner.ClosedStatus}, false);
    }
  }
}

std::string ItemText(const Candidate& row, bool with_property) {
  std::string text(row.closed ? kClosedMark : "");
  text += row.name;
  if (with_property) text.append(kPropertyStart).append(row.property).append(")");
  return text;
}

}  // namespace

std::vector<RecipientRow> ListRecipients(const Caches& caches, std::string_view template_kind,
                                         const RecipientFilter& filter) {
  const std::vector<std::string> words = SearchWords(filter.search);
  std::vector<RecipientRow> rows;
  const auto pass = [&](bool closed) {
    ForEachCandidate(
        caches, template_kind, filter.by_property, [&](const Candidate& row, bool with_property) {
          if (row.closed != closed) return;
          const bool listed = !row.email.empty() || !filter.exclude_no_email_available ||
                              !filter.exclude_no_email_ticked;
          std::string text = ItemText(row, with_property);
          if (!listed || !HoldsWords(FoldedForSearch(text), words)) return;
          rows.push_back({std::move(text), row.key, {row.name, row.code}});
        });
  };
  pass(false);
  if (filter.closed) pass(true);
  return rows;
}

bool MatchesSearch(std::string_view item_text, std::string_view search) {
  return HoldsWords(FoldedForSearch(item_text), SearchWords(search));
}

}  // namespace tenora
