// Holds what was read of all tenancies or owners at once against what the look-ups give of each.
#pragma once

#include <string>
#include <vector>

#include "platform/runtime/error.h"
#include "rental/all_owners.h"
#include "rental/all_tenancies.h"

namespace tenora::test {

// A look-up's result as text, or its error.
template <typename Get>
std::string ResultOf(Get&& get) {
  try {
    return get();
  } catch (const RuntimeError& error) {
    return "error " + ErrorText(error);
  }
}

inline std::string DayText(const std::optional<Date>& date) {
  return date ? TextOf(Value(*date)) : "none";
}

inline std::string AccountText(const TenancyDetails& details) {
  return ResultOf([&] {
    const TenantRecord& r = details.WithAccount();
    std::string text;
    for (const Value& value :
         std::vector<Value>{r.BalanceOwing, r.PaidToDate, r.PreviousPaidToDate, r.LastPeriodFrom,
                            r.LastPeriodTo, details.HasPayment(), r.LastPaymentDate,
                            r.LastPaymentAmount, std::int64_t{r.LastPaymentNumber},
                            r.LastPaymentTax, r.LastPaymentExclusive, r.LastPaymentTender}) {
      text += TextOf(value) + "|";
    }
    return text;
  });
}

struct FieldCodes {
  std::vector<std::string> tenant, property, owner;
};

inline std::vector<std::string> TextsOf(const TenancyDetails& details, const FieldCodes& fields) {
  std::vector<std::string> texts{
      details.Record().Reference,
      AccountText(details),
      ResultOf([&] { return DayText(details.Inspection(false)); }),
      ResultOf([&] { return DayText(details.Inspection(true)); }),
      ResultOf([&] {
        const std::optional<RentChange> change = details.NextRentChange();
        return change ? DayText(change->date) + " " + change->rent.ToText() : "none";
      }),
      ResultOf([&] { return details.OwnerName(); }),
      ResultOf([&] { return details.OwnerAccount(); })};
  for (const std::string& code : fields.tenant) texts.push_back(details.TenantField(code));
  for (const std::string& code : fields.property) texts.push_back(details.PropertyField(code));
  return texts;
}

inline std::vector<std::string> TextsOf(const OwnerDetails& details, const FieldCodes& fields) {
  std::vector<std::string> texts{details.Record().Code, std::to_string(details.Properties()),
                                 std::to_string(details.Tenancies()),
                                 ResultOf([&] { return details.Arrears().ToText(); })};
  for (const std::string& code : fields.owner) texts.push_back(details.OwnerField(code));
  return texts;
}

// The tenancies and owners that differ, each as what was read and what was looked up. The caches
// are loaded.
inline std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> Differences(
    Session& session, const FieldCodes& fields) {
  std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> differences;
  const auto compare = [&](const auto& read, const auto& looked_up) {
    auto left = TextsOf(read, fields), right = TextsOf(looked_up, fields);
    if (left != right) differences.emplace_back(std::move(left), std::move(right));
  };
  const AllTenancies tenancies(session, {true, true, true, true, true, true, true});
  for (std::size_t i = 0; i < tenancies.size(); ++i) {
    compare(tenancies[i], LookedUpTenancy(session, session.caches.Tenants[i], 0));
  }
  const AllOwners owners(session, {true, true, true, true});
  for (std::size_t i = 0; i < owners.size(); ++i) {
    compare(owners[i], LookedUpOwner(session, session.caches.Owners[i]));
  }
  return differences;
}

}  // namespace tenora::test
