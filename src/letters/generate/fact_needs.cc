#include "letters/generate/fact_needs.h"

#include "merge/recipient_facts.h"

namespace tenora {
namespace {

// A tenancy without anything, which notes what it is asked for: so a fact's name says what it
// needs.
class AskedTenancy : public TenancyDetails {
 public:
  const TenantRecord& Record() const override { return record_; }
  const TenantRecord& WithAccount() const override {
    needs.account = true;
    return record_;
  }
  bool HasPayment() const override {
    needs.account = true;
    return false;
  }
  std::optional<Date> Inspection(bool) const override {
    needs.inspections = true;
    return std::nullopt;
  }
  std::optional<RentChange> NextRentChange() const override {
    needs.rent_changes = true;
    return std::nullopt;
  }
  std::string OwnerName() const override {
    needs.owner_names = true;
    return {};
  }
  std::string OwnerAccount() const override {
    needs.owner_accounts = true;
    return {};
  }
  std::string TenantField(std::string_view) const override {
    needs.tenant_fields = true;
    return {};
  }
  std::string PropertyField(std::string_view) const override {
    needs.property_fields = true;
    return {};
  }

  mutable TenancyNeeds needs;

 private:
  const TenantRecord record_;
};

// The same of an owner.
class AskedOwner : public OwnerDetails {
 public:
  const OwnerRecord& Record() const override { return record_; }
  int Properties() const override {
    needs.properties = true;
    return 0;
  }
  int Tenancies() const override {
    needs.tenancies = true;
    return 0;
  }
  Currency Arrears() const override {
    needs.arrears = true;
    return {};
  }
  std::string OwnerField(std::string_view) const override {
    needs.fields = true;
    return {};
  }

  mutable OwnerNeeds needs;

 private:
  const OwnerRecord record_;
};

}  // namespace

TenancyNeeds TenancyNeedsOf(std::span<const std::string> names) {
  const AskedTenancy asked;
  const TenantFacts facts(asked, Date());
  for (const std::string& name : names) static_cast<void>(facts.Get(name));
  return asked.needs;
}

OwnerNeeds OwnerNeedsOf(std::span<const std::string> names) {
  const AskedOwner asked;
  const OwnerFacts facts(asked, Date());
  for (const std::string& name : names) static_cast<void>(facts.Get(name));
  return asked.needs;
}

}  // namespace tenora
