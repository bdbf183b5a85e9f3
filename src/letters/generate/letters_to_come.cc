#include "letters/generate/letters_to_come.h"

#include <algorithm>
#include <initializer_list>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "letters/template_library.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

constexpr std::size_t kTogether = 32;

using Codes = std::set<std::string>;

}  // namespace

// The codes that lead from one to another, so that nothing is searched for at each group of
// letters.
class LettersToCome::Links {
 public:
  explicit Links(const Caches& caches) {
    for (const TenantRecord& tenant : caches.Tenants) {
      property_of_tenancy_.emplace(tenant.Reference, tenant.PropertyCode);
      if (!tenant.Closed) open_tenancies_.emplace(tenant.PropertyCode, tenant.Reference);
    }
    for (const PropertyRecord& property : caches.Properties) {
      owner_of_property_.emplace(property.Code, property.OwnerCode);
      properties_.emplace(property.OwnerCode, property.Code);
    }
  }

  // The codes by which letters to these tenancies look up rows: their own, those of their
  // properties and of those properties' owners.
  Codes OfTenancies(const Codes& tenancies) const {
    const Codes properties = Linked(property_of_tenancy_, tenancies);
    return Together({tenancies, properties, Linked(owner_of_property_, properties)});
  }

  // Those of letters to these owners: their own, those of their properties and of the open
  // tenancies there.
  Codes OfOwners(const Codes& owners) const {
    const Codes properties = Linked(properties_, owners);
    return Together({owners, properties, Linked(open_tenancies_, properties)});
  }

 private:
  using Map = std::unordered_multimap<std::string, std::string>;

  static Codes Linked(const Map& links, const Codes& from) {
    Codes to;
    for (const std::string& code : from) {
      const auto [first, last] = links.equal_range(code);
      for (auto link = first; link != last; ++link) to.insert(link->second);
    }
    return to;
  }

  static Codes Together(std::initializer_list<Codes> parts) {
    Codes all;
    for (const Codes& part : parts) all.insert(part.begin(), part.end());
    return all;
  }

  Map property_of_tenancy_, open_tenancies_, owner_of_property_, properties_;
};

LettersToCome::LettersToCome(Session& session, const RunLedger& log,
                             std::vector<std::size_t> numbers)
    : session_(session), log_(log), numbers_(std::move(numbers)) {
  if (!server::IsBranchLocation(session.database.LastOpened().string())) numbers_.clear();
  if (!numbers_.empty()) links_ = std::make_unique<Links>(session.caches);
}

LettersToCome::~LettersToCome() = default;

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
  const Codes codes = to_owners ? links_->OfOwners(recipients) : links_->OfTenancies(recipients);
  session_.database.Expect({codes.begin(), codes.end()});
}

}  // namespace tenora
