#include "letters/generate/letters_to_come.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "letters/template_library.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

constexpr std::size_t kTogether = 32;

using Codes = std::set<std::string>;

void AddOwnersOf(const Caches& caches, const Codes& properties, Codes* codes) {
  for (const PropertyRecord& property : caches.Properties) {
    if (properties.contains(property.Code)) codes->insert(property.OwnerCode);
  }
}

// The codes by which letters to these tenants look up rows: of the tenancies, their properties and
// those properties' owners.
Codes CodesOfTenants(const Caches& caches, const Codes& tenancies) {
  Codes properties;
  for (const TenantRecord& tenant : caches.Tenants) {
    if (tenancies.contains(tenant.Reference)) properties.insert(tenant.PropertyCode);
  }
  Codes codes = tenancies;
  codes.insert(properties.begin(), properties.end());
  AddOwnersOf(caches, properties, &codes);
  return codes;
}

// Those of letters to these owners: their own, those of their properties and of the open tenancies
// there.
Codes CodesOfOwners(const Caches& caches, const Codes& owners) {
  Codes properties;
  for (const PropertyRecord& property : caches.Properties) {
    if (owners.contains(property.OwnerCode)) properties.insert(property.Code);
  }
  Codes codes = owners;
  codes.insert(properties.begin(), properties.end());
  for (const TenantRecord& tenant : caches.Tenants) {
    if (!tenant.Closed && properties.contains(tenant.PropertyCode)) codes.insert(tenant.Reference);
  }
  return codes;
}

}  // namespace

LettersToCome::LettersToCome(Session& session, const RunLedger& log,
                             std::vector<std::size_t> numbers)
    : session_(session), log_(log), numbers_(std::move(numbers)) {
  if (!server::IsBranchLocation(session.database.LastOpened().string())) numbers_.clear();
}

void LettersToCome::Before(std::size_t number) {
  const auto here = std::ranges::lower_bound(numbers_, number);
  const auto place = static_cast<std::size_t>(here - numbers_.begin());
  if (place < told_ || here == numbers_.end()) return;
  told_ = std::min(place + kTogether, numbers_.size());
  const bool to_owners = log_.request().template_kind == kOwnerTemplates;
  Codes recipients;
  for (std::size_t i = place; i < told_; ++i) {
    const Recipient& recipient = log_.recipient(numbers_[i]);
    const std::string& code = to_owners ? recipient.owner_code : recipient.code;
    recipients.insert(
        to_owners || !code.empty() ? code : session_.caches.ReferenceByKeyName(recipient.name));
  }
  const Codes codes = to_owners ? CodesOfOwners(session_.caches, recipients)
                                : CodesOfTenants(session_.caches, recipients);
  session_.database.Expect({codes.begin(), codes.end()});
}

}  // namespace tenora
