#include "merge/recipient_facts.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "merge/merge_codes.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/format.h"
#include "rental/missing_date.h"

namespace tenora {
namespace {

using Type = FactType;

struct TenantSource {
  const TenancyDetails& details;
  Date now;
  bool receipt;

  const TenantRecord& record() const { return details.Record(); }
  const TenantRecord& account() const { return details.WithAccount(); }
};

struct OwnerSource {
  const OwnerDetails& details;
  Date now;

  const OwnerRecord& record() const { return details.Record(); }
};

using T = const TenantSource&;
using O = const OwnerSource&;

template <typename Source>
struct NamedFact {
  std::string_view name;
  Type type;
  Fact (*get)(const Source& source);
};

Fact Number(double number) { return number; }
Fact Money(double amount) { return Currency::FromDouble(amount); }
Fact Day(const std::optional<Date>& date) { return date ? DateFact(*date) : Fact(); }

// A fact of the last payment; none without a payment.
template <typename Get>
Fact Paid(T t, Get&& get) {
  return t.details.HasPayment() ? get(t.account()) : Fact();
}

// A fact of the account's present state, which says nothing in a receipt.
template <typename Get>
Fact State(T t, Get&& get) {
  return t.receipt ? Fact() : get(t.account());
}

Fact DayAfter(Date date) { return DateMeansNone(date) ? Fact() : Fact(date.AddDays(1)); }

std::string AddressInOneLine(const TenantRecord& tenant) {
  std::string address;
  for (const std::string* line :
       {&tenant.PropertyAddress1, &tenant.PropertyAddress2, &tenant.PropertyAddress3}) {
    if (!line->empty()) address += (address.empty() ? "" : ", ") + *line;
  }
  return address;
}

// Text that is a number, as the package keeps an owner's fee.
Fact NumberIn(const std::string& text) {
  try {
    return ToDouble(Value(text));
  } catch (const RuntimeError&) {
    return {};
  }
}

using R = const TenantRecord&;

constexpr NamedFact<TenantSource> kTenantFacts[] = {
    {"Print Date", Type::kDate, [](T t) { return Fact(t.now); }},
    {"Print Time", Type::kText, [](T t) { return TextFact(FormatDate(t.now, "HH:NN")); }},
    {"Tenant Name", Type::kText, [](T t) { return TextFact(t.record().KeyName); }},
    {"Property Address 1", Type::kText, [](T t) { return TextFact(t.record().PropertyAddress1); }},
    {"Property Address 2", Type::kText, [](T t) { return TextFact(t.record().PropertyAddress2); }},
    {"Property Address 3", Type::kText, [](T t) { return TextFact(t.record().PropertyAddress3); }},
    {"Property Address", Type::kText, [](T t) { return TextFact(AddressInOneLine(t.record())); }},
    {"Email", Type::kText, [](T t) { return TextFact(t.record().Email); }},
    {"Home Phone", Type::kText, [](T t) { return TextFact(t.record().HomePhone); }},
    {"Work Phone", Type::kText, [](T t) { return TextFact(t.record().WorkPhone); }},
    {"Mobile", Type::kText, [](T t) { return TextFact(t.record().Mobile); }},
    {"Fax", Type::kText, [](T t) { return TextFact(t.record().Fax); }},
    {"Current Rent", Type::kMoney, [](T t) { return Money(t.record().CurrentRent); }},
    {"Rent Frequency", Type::kText, [](T t) { return TextFact(t.record().FrequencyText); }},
    {"Bond Amount", Type::kMoney, [](T t) { return Money(t.record().Bond); }},
    {"Tenancy Start Date", Type::kDate, [](T t) { return DateFact(t.record().StartDate); }},
    {"Tenancy End Date", Type::kDate, [](T t) { return DateFact(t.record().EndDate); }},
    {"Last Rent Rise", Type::kDate, [](T t) { return DateFact(t.record().LastRentRise); }},
    {"Last Payment Date", Type::kDate,
     [](T t) { return Paid(t, [](R r) { return DateFact(r.LastPaymentDate); }); }},
    {"Last Payment Amount", Type::kMoney,
     [](T t) { return Paid(t, [](R r) { return Money(r.LastPaymentAmount); }); }},
    {"Last Payment Number", Type::kNumber,
     [](T t) { return Paid(t, [](R r) { return Number(r.LastPaymentNumber); }); }},
    {"Last Payment Tax", Type::kMoney,
     [](T t) { return Paid(t, [](R r) { return Money(r.LastPaymentTax); }); }},
    {"Last Payment Excl.", Type::kMoney,
     [](T t) { return Paid(t, [](R r) { return Money(r.LastPaymentExclusive); }); }},
    {"Last Payment Tender", Type::kText,
     [](T t) { return Paid(t, [](R r) { return TextFact(r.LastPaymentTender); }); }},
    {"Balance Owing", Type::kMoney,
     [](T t) { return State(t, [](R r) { return Money(r.BalanceOwing); }); }},
    {"Days Behind", Type::kNumber,
     [](T t) {
       return State(t, [&](R r) { return Number(static_cast<double>(DaysBehind(r, t.now))); });
     }},
    {"Paid To Date", Type::kDate,
     [](T t) { return State(t, [](R r) { return DateFact(r.PaidToDate); }); }},
    {"Previous Paid To Date", Type::kDate,
     [](T t) { return State(t, [](R r) { return DateFact(r.PreviousPaidToDate); }); }},
    {"Last Inspection", Type::kDate, [](T t) { return Day(t.details.Inspection(false)); }},
    {"Next Inspection", Type::kDate, [](T t) { return Day(t.details.Inspection(true)); }},
    {"Property Code", Type::kText, [](T t) { return TextFact(t.record().PropertyCode); }},
    {"Property Owners Name", Type::kText, [](T t) { return TextFact(t.details.OwnerName()); }},
    {"Property Owners Account", Type::kText,
     [](T t) { return TextFact(t.details.OwnerAccount()); }},
    {"Water Meter", Type::kText, [](T t) { return TextFact(t.record().WaterMeter); }},
    {"Contact Address1", Type::kText, [](T t) { return TextFact(t.record().TenantAddress1); }},
    {"Contact Address2", Type::kText, [](T t) { return TextFact(t.record().TenantAddress2); }},
    {"Contact Address3", Type::kText, [](T t) { return TextFact(t.record().TenantAddress3); }},
    {"Monthly Rent Date", Type::kNumber, [](T t) { return Number(t.record().MonthlyDay); }},
    {"ID Number", Type::kText, [](T t) { return TextFact(t.record().IdNumber); }},
    {"Current Period Start", Type::kDate, [](T t) { return DateFact(t.account().LastPeriodFrom); }},
    {"Current Period End", Type::kDate, [](T t) { return DateFact(t.account().LastPeriodTo); }},
    {"Next Period Start", Type::kDate, [](T t) { return DayAfter(t.account().LastPeriodTo); }},
    {"Tenant Code", Type::kText, [](T t) { return TextFact(t.record().Reference); }},
    {"Next Rent Change Date", Type::kDate,
     [](T t) {
       const auto change = t.details.NextRentChange();
       return change ? DateFact(change->date) : Fact();
     }},
    {"Next Rent Change Value", Type::kMoney,
     [](T t) {
       const auto change = t.details.NextRentChange();
       return change ? Fact(change->rent) : Fact();
     }},
    {"Rent Review Date", Type::kDate, [](T t) { return DateFact(t.record().RentReviewDate); }},
    {"Closed", Type::kYesNo, [](T t) { return Fact(t.record().Closed); }},
    {kLastLetterFact, Type::kDate, [](T t) { return Day(t.details.LastLetter()); }},
};

constexpr NamedFact<OwnerSource> kOwnerFacts[] = {
    {"Print Date", Type::kDate, [](O o) { return Fact(o.now); }},
    {"Name", Type::kText, [](O o) { return TextFact(o.record().Name); }},
    {"Code", Type::kText, [](O o) { return TextFact(o.record().Code); }},
    {"Postal Address 1", Type::kText, [](O o) { return TextFact(o.record().Postal1); }},
    {"Postal Address 2", Type::kText, [](O o) { return TextFact(o.record().Postal2); }},
    {"Postal Address 3", Type::kText, [](O o) { return TextFact(o.record().Postal3); }},
    {"Street Address 1", Type::kText, [](O o) { return TextFact(o.record().Street1); }},
    {"Street Address 2", Type::kText, [](O o) { return TextFact(o.record().Street2); }},
    {"Street Address 3", Type::kText, [](O o) { return TextFact(o.record().Street3); }},
    {"Home Phone", Type::kText, [](O o) { return TextFact(o.record().Home); }},
    {"Work Phone", Type::kText, [](O o) { return TextFact(o.record().Work); }},
    {"Mobile Phone", Type::kText, [](O o) { return TextFact(o.record().Mobile); }},
    {"Fax Number", Type::kText, [](O o) { return TextFact(o.record().Fax); }},
    {"Email Address", Type::kText, [](O o) { return TextFact(o.record().Email); }},
    {"Fee Percent", Type::kNumber, [](O o) { return NumberIn(o.record().FeePercent); }},
    {"Fee Value", Type::kNumber,
     [](O o) { return o.record().FeeValue ? Number(*o.record().FeeValue) : Fact(); }},
    {"Tax Number", Type::kText, [](O o) { return TextFact(o.record().IrdNumber); }},
    {"Bank Account Name", Type::kText, [](O o) { return TextFact(o.record().AccountName); }},
    {"Bank Account Number", Type::kText, [](O o) { return TextFact(o.record().AccountNumber); }},
    {"Properties", Type::kNumber, [](O o) { return Number(o.details.Properties()); }},
    {"Tenancies", Type::kNumber, [](O o) { return Number(o.details.Tenancies()); }},
    {"Arrears", Type::kMoney, [](O o) { return Fact(o.details.Arrears()); }},
    {"Closed", Type::kYesNo, [](O o) { return Fact(o.record().ClosedStatus); }},
    {kLastLetterFact, Type::kDate, [](O o) { return Day(o.details.LastLetter()); }},
};

template <typename Source>
FactNames NamesIn(std::span<const NamedFact<Source>> facts) {
  FactNames names;
  for (const NamedFact<Source>& fact : facts) {
    if (fact.name != kLastLetterFact) names.Add(fact.name, fact.type);
  }
  return names;
}

// None of this name is an error in the calling code: the parser let only known names through.
template <typename Source>
Fact Find(std::span<const NamedFact<Source>> facts, std::string_view name, const Source& source) {
  const auto found = std::ranges::find(facts, name, &NamedFact<Source>::name);
  if (found == facts.end()) {
    throw StandardError(error_number::kInvalidProcedureCall, "no fact " + std::string(name));
  }
  return found->get(source);
}

}  // namespace

const FactNames& TenantFactNames() {
  static const FactNames names = [] {
    FactNames made = NamesIn(std::span<const NamedFact<TenantSource>>(kTenantFacts));
    made.AddFieldPrefix(kTenantCustomPrefix);
    made.AddFieldPrefix(kPropertyCustomPrefix);
    return made;
  }();
  return names;
}

const FactNames& OwnerFactNames() {
  static const FactNames names = [] {
    FactNames made = NamesIn(std::span<const NamedFact<OwnerSource>>(kOwnerFacts));
    made.AddFieldPrefix(kOwnerCustomPrefix);
    return made;
  }();
  return names;
}

Fact TenantFacts::Get(std::string_view name) const {
  if (name.starts_with(kTenantCustomPrefix)) {
    return TextFact(details_.TenantField(name.substr(kTenantCustomPrefix.size())));
  }
  if (name.starts_with(kPropertyCustomPrefix)) {
    return TextFact(details_.PropertyField(name.substr(kPropertyCustomPrefix.size())));
  }
  return Find(std::span<const NamedFact<TenantSource>>(kTenantFacts), name,
              TenantSource{details_, now_, receipt_});
}

Fact OwnerFacts::Get(std::string_view name) const {
  if (name.starts_with(kOwnerCustomPrefix)) {
    return TextFact(details_.OwnerField(name.substr(kOwnerCustomPrefix.size())));
  }
  return Find(std::span<const NamedFact<OwnerSource>>(kOwnerFacts), name,
              OwnerSource{details_, now_});
}

}  // namespace tenora
