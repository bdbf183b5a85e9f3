#include "letters/recipients.h"

#include <unordered_map>

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
  const TenantRecord* at;  // a tenancy of the property, which has its address; null: none
};

// Calls `use` for each row of the cache that the list is made of, in cache order.
template <typename Use>
void ForEachCandidate(const Caches& caches, std::string_view kind, bool by_property, Use&& use) {
  static const std::string kNone;
  if (kind == kTemplates) {
    for (const TenantRecord& tenant : caches.Tenants) {
      use(Candidate{tenant.KeyName, tenant.Reference, tenant.Reference, tenant.PropertyCode,
                    tenant.Email, tenant.Closed, &tenant},
          true);
    }
  } else if (kind == kOwnerTemplates && by_property) {
    std::unordered_map<std::string_view, const TenantRecord*> tenancies;
    for (const TenantRecord& tenant : caches.Tenants) {
      tenancies.emplace(tenant.PropertyCode, &tenant);
    }
    for (const PropertyRecord& property : caches.Properties) {
      const auto at = tenancies.find(property.Code);
      use(Candidate{property.OwnerName, property.Code, kNone, property.Code, property.Email,
                    property.ClosedStatus, at == tenancies.end() ? nullptr : at->second},
          true);
    }
  } else if (kind == kOwnerTemplates) {
    for (const OwnerRecord& owner : caches.Owners) {
      use(Candidate{owner.Name, owner.Code, kNone, kNone, owner.Email, owner.ClosedStatus, nullptr},
          false);
    }
  }
}

std::string ItemText(const Candidate& row, bool with_property) {
  std::string text(row.closed ? kClosedMark : "");
  text += row.name;
  if (with_property) text.append(kPropertyStart).append(row.property).append(")");
  return text;
}

bool HoldsAll(const RecipientRow& row, const std::vector<std::string>& words) {
  return words.empty() || HoldsWords(FoldedForSearch(row.text + '\n' + row.address), words);
}

}  // namespace

void FillOwnerCodes(Caches& caches, std::vector<Recipient>& recipients) {
  for (Recipient& recipient : recipients) {
    const OwnerRecord* const owner = caches.FindOwner(recipient.name);
    if (owner != nullptr) recipient.owner_code = owner->Code;
  }
}

std::string PropertyAddressOf(const TenantRecord& tenant) {
  std::string address;
  for (const std::string* line :
       {&tenant.PropertyAddress1, &tenant.PropertyAddress2, &tenant.PropertyAddress3}) {
    if (!address.empty() && !line->empty()) address += ", ";
    address += *line;
  }
  return address;
}

RecipientTest::RecipientTest(const RecipientFilter& filter)
    : closed_(filter.closed),
      without_email_(!filter.exclude_no_email_available || !filter.exclude_no_email_ticked),
      words_(SearchWords(filter.search)) {}

bool RecipientTest::operator()(const RecipientRow& row) const {
  return (closed_ || !row.closed) && (without_email_ || row.has_email) && HoldsAll(row, words_);
}

std::vector<RecipientRow> ListRecipients(const Caches& caches, std::string_view template_kind,
                                         const RecipientFilter& filter) {
  const RecipientTest listed(filter);
  std::vector<RecipientRow> rows;
  const auto pass = [&](bool closed) {
    std::size_t cached = 0;
    ForEachCandidate(caches, template_kind, filter.by_property,
                     [&](const Candidate& one, bool with_property) {
                       const std::size_t place = cached++;
                       if (one.closed != closed) return;
                       RecipientRow row{.text = ItemText(one, with_property),
                                        .address = one.at ? PropertyAddressOf(*one.at) : "",
                                        .key = one.key,
                                        .recipient = {one.name, one.code},
                                        .closed = one.closed,
                                        .has_email = !one.email.empty(),
                                        .cached = place};
                       if (listed(row)) rows.push_back(std::move(row));
                     });
  };
  pass(false);
  if (filter.closed) pass(true);
  return rows;
}

bool MatchesSearch(const RecipientRow& row, std::string_view search) {
  return HoldsAll(row, SearchWords(search));
}

}  // namespace tenora
