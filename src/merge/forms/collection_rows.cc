#include "merge/forms/collection_rows.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "data/sql_text.h"
#include "merge/recipient_facts.h"
#include "platform/runtime/clock.h"
#include "rental/rent_account.h"
#include "rental/tenancy_history.h"

namespace tenora {
namespace {

using Rows = std::vector<std::unique_ptr<CollectionRow>>;

// Values in the order of the collection's columns.
class ValueRow : public CollectionRow {
 public:
  ValueRow(const Collection& collection, std::vector<Fact> values)
      : collection_(collection), values_(std::move(values)) {}

  Fact Get(std::string_view name) const override {
    const auto column = std::ranges::find(collection_.columns, name, &CollectionColumn::name);
    const auto at = static_cast<std::size_t>(column - collection_.columns.begin());
    return at < values_.size() ? values_[at] : Fact();
  }

 protected:
  const Collection& collection_;
  std::vector<Fact> values_;
};

class TenancyRow : public CollectionRow {
 public:
  TenancyRow(Session& session, TenantRecord& tenant)
      : tenant_(tenant),
        details_(session, tenant, 0),
        facts_(details_, session.platform.clock.Now()) {}

  Fact Get(std::string_view name) const override { return facts_.Get(name); }
  TenantRecord* Tenant() const override { return &tenant_; }

 private:
  TenantRecord& tenant_;
  LookedUpTenancy details_;
  TenantFacts facts_;
};

template <typename Use>
void ForEachTenancy(Session& session, const CollectionOwner& owner, Use&& use) {
  Database& database = session.database;
  std::string sql =
      "select reference from tenancy inner join property on tenancy.[property code] = "
      "property.code where closed_yn = 0 and property.ownercode = " +
      SQLText(owner.owner->Code);
  if (!owner.property.empty()) sql += " and property.code = " + SQLText(owner.property);
  RecordsetPtr rows;
  database.CreateSet(rows, sql + " order by property.code, name", query::kForwardOnly,
                     query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) {
    TenantRecord* const tenant = session.caches.FindTenant(TextOf(rows->Field("reference")));
    if (tenant != nullptr) use(*tenant);
  }
}

// What its tenancies add up to is looked up when it is asked for.
class PropertyRow : public ValueRow {
 public:
  PropertyRow(Session& session, const Collection& collection, const OwnerRecord& owner,
              std::string code, std::vector<Fact> values)
      : ValueRow(collection, std::move(values)),
        session_(session),
        of_property_{.tenant = nullptr, .owner = &owner, .property = std::move(code)} {}

  Fact Get(std::string_view name) const override {
    if (name == "Property Rent") {
      Currency rent;
      ForEach(
          [&](const TenantRecord& tenant) { rent += Currency::FromDouble(tenant.CurrentRent); });
      return rent;
    }
    if (name == "Property Tenancies") {
      double count = 0;
      ForEach([&](const TenantRecord&) { ++count; });
      return count;
    }
    if (name == "Property Arrears") {
      Currency arrears;
      ForEach([&](const TenantRecord& tenant) {
        const Currency balance = RentAccount(session_, tenant.Reference).BalanceOwing();
        if (balance > Currency()) arrears += balance;
      });
      return arrears;
    }
    return ValueRow::Get(name);
  }
  std::string PropertyCode() const override { return of_property_.property; }

 private:
  template <typename Use>
  void ForEach(Use&& use) const {
    ForEachTenancy(session_, of_property_, use);
  }

  Session& session_;
  const CollectionOwner of_property_;
};

Fact DayOf(Date date) { return DateFact(date); }

void AddPayments(Session& session, const Collection& collection, const TenantRecord& tenant,
                 Rows* rows) {
  for (const PaymentRecord& payment : PaymentsOf(session, tenant.Reference)) {
    rows->push_back(std::make_unique<ValueRow>(
        collection, std::vector<Fact>{DayOf(payment.date), payment.amount, payment.tax,
                                      payment.amount - payment.tax,
                                      static_cast<double>(payment.number), TextFact(payment.tender),
                                      TextFact(payment.account), TextFact(payment.comment)}));
  }
}

void AddPeriods(Session& session, const Collection& collection, const TenantRecord& tenant,
                Rows* rows) {
  for (const RentPeriod& period : RentAccount(session, tenant.Reference).Schedule(0)) {
    if (collection.kind == CollectionKind::kOutstandingPeriod && period.Outstanding <= Currency()) {
      continue;
    }
    rows->push_back(std::make_unique<ValueRow>(
        collection, std::vector<Fact>{DayOf(period.PeriodFrom), DayOf(period.PeriodTo),
                                      period.RentDue, period.Paid, period.ExtraCharges,
                                      period.ExtraChargesPaid, period.Outstanding}));
  }
}

Fact TimeOf(Session& session, Date date) {
  const CalendarTime time = date.Calendar();
  if (time.hour == 0 && time.minute == 0) return {};
  return session.platform.locale.MediumTime(date);
}

void AddInspections(Session& session, const Collection& collection, const TenantRecord& tenant,
                    Rows* rows) {
  for (const InspectionRecord& inspection : InspectionsOf(session, tenant.Reference)) {
    rows->push_back(std::make_unique<ValueRow>(
        collection, std::vector<Fact>{DayOf(inspection.date), TimeOf(session, inspection.date),
                                      TextFact(inspection.remark)}));
  }
}

void AddRentChanges(Session& session, const Collection& collection, const TenantRecord& tenant,
                    Rows* rows) {
  for (const RentChange& change : RentChangesOf(session, tenant.Reference)) {
    rows->push_back(
        std::make_unique<ValueRow>(collection, std::vector<Fact>{DayOf(change.date), change.rent}));
  }
}

Fact AmountFact(const std::optional<Currency>& amount) { return amount ? Fact(*amount) : Fact(); }

void AddLedger(const Collection& collection, const std::vector<LedgerEntry>& entries, Rows* rows) {
  for (const LedgerEntry& entry : entries) {
    rows->push_back(std::make_unique<ValueRow>(
        collection, std::vector<Fact>{DayOf(entry.date), entry.text, AmountFact(entry.charge),
                                      AmountFact(entry.payment), entry.balance}));
  }
}

void AddProperties(Session& session, const Collection& collection, const OwnerRecord& owner,
                   Rows* rows) {
  Database& database = session.database;
  RecordsetPtr found;
  database.CreateSet(found,
                     "select code, address1, address2, address3 from property where ownercode = " +
                         SQLText(owner.Code) + " order by code",
                     query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(found); database.MoveNext(found)) {
    const std::string code = TextOf(found->Field("code"));
    std::vector<std::string> lines;
    std::string address;
    for (const char* const column : {"address1", "address2", "address3"}) {
      lines.push_back(TextOf(found->Field(column)));
      if (!lines.back().empty()) address += (address.empty() ? "" : ", ") + lines.back();
    }
    rows->push_back(std::make_unique<PropertyRow>(
        session, collection, owner, code,
        std::vector<Fact>{TextFact(code), TextFact(address), TextFact(lines[0]), TextFact(lines[1]),
                          TextFact(lines[2])}));
  }
}

}  // namespace

const std::vector<LedgerEntry>& LatestLedger::Of(const TenantRecord& tenant) {
  if (reference_ != tenant.Reference) {
    reference_.reset();
    entries_ = LedgerOf(session_, tenant.Reference);
    reference_ = tenant.Reference;
  }
  return entries_;
}

Currency LatestLedger::BalanceBefore(const TenantRecord& tenant, Date day) {
  Currency balance;
  for (const LedgerEntry& entry : Of(tenant)) {
    if (entry.date.DayNumber() < day.DayNumber()) balance = entry.balance;
  }
  return balance;
}

Rows RowsOf(Session& session, const Collection& collection, const CollectionOwner& owner,
            LatestLedger& ledger) {
  Rows rows;
  switch (collection.kind) {
    case CollectionKind::kPayment:
      AddPayments(session, collection, *owner.tenant, &rows);
      break;
    case CollectionKind::kRentPeriod:
    case CollectionKind::kOutstandingPeriod:
      AddPeriods(session, collection, *owner.tenant, &rows);
      break;
    case CollectionKind::kInspection:
      AddInspections(session, collection, *owner.tenant, &rows);
      break;
    case CollectionKind::kRentChange:
      AddRentChanges(session, collection, *owner.tenant, &rows);
      break;
    case CollectionKind::kLedgerEntry:
      AddLedger(collection, ledger.Of(*owner.tenant), &rows);
      break;
    case CollectionKind::kProperty:
      AddProperties(session, collection, *owner.owner, &rows);
      break;
    case CollectionKind::kTenancy:
      ForEachTenancy(session, owner, [&](TenantRecord& tenant) {
        rows.push_back(std::make_unique<TenancyRow>(session, tenant));
      });
      break;
  }
  return rows;
}

}  // namespace tenora
