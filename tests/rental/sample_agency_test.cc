// The rental room over the sample agency, against what an independent reader of the same file says.
#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/runtime/conversion.h"
#include "rental/rent_account.h"
#include "rental/rental_fixture.h"
#include "rental/tenant_lookups.h"
#include "support/sample_rows.h"

namespace tenora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Amounts as cents; days as numbers, none for the year that says "no date" (of which the other
// reader makes 1900).
std::int64_t CentsOf(const std::string& text) {
  return ToCurrency(Value(text)).ten_thousandths() / 100;
}
std::optional<std::int64_t> DayOf(const std::string& text) {
  if (text < "1901") return std::nullopt;
  return ToDate(Value(text)).DayNumber();
}

struct Charge {
  std::int64_t from, to, rent, extra;
};

struct Money {
  std::int64_t day, number, amount, tax;
  bool rent;
  std::string property, tender;
};

struct Expected {
  std::vector<Charge> charges;
  std::vector<Money> money;
  std::optional<std::int64_t> ended;
  std::string property;

  void Trim(std::int64_t today) {
    std::sort(charges.begin(), charges.end(),
              [](const Charge& a, const Charge& b) { return a.from < b.from; });
    while (charges.size() > 1 && charges.back().from > today) charges.pop_back();
    if (!ended) return;
    while (!charges.empty() && charges.back().from > *ended) {
      const std::int64_t extra = charges.back().extra;
      charges.pop_back();
      if (!charges.empty()) charges.back().extra += extra;
    }
    Charge& last = charges.back();
    if (last.to <= *ended) return;
    const std::int64_t days = last.to - last.from + 1;
    last.rent = (2 * last.rent * (*ended - last.from + 1) + days) / (2 * days);
    last.to = *ended;
  }
  std::int64_t Balance() const {
    std::int64_t balance = 0;
    for (const Charge& charge : charges) balance += charge.rent + charge.extra;
    for (const Money& paid : money) balance -= paid.amount;
    return balance;
  }
  // By running totals, in cents and days.
  std::int64_t PaidTo(std::int64_t deduct) const {
    std::int64_t left = -deduct;
    for (const Money& paid : money) left += paid.rent ? paid.amount : 0;
    for (std::size_t i = 0; i < charges.size(); ++i) {
      const Charge& c = charges[i];
      const bool last = i + 1 == charges.size();
      const std::int64_t days = c.to - c.from + 1;
      if (left >= c.rent && !last) {
        left -= c.rent;
        continue;
      }
      if (left == c.rent) return c.to;
      const double exact = static_cast<double>(days * left) / static_cast<double>(c.rent);
      const auto paid_days = static_cast<std::int64_t>(std::nearbyint(exact));
      const bool one_less = left < c.rent && c.rent * paid_days > (c.rent - left) * days;
      return c.from + paid_days - (one_less ? 1 : 0);
    }
    return 0;
  }
  const Money* Latest(bool rent_only) const {
    const Money* latest = nullptr;
    for (const Money& paid : money) {
      if (paid.property != property || (rent_only && !paid.rent)) continue;
      if (latest == nullptr ||
          std::pair(paid.day, paid.number) > std::pair(latest->day, latest->number)) {
        latest = &paid;
      }
    }
    return latest;
  }
};

std::map<std::string, Expected> ReadIndependently() {
  std::map<std::string, Expected> tenancies;
  for (const SampleRow& row : SampleTable("tenancy")) {
    Expected& tenancy = tenancies[row.at("reference")];
    tenancy.ended = DayOf(row.at("when ended"));
    tenancy.property = row.at("Property Code");
  }
  for (const SampleRow& row : SampleTable("rent_periods")) {
    tenancies[row.at("tenant_code")].charges.push_back(
        {*DayOf(row.at("period_from")), *DayOf(row.at("period_to")), CentsOf(row.at("rent_due")),
         CentsOf(row.at("extra_charges"))});
  }
  for (const SampleRow& row : SampleTable("revenues")) {
    const std::string& group = row.at("revenue group");
    if (group != "RENT" && group != "WATER" && group != "DAMAGE") continue;
    tenancies[row.at("tenant_code")].money.push_back(
        {*DayOf(row.at("date")), std::stol(row.at("recordnumber")), CentsOf(row.at("amount")),
         CentsOf(row.at("tax")), group == "RENT", row.at("property code"), row.at("tender")});
  }
  return tenancies;
}

class SampleRental : public SampleAgency {
 protected:
  SampleRental() { session.caches.CacheTenants(session.database); }
};

TEST_F(SampleRental, AgreesWithTheRowsOnEveryTenancysPayments) {
  std::map<std::string, Expected> expected = ReadIndependently();
  const std::int64_t today = machine.clock.Today().DayNumber();
  for (TenantRecord& tenant : session.caches.Tenants) {
    SCOPED_TRACE(tenant.Reference);
    Expected& e = expected.at(tenant.Reference);
    const Charge latest_period =
        *std::max_element(e.charges.begin(), e.charges.end(),
                          [](const Charge& a, const Charge& b) { return a.from < b.from; });
    e.Trim(today);
    LastPayment(session, tenant, 0);
    EXPECT_EQ(Currency::FromDouble(tenant.BalanceOwing), Cents(e.Balance()));
    EXPECT_EQ(tenant.LastPeriodFrom.DayNumber(), latest_period.from);
    EXPECT_EQ(tenant.LastPeriodTo.DayNumber(), latest_period.to);
    EXPECT_EQ(tenant.PaidToDate.DayNumber(), e.PaidTo(0));
    const Money* rent = e.Latest(true);
    EXPECT_EQ(tenant.PreviousPaidToDate.DayNumber(), e.PaidTo(rent ? rent->amount : 0));
    const Money* payment = e.Latest(false);
    ASSERT_NE(payment, nullptr);
    EXPECT_EQ(tenant.LastPaymentNumber, payment->number);
    EXPECT_EQ(tenant.LastPaymentDate.DayNumber(), payment->day);
    EXPECT_EQ(Currency::FromDouble(tenant.LastPaymentAmount), Cents(payment->amount));
    EXPECT_EQ(Currency::FromDouble(tenant.LastPaymentTax), Cents(payment->tax));
    EXPECT_EQ(Currency::FromDouble(tenant.LastPaymentExclusive),
              Cents(payment->amount - payment->tax));
    EXPECT_EQ(tenant.LastPaymentTender, payment->tender);
  }
  EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
}

TEST_F(SampleRental, KeepsTheBalanceWhereAnAccountCodeHasAnApostrophe) {
  const Currency before = RentAccount(session, "T00001").BalanceOwing();
  session.database.ExecuteSQL(
      "insert into glcodes(gl_code, type, taxable_yn, balancedate, description, bankbalance, "
      "money1, pay_extra_charges) values ('O''Neil', 1, 0, #11/21/2026#, 'Gas', 0, 0, 1)");
  Session later{machine.Parts()};
  later.database.OpenDatabase();
  EXPECT_THAT(later.options.ExtraChargeCodes(), testing::HasSubstr("'O''Neil'"));
  EXPECT_EQ(RentAccount(later, "T00001").BalanceOwing(), before);
  EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
}

TEST_F(SampleRental, CachesEveryTenancyThatHasAProperty) {
  const Caches& caches = session.caches;
  std::size_t with_property = 0;
  for (const SampleRow& row : SampleTable("tenancy"))
    with_property += row.at("Property Code") != "MISSING";
  EXPECT_THAT(caches.Tenants, SizeIs(with_property));
  EXPECT_EQ(session.caches.FindTenant("T00042"), nullptr);
  // Of two tenancies with one name the closed one comes first, and is the one found.
  EXPECT_EQ(caches.ReferenceByKeyName("Tama O'Brien"), "T00006");
  EXPECT_EQ(Tenant("T00006").DisplayName, "(Closed) Tama O'Brien");
  EXPECT_EQ(Tenant("T00005").DisplayName, "Tama O'Brien");
  EXPECT_EQ(&Tenant("T00006") + 1, &Tenant("T00005"));
  EXPECT_EQ(Tenant("T00007").KeyName, "Mei Huang");
  EXPECT_EQ(Tenant("T00003").KeyName, "Smith-Jones, flat 2-rear `Red`");
  EXPECT_EQ(Tenant("T00003").RentReviewDate.Year(), kNoDateYear);
  EXPECT_EQ(Tenant("T00008").LastRentRise, Day(2025, 4, 26));
  EXPECT_EQ(Tenant("T00008").EndDate.Year(), kNoDateYear);
}

TEST_F(SampleRental, CachesOneTenancyAsAmongAllOfThem) {
  Caches& caches = session.caches;
  caches.Load(session.database);
  const std::vector<TenantRecord> all = caches.Tenants;
  for (const TenantRecord& tenant : all) {
    caches.CacheTenancy(session.database, tenant.Reference);
    ASSERT_THAT(caches.Tenants, SizeIs(1)) << tenant.Reference;
    const TenantRecord& alone = Tenant(tenant.Reference);
    EXPECT_EQ(alone.DisplayName, tenant.DisplayName);
    EXPECT_EQ(alone.PropertyAddress1, tenant.PropertyAddress1);
    EXPECT_EQ(alone.CurrentRent, tenant.CurrentRent);
    EXPECT_EQ(alone.Email, tenant.Email);
    EXPECT_EQ(alone.EndDate, tenant.EndDate);
  }
  caches.CacheTenancy(session.database, "No such tenancy's code");
  EXPECT_THAT(caches.Tenants, IsEmpty());
}

TEST_F(SampleRental, CachesOwnersPropertiesAndAccountCodes) {
  Caches& caches = session.caches;
  caches.CacheOwners(session.database);
  caches.CacheProperties(session.database);
  caches.CacheAccountCodes(session.database);
  std::size_t named = 0;
  for (const SampleRow& row : SampleTable("owner")) named += !row.at("name").empty();
  EXPECT_THAT(caches.Owners, SizeIs(named));
  // PR00025 belongs to nobody.
  ASSERT_THAT(caches.Properties, SizeIs(24));
  EXPECT_EQ(caches.Properties.front().Code, "PR00001");
  EXPECT_EQ(caches.Properties.back().Code, "PR00024");
  std::vector<std::string> codes;
  for (const AccountCodeRecord& account : caches.AccountCodes) codes.push_back(account.GlCode);
  EXPECT_THAT(codes, ElementsAre("MGMT", "REPAIR", "INSURE", "ParkingBay"));
  EXPECT_EQ(caches.AccountCodes[2].Type, 203);
  EXPECT_TRUE(caches.AccountCodes[2].ExcludeCashflow);
  EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
}

}  // namespace
}  // namespace tenora::test
